// SPDX-License-Identifier: MIT

// The characters that a record accepts, for loops over text that is not ASCII: single bytes in a
// table, and of others what has been found out so far. That is kept for 64 code points at a time,
// as neighbours are asked for next: a text is written in few alphabets.

#ifndef VEKCH_REGEXP_CHARACTERS_WIDE_SET_H
#define VEKCH_REGEXP_CHARACTERS_WIDE_SET_H

#include <stdint.h>

#include "regexp/object/record.h"
#include "strings/kernels/attributes.h"

namespace vekch::regexp {

// Whether a record that accepts one character accepts this one; a class or a shorthand has a set.
bool AcceptsWide(const ProgramNode& atom, int32_t codePoint);

class WideSet {
 public:
  // Of such a record, with nothing found out yet.
  void Begin(const ProgramNode& record);

  VEK_INLINE bool HasByte(uint8_t byte) const { return member[byte] != 0; }

  VEK_INLINE bool Has(uint32_t codePoint) {
    const uint32_t block = codePoint / kBlockSize;
    const uint32_t entry = block % kEntries;
    if (__builtin_expect(blocks[entry] != block, 0)) {
      if (block > kLastBlock) {
        return AcceptsWide(*atom, static_cast<int32_t>(codePoint));
      }
      Find(block);
    }
    return (bits[entry] >> codePoint % kBlockSize & 1) != 0;
  }

  // Not 0 for a byte that is a member where it is a character by itself.
  const uint8_t* Bytes() const { return member; }

 private:
  static constexpr uint32_t kBlockSize = 64;
  static constexpr uint32_t kEntries = 512;
  static constexpr uint32_t kLastBlock = 0x10FFFF / kBlockSize;

  [[gnu::noinline]] void Find(uint32_t block);

  const ProgramNode* atom;
  uint64_t bits[kEntries];
  uint16_t blocks[kEntries];  // that the bits are of
  uint8_t member[256];
};

}  // namespace vekch::regexp

#endif
