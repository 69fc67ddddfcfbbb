// SPDX-License-Identifier: MIT

// Questions about one record of a program.

#ifndef VEKCH_REGEXP_OBJECT_RECORD_H
#define VEKCH_REGEXP_OBJECT_RECORD_H

#include <stdint.h>

#include "frame/expect.h"
#include "vekch/regexp_program.h"

namespace vekch::regexp {

constexpr uint32_t kOpeningFirst = OpLookbehind;
constexpr uint32_t kOpeningLast = OpAtomic;

constexpr bool IsOpening(const ProgramNode& node) {
  return node.op >= kOpeningFirst && node.op <= kOpeningLast;
}

constexpr bool IsQuantifier(const ProgramNode& node) {
  return node.op == OpGreedy || node.op == OpLazy;
}

constexpr bool IsLiteral(const ProgramNode& node) {
  return node.op == OpChar || node.op == OpString;
}

constexpr bool IsLookbehind(const ProgramNode& node) {
  return node.op == OpLookbehind || node.op == OpNegLookbehind;
}

constexpr bool IsLookaround(const ProgramNode& node) {
  return node.op >= OpLookbehind && node.op <= OpNegLookahead;
}

// How an operation counts in a fixed length: one of RegExpWidth...; an unknown one counts nothing.
#define VEKCH_REGEXP_WIDTH(name, width, zeroWidth, a, b, c, ptr) width,
inline constexpr uint8_t kWidthRules[] = {VEKCH_REGEXP_OPERATIONS(VEKCH_REGEXP_WIDTH)};
#undef VEKCH_REGEXP_WIDTH
constexpr int32_t WidthRule(const ProgramNode& node) {
  const uint32_t index = node.op - RegExpFirstOperation;
  return index < RegExpOperationCount ? kWidthRules[index] : int32_t{RegExpWidthNone};
}

// The serial of the group that an opening, an alternative or an end belongs to, 0 at top level.
constexpr int32_t SerialOf(const ProgramNode& node) { return node.a < 0 ? -node.a : node.a; }

// The end of a group, by its opening record.
inline const ProgramNode* GroupEndOf(const ProgramNode& opening) {
  return &opening + opening.b + 1;
}

// How many records further the one after an atom is, where its quantifier is if it has one.
constexpr int32_t AtomSize(const ProgramNode& atom) {
  return 1 + (atom.op == OpClass ? atom.b : 0);
}
inline const ProgramNode* AfterAtom(const ProgramNode& atom) { return &atom + AtomSize(atom); }

// The quantifier at a record that may be the end of the program, or null.
inline const ProgramNode* QuantifierAt(const ProgramNode* node, const ProgramNode* programEnd) {
  return node < programEnd && IsQuantifier(*node) ? node : nullptr;
}

// An address that is kept as a number.
template <class Object>
inline const Object* PointerFrom(uint64_t address) {
  static_assert(sizeof(void*) == sizeof address);
  const Object* pointer = nullptr;
  __builtin_memcpy(&pointer, &address, sizeof address);
  return pointer;
}

// The bytes of an OpString.
inline const uint8_t* RunOf(const ProgramNode& node) {
  VEK_EXPECT(node.op == OpString);
  return PointerFrom<uint8_t>(node.ptr);
}

// The bytes of an OpChar or OpString.
struct Literal {
  const uint8_t* bytes;
  int32_t length;

  explicit Literal(const ProgramNode& node)
      : bytes(node.op == OpString ? RunOf(node) : reinterpret_cast<const uint8_t*>(&node.a)),
        length(node.op == OpString ? node.b : 1) {}
};

}  // namespace vekch::regexp

#endif
