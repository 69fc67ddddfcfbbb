// SPDX-License-Identifier: MIT

// The first two bytes of characters of several bytes, as far as the record lists them.

#ifndef VEKCH_REGEXP_CHARACTERS_WIDE_BYTES_H
#define VEKCH_REGEXP_CHARACTERS_WIDE_BYTES_H

#include <stdint.h>

#include "regexp/object/record.h"

namespace vekch::regexp {

// Bit i for a byte i above the lowest of its kind.
struct WideBytes {
  static constexpr int32_t kLowestLead = 0xC0;
  static constexpr int32_t kLowestSecond = 0x80;
  static constexpr int32_t kLongest = 6;  // bytes of a character

  uint64_t leads;
  uint64_t seconds;

  static constexpr WideBytes All() { return {~uint64_t{0}, ~uint64_t{0}}; }

  constexpr bool HasLead(int32_t byte) const {
    return byte >= kLowestLead && (leads >> (byte - kLowestLead) & 1) != 0;
  }
  constexpr bool HasSecond(int32_t byte) const {
    return byte >= kLowestSecond && byte < kLowestLead &&
           (seconds >> (byte - kLowestSecond) & 1) != 0;
  }
};

// Those of the characters that a record of one character accepts, and perhaps others: all of them
// where they don't lie in ranges that the record lists.
WideBytes WideBytesOf(const ProgramNode& atom);

}  // namespace vekch::regexp

#endif
