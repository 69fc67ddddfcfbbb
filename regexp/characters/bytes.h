// SPDX-License-Identifier: MIT

// How single bytes of a subject are compared.

#ifndef VEKCH_REGEXP_CHARACTERS_BYTES_H
#define VEKCH_REGEXP_CHARACTERS_BYTES_H

#include <stdint.h>

#include "regexp/object/record.h"
#include "strings/kernels/attributes.h"
#include "vekch/regexp_program.h"

namespace vekch::regexp {

constexpr bool IsAsciiLetter(int32_t value) {
  return static_cast<uint32_t>(value | 0x20) - 'a' < 26;
}

constexpr bool IsDigit(int32_t value) { return static_cast<uint32_t>(value) - '0' < 10; }

constexpr bool IsWordByte(int32_t value) {
  return IsAsciiLetter(value) || IsDigit(value) || value == '_';
}

constexpr bool IsCaseless(int32_t options) { return (options & RegExpOptionI) != 0; }

// The same letter in the other case where case is ignored; else, and for any other byte, itself.
constexpr uint8_t OtherCase(uint8_t byte, bool caseless = true) {
  return caseless && IsAsciiLetter(byte) ? static_cast<uint8_t>(byte ^ 0x20) : byte;
}

VEK_INLINE bool SameByte(uint8_t inSubject, uint8_t expected, bool caseless) {
  return inSubject == expected ||
         (caseless && (inSubject ^ expected) == 0x20 && IsAsciiLetter(inSubject));
}

VEK_INLINE bool SameBytes(const uint8_t* inSubject, const uint8_t* expected, int32_t length,
                          bool caseless) {
  int32_t i = 0;
  while (i < length && SameByte(inSubject[i], expected[i], caseless)) {
    ++i;
  }
  return i >= length;
}

// Whether a literal's record accepts what begins at `at`.
VEK_INLINE bool StandsAt(const ProgramNode& node, const uint8_t* at, const uint8_t* end) {
  const Literal literal(node);
  return end - at >= literal.length &&
         SameBytes(at, literal.bytes, literal.length, IsCaseless(node.c));
}

}  // namespace vekch::regexp

#endif
