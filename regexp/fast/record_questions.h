// SPDX-License-Identifier: MIT

// What a translation asks of the records of a program.

#ifndef VEKCH_REGEXP_FAST_RECORD_QUESTIONS_H
#define VEKCH_REGEXP_FAST_RECORD_QUESTIONS_H

#include <stdint.h>

#include "regexp/characters/character_set.h"
#include "regexp/object/program_walk.h"
#include "regexp/object/record_notes.h"

namespace vekch::regexp {

// Whether it is no record of groups, options or conditions.
inline bool IsAtom(const ProgramNode& node) {
  switch (node.op) {
    case OpChar:
    case OpString:
    case OpBackref:
    case OpClass:
    case OpCharType:
    case OpAnyByte:
    case OpCodePoint:
    case OpCategory:
    case OpRange:
    case OpScript:
    case OpGrapheme:
      return true;
    default:
      return false;
  }
}

// Whether what a quantifier follows has to be there; null for none.
inline bool IsDue(const ProgramNode* quantifier) {
  return quantifier == nullptr || quantifier->a > 0;
}

// Whether what the record accepts may count more or fewer bytes than it has: a byte above 0x7F
// that is no character counts as the code point of its value, and cases may differ in length.
inline bool MayBeSkewed(const ProgramNode& node) {
  const bool isByte = node.a >= 0x80 && node.a <= UINT8_MAX;
  return node.op == OpCodePoint && (isByte || (OptionsOf(node) & RegExpOptionI) != 0);
}

// Whether the record accepts one byte, or one letter's two.
inline bool IsByte(const ProgramNode& node) {
  return node.op == OpChar || (node.op == OpCodePoint && node.a < 0x80);
}

// The set of a record that accepts single bytes alone, or null. (A class without a set has left no
// room for a translation.)
inline const CharacterSet* ByteSetOf(const ProgramWalk& walk, int32_t i, bool isUtf8) {
  const CharacterSet* const set = walk.SetAt(i);
  return set != nullptr && (!isUtf8 || set->wide == Wide::kOutside) ? set : nullptr;
}

// The set of a record that accepts all characters of several bytes, or null.
inline const CharacterSet* OpenSetOf(const ProgramWalk& walk, int32_t i) {
  const CharacterSet* const set = walk.SetAt(i);
  return set != nullptr && set->wide == Wide::kInside ? set : nullptr;
}

}  // namespace vekch::regexp

#endif
