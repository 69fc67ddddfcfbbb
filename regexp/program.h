// The compiled program as the compiler builds it and the searches read it: an array of records
// behind the fixed part of the pattern object.

#ifndef VEKCH_REGEXP_PROGRAM_H_INTERNAL
#define VEKCH_REGEXP_PROGRAM_H_INTERNAL

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

inline ProgramNode* ProgramOf(RegExpState* state) {
  return reinterpret_cast<ProgramNode*>(state + 1);
}

inline const ProgramNode* ProgramOf(const RegExpState* state) {
  return reinterpret_cast<const ProgramNode*>(state + 1);
}

}  // namespace vekch::regexp

#endif
