// The literals of a compiled program, looked for in a subject.

#ifndef VEKCH_REGEXP_LITERAL_H
#define VEKCH_REGEXP_LITERAL_H

#include <stdint.h>

#include "regexp/bytes.h"
#include "regexp/program.h"
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

inline int32_t FindFirstCaseless(const uint8_t* subject, int32_t length, const Literal& literal) {
  for (int32_t at = 0; at <= length - literal.length; ++at) {
    if (SameBytes(subject + at, literal.bytes, literal.length, true)) {
      return at;
    }
  }
  return kNotFound;
}

inline int32_t FindLastCaseless(const uint8_t* subject, int32_t length, const Literal& literal) {
  for (int32_t at = length - literal.length; at >= 0; --at) {
    if (SameBytes(subject + at, literal.bytes, literal.length, true)) {
      return at;
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
