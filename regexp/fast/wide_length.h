// SPDX-License-Identifier: MIT

// Characters of several bytes, read and looked up for loops over them.

#ifndef VEKCH_REGEXP_FAST_WIDE_LENGTH_H
#define VEKCH_REGEXP_FAST_WIDE_LENGTH_H

#include <stdint.h>

#include "regexp/characters/wide_set.h"
#include "unicode/utf8.h"

namespace vekch::regexp {

// As ReadUtf8; characters of two and three bytes are recognised by one comparison of all their
// marks.
VEK_INLINE Utf8Character ReadWide(const uint8_t* at, const uint8_t* limit) {
  if (limit - at >= 4) {
    const auto word = kernels::LoadWord<uint32_t>(at);
    if ((word & 0xC0C0F0U) == 0x8080E0U) {
      const uint32_t value = (word & 0xF) << 12 | (word >> 2 & 0xFC0) | (word >> 16 & 0x3F);
      if (value >= 0x800) {
        return {value, 3};
      }
    } else if ((word & 0xC0E0U) == 0x80C0U && (word & 0x1E) != 0) {
      return {(word & 0x1F) << 6 | (word >> 8 & 0x3F), 2};
    }
  }
  return ReadUtf8(at, limit);
}

// Bytes of the character at `at`, which lies before the limit; below 0 if it is no member. That is
// a jump and no choice between two values: where the next character begins must not wait for it.
VEK_INLINE int32_t SignedLength(WideSet* set, const uint8_t* at, const uint8_t* limit) {
  const Utf8Character character = *at < 0x80 ? Utf8Character{*at, 1} : ReadWide(at, limit);
  const bool isMember = character.length == 1 ? set->HasByte(*at) : set->Has(character.value);
  if (!isMember) {
    kernels::KeepOrder();
    return -character.length;
  }
  return character.length;
}

// The same, 0 if it is no member.
VEK_INLINE int32_t WideLength(WideSet* set, const uint8_t* at, const uint8_t* limit) {
  const int32_t length = SignedLength(set, at, limit);
  return length > 0 ? length : 0;
}

}  // namespace vekch::regexp

#endif
