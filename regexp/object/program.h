// The compiled program as the compiler builds it and the searches read it: an array of records
// behind the fixed part of the pattern object.

#ifndef VEKCH_REGEXP_OBJECT_PROGRAM_H
#define VEKCH_REGEXP_OBJECT_PROGRAM_H

#include <stdint.h>

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
constexpr int32_t WidthRule(const ProgramNode& node) {
#define VEKCH_REGEXP_WIDTH(name, width, zeroWidth, a, b, c, ptr) width,
  constexpr int32_t kRules[] = {VEKCH_REGEXP_OPERATIONS(VEKCH_REGEXP_WIDTH)};
#undef VEKCH_REGEXP_WIDTH
  const uint32_t index = node.op - RegExpFirstOperation;
  return index < RegExpOperationCount ? kRules[index] : RegExpWidthNone;
}

// The number of characters that the `count` records behind an opening record always consume, or
// -1 if it is not fixed; what is longer than any subject counts as the longest.
//
// Groups inside the body (of the rule RegExpWidthGroup) are not walked again: NoteFixedLength has
// put their lengths into `ptr` of their opening records, innermost first. So there is no
// recursion, and each record is walked once for the group that it stands in.
int32_t FixedBodyLength(const ProgramNode& opening, int32_t count);

inline void NoteFixedLength(ProgramNode& opening) {
  opening.ptr = static_cast<uint32_t>(FixedBodyLength(opening, opening.b));
}

inline int32_t NotedFixedLength(const ProgramNode& opening) {
  return static_cast<int32_t>(opening.ptr);
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
inline const uint8_t* RunOf(const ProgramNode& node) { return PointerFrom<uint8_t>(node.ptr); }

inline ProgramNode* ProgramOf(RegExpState* state) {
  return reinterpret_cast<ProgramNode*>(state + 1);
}

inline const ProgramNode* ProgramOf(const RegExpState* state) {
  return reinterpret_cast<const ProgramNode*>(state + 1);
}

}  // namespace vekch::regexp

#endif
