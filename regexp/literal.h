// The literals of a compiled program, looked for in a subject.

#ifndef VEKCH_REGEXP_LITERAL_H
#define VEKCH_REGEXP_LITERAL_H

#include <stdint.h>

#include "regexp/bytes.h"
#include "regexp/program.h"
#include "strings/kernels/commonness.h"
#include "strings/kernels/find_kernels.h"

namespace vekch::regexp {

constexpr int32_t kNotFound = -1;

struct Literal {
  const uint8_t* bytes;
  int32_t length;

  explicit Literal(const ProgramNode& node)
      : bytes(node.op == OpString ? RunOf(node) : reinterpret_cast<const uint8_t*>(&node.a)),
        length(node.op == OpString ? node.b : 1) {}
};

// The byte of a literal that texts hold least often, in both cases, is looked for first.
struct RarestByte {
  int32_t offset = 0;
  uint8_t cases[2];

  explicit RarestByte(const Literal& literal) : cases() {
    for (int32_t i = 1; i < literal.length; ++i) {
      if (Commonness(literal.bytes[i]) < Commonness(literal.bytes[offset])) {
        offset = i;
      }
    }
    const uint8_t byte = literal.bytes[offset];
    cases[0] = byte;
    cases[1] = IsAsciiLetter(byte) ? static_cast<uint8_t>(byte ^ 0x20) : byte;
  }

  static int32_t Commonness(uint8_t byte) {
    return kernels::kCommonness.of[IsAsciiLetter(byte) ? byte | 0x20 : byte];
  }
};

inline int32_t FindFirstCaseless(const uint8_t* subject, int32_t length, const Literal& literal) {
  const RarestByte rarest(literal);
  const int32_t places = length - literal.length + 1;
  int32_t at = 0;
  while (at < places) {
    const uint8_t* const from = subject + at + rarest.offset;
    const int32_t found = kernels::FindAnyOf(from, places - at, rarest.cases, 2);
    if (found < 0) {
      return kNotFound;
    }
    at += found;
    if (SameBytes(subject + at, literal.bytes, literal.length, true)) {
      return at;
    }
    ++at;
  }
  return kNotFound;
}

inline int32_t FindLastCaseless(const uint8_t* subject, int32_t length, const Literal& literal) {
  const RarestByte rarest(literal);
  int32_t places = length - literal.length + 1;
  while (places > 0) {
    places = kernels::FindLastOf(subject + rarest.offset, places, rarest.cases, 2);
    if (places >= 0 && SameBytes(subject + places, literal.bytes, literal.length, true)) {
      return places;
    }
  }
  return kNotFound;
}

inline int32_t FindFirst(const uint8_t* subject, int32_t length, const Literal& literal,
                         bool caseless) {
  if (literal.length > length) {
    return kNotFound;
  }
  if (caseless) {
    return FindFirstCaseless(subject, length, literal);
  }
  return literal.length == 1
             ? kernels::FindByte(subject, length, literal.bytes[0])
             : kernels::FindSubstring(subject, length, literal.bytes, literal.length);
}

inline int32_t FindLast(const uint8_t* subject, int32_t length, const Literal& literal,
                        bool caseless) {
  if (literal.length > length) {
    return kNotFound;
  }
  if (caseless) {
    return FindLastCaseless(subject, length, literal);
  }
  return literal.length == 1
             ? kernels::FindLastByte(subject, length, literal.bytes[0])
             : kernels::FindLastSubstring(subject, length, literal.bytes, literal.length);
}

}  // namespace vekch::regexp

#endif
