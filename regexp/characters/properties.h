// SPDX-License-Identifier: MIT

// Unicode properties: the parser of "\p" and "\P", the membership test of a property record, and
// the questions about one code point that matching loops ask. All of it by the Unicode 5.1 data,
// all of it constant, each answer about a code point in constant time; ASCII never reaches the
// tables of pages.

#ifndef VEKCH_REGEXP_CHARACTERS_PROPERTIES_H
#define VEKCH_REGEXP_CHARACTERS_PROPERTIES_H

#include <stdint.h>

#include "regexp/characters/unicode_tables.h"
#include "vekch/regexp_program.h"

namespace vekch::regexp {

// A general category: one bit for the major class, and for a two-letter category one minor bit
// that distinguishes it from the others of its class.
enum CategoryMask : int32_t {
  kCategoryL = 0x80,
  kCategoryM = 0x100,
  kCategoryZ = 0x200,
  kCategoryS = 0x400,
  kCategoryN = 0x800,
  kCategoryP = 0x1000,
  kCategoryC = 0x2000,
  kCategoryMinorBits = 0x7F,
  kCategoryUnassigned = 0x2010  // Cn
};

// Reads a property escape. `*position` points at its "p" or "P"; `negated` is 0 for the one and -1
// for the other. Returns 0 with one record appended at nodes[*nodeCount], the counter raised and
// `*position` after the escape; or -1 with `*position` at the byte that can't be accepted, where
// a record may have been appended as well. The pattern ends with a zero byte and is not read
// after it. Names of blocks are known, and refused.
int32_t ParsePropertyEscape(const uint8_t** position, ProgramNode* nodes, int32_t* nodeCount,
                            int32_t negated);

// The same for the name of a script alone, with `*position` at its first byte: on success it is
// left on the closing brace, on failure it stays.
int32_t ParseScriptName(const uint8_t** position, ProgramNode* nodes, int32_t* nodeCount,
                        int32_t negated);

// Whether a code point belongs to the set of an OpCodePoint, OpCategory, OpRange or OpScript
// record: 0 or more when it does, else negative. Any other record has no members. `caseless` (0 or
// not) counts for OpCodePoint alone. The list of an OpScript record is one that ParseScriptName
// put there. Any value serves as a code point.
int32_t MatchPropertyItem(int32_t codePoint, const ProgramNode* node, int32_t caseless);

// Whether `\p` (negated 0) or `\P` (negated not 0) of a category accepts a code point.
bool MatchCategory(int32_t codePoint, int32_t mask, int32_t negated);

// For loops over one category: what MatchCategory accepts, in a form that is tested in a few
// instructions. One bit for each class of code points.
uint64_t CategorySet(int32_t mask, int32_t negated);
inline bool InCategorySet(int32_t codePoint, uint64_t set) {
  return ((set >> ClassOf(codePoint)) & 1) != 0;
}

// Whether a code point lies in a script's list, given as an OpScript record holds it in `ptr`: no
// list is walked, its address identifies the script.
inline bool InScript(int32_t codePoint, uint64_t list) {
  return list == reinterpret_cast<uintptr_t>(ScriptList(ScriptOf(codePoint)));
}

// The category of a code point, kCategoryUnassigned for one without any.
inline int32_t CategoryOf(int32_t codePoint) { return kClassCategory[ClassOf(codePoint)]; }

}  // namespace vekch::regexp

#endif
