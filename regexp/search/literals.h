// SPDX-License-Identifier: MIT

// What the literals of a pattern say of a subject before anything is matched: all that rests on
// literals alone is decided here.

#ifndef VEKCH_REGEXP_SEARCH_LITERALS_H
#define VEKCH_REGEXP_SEARCH_LITERALS_H

#include <stdint.h>

#include "regexp/characters/bytes.h"
#include "regexp/object/object_layout.h"
#include "regexp/object/record.h"
#include "regexp/search/literal_search.h"
#include "unicode/utf8.h"

namespace vekch::regexp {

// The part of a subject that is searched.
struct Stretch {
  const uint8_t* begin;
  int32_t length;
};

// Whether the pattern is one literal, which the matcher would find where it is found: depth for it
// and for the end after it is there.
inline bool IsLoneLiteral(const RegExpState& state) {
  constexpr int32_t kLeastDepth = 2;
  const ProgramNode& node = *ProgramOf(&state);
  return state.nodeCount == 1 && IsLiteral(node) && DepthLimit(state) > kLeastDepth &&
         (state.characterFormat == 0 || !IsUtf8Continuation(Literal(node).bytes[0]));
}

// Of the prefix literal, if it is found in either case.
inline RarestBytes RarestOf(const RegExpState& state) {
  return {FactsOf(&state)->rarest[0], FactsOf(&state)->rarest[1]};
}

// The first match of such a pattern.
inline bool FindLoneLiteral(const Stretch& text, const RegExpState& state,
                            RegExpFindResult* match) {
  const ProgramNode& node = *ProgramOf(&state);
  const Literal literal(node);
  const RarestBytes rarest = RarestOf(state);
  const int32_t at = FindFirst(text.begin, text.length, literal, IsCaseless(node.c), &rarest);
  if (at == kNotFound) {
    return false;
  }
  *match = {text.begin + at, literal.length};
  return true;
}

// Whether a search that finds nothing of the suffix literal has no match: the
// matcher could only fail in an empty text, where no group goes on after a first repetition, if its
// depth can't run out.
inline bool FailsOnNothing(const RegExpState& state) {
  constexpr int64_t kOwnLevels = 8;
  return DepthLimit(state) > 2 * int64_t{state.nodeCount} + kOwnLevels;
}

// No match ends after the last occurrence of the suffix literal, which every match ends with: the
// text up to there, nothing of it where there is none, all of it if the pattern has none.
inline Stretch UpToSuffixLiteral(const Stretch& text, const RegExpState& state) {
  if (state.requiredLiteralIndex < 0) {
    return text;
  }
  const ProgramNode& node = ProgramOf(&state)[state.requiredLiteralIndex];
  const Literal literal(node);
  const int32_t at = FindLast(text.begin, text.length, literal, IsCaseless(node.c));
  return {text.begin, at == kNotFound ? 0 : at + literal.length};
}

// Whether no match begins before the first occurrence of the prefix literal, and the text from
// there on; as it is where there is none.
inline bool HasPrefixLiteral(const RegExpState& state) { return state.searchMode == 1; }
inline Stretch FromPrefixLiteral(const Stretch& text, const RegExpState& state) {
  const RarestBytes rarest = RarestOf(state);
  const int32_t at = FindFirst(text.begin, text.length, Literal(*ProgramOf(&state)),
                               IsCaseless(static_cast<int32_t>(state.compileFlags)), &rarest);
  return at == kNotFound ? text : Stretch{text.begin + at, text.length - at};
}

// Whether the pattern is alternatives of literals, and its first match: the leftmost occurrence,
// and of two at one position that of the alternative before. Positions may lie within a character.
inline bool IsAlternativesOfLiterals(const RegExpState& state) { return state.searchMode == 2; }
bool FindAlternatives(const Stretch& text, RegExpState* state, RegExpFindResult* match);

}  // namespace vekch::regexp

#endif
