// SPDX-License-Identifier: MIT

// Sets of characters as the matcher tests them: a table with an entry for each byte that stands
// alone, and one answer for all characters of several bytes, where they all have the same.

#ifndef VEKCH_REGEXP_CHARACTERS_CHARACTER_SET_H
#define VEKCH_REGEXP_CHARACTERS_CHARACTER_SET_H

#include <stdint.h>

#include "regexp/object/record.h"

namespace vekch::regexp {

// How a set answers for characters of several bytes.
enum class Wide : uint8_t {
  kOutside,  // none is a member, nor is a byte above 0x7F
  kInside,   // all are members, and so are the bytes above 0x7F
  kMixed,    // each is looked up
};

struct CharacterSet {
  uint8_t member[256];  // 0xFF for a byte that is a member where it is a character by itself
  Wide wide;
  uint8_t options;  // in force where the class is
  uint8_t unused[6];
};

// The set of a shorthand where `options` are in force; without members for no shorthand's letter.
const CharacterSet& ShorthandSet(int32_t letter, int32_t options);

// Whether a character belongs to a class, given by its head record.
bool InClass(int32_t codePoint, const ProgramNode& head, bool caseless);

// Fills the set of a class that was read with `options` in force.
void FillClassSet(const ProgramNode& head, int32_t options, CharacterSet* set);

}  // namespace vekch::regexp

#endif
