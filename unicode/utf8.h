// SPDX-License-Identifier: MIT

// The rule by which one character of UTF-8 is read, shared by the conversion and the matcher of
// the regular expressions.
//
//   0xxxxxxx                     the byte itself
//   110xxxxx, 1 continuation     11 bits
//   1110xxxx, 2                  16 bits, surrogates included
//   11110xxx, 3                  21 bits
//   111110xx, 4                  26 bits
//   1111110x, 5                  31 bits
//
// Where the shortest form of the value is another one, where a continuation byte is missing or
// lies past the end of the text, and for every other first byte, the character is that first
// byte alone, with its own value. So no text is refused, and reading always goes on.

#ifndef VEKCH_UNICODE_UTF8_H
#define VEKCH_UNICODE_UTF8_H

#include <stddef.h>
#include <stdint.h>

#include "strings/kernels/block.h"

namespace vekch {

struct Utf8Character {
  uint32_t value;
  int32_t length;  // bytes from which it was read
};

// Bytes of the shortest form of a value below 0x80000000.
VEK_INLINE int32_t Utf8Length(uint32_t value) {
  return value < 0x80        ? 1
         : value < 0x800     ? 2
         : value < 0x10000   ? 3
         : value < 0x200000  ? 4
         : value < 0x4000000 ? 5
                             : 6;
}

VEK_INLINE bool IsUtf8Continuation(uint8_t byte) { return (byte & 0xC0) == 0x80; }

VEK_INLINE uint32_t AppendSixBits(uint32_t value, uint8_t continuation) {
  return (value << 6) | (continuation & 0x3FU);
}

// The rule for a first byte that announces `count` continuation bytes, 1 to 5.
VEK_INLINE Utf8Character ReadUtf8Sequence(const uint8_t* p, const uint8_t* end, int32_t count) {
  const Utf8Character firstAlone = {*p, 1};
  if (end - p <= count) {
    return firstAlone;
  }
  uint32_t value = *p & (0x3FU >> count);
  for (int32_t i = 1; i <= count; ++i) {
    if (!IsUtf8Continuation(p[i])) {
      return firstAlone;
    }
    value = AppendSixBits(value, p[i]);
  }
  return Utf8Length(value) == count + 1 ? Utf8Character{value, count + 1} : firstAlone;
}

// The character at p; p must lie below `end`, and no byte from `end` on is read.
VEK_INLINE Utf8Character ReadUtf8(const uint8_t* p, const uint8_t* end) {
  const uint32_t first = *p;
  if (first < 0xC0 || first >= 0xFE) {
    return {first, 1};
  }
  // The counts of everyday text as constants, for loops that unroll.
  if (first < 0xE0) {
    return ReadUtf8Sequence(p, end, 1);
  }
  if (first < 0xF0) {
    return ReadUtf8Sequence(p, end, 2);
  }
  return ReadUtf8Sequence(p, end, first < 0xF8 ? 3 : first < 0xFC ? 4 : 5);
}

constexpr int32_t kLongestUtf8 = 6;

// Where a walk over the characters from `first` on was before it came to `at`, or over it. A lead
// byte never lies within a sequence, so the nearest one decides.
inline const uint8_t* PreviousUtf8(const uint8_t* at, const uint8_t* first, const uint8_t* end) {
  const uint8_t* const last = at - 1;
  if (*last < 0x80) {
    return last;
  }
  const uint8_t* lead = last;
  while (lead > first && last - lead < kLongestUtf8 - 1 && IsUtf8Continuation(*lead)) {
    --lead;
  }
  return ReadUtf8(lead, end).length > last - lead ? lead : last;
}

}  // namespace vekch

#endif
