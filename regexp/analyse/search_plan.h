// SPDX-License-Identifier: MIT

// How a search finds the positions where a match may begin, without asking the matcher: made for a
// pattern when it pays for the first time. A position that is passed over is one where the matcher
// would have failed within the first records, so that it takes some depth; with less than that, no
// position is passed over, since the matcher would have had to give up there.

#ifndef VEKCH_REGEXP_ANALYSE_SEARCH_PLAN_H
#define VEKCH_REGEXP_ANALYSE_SEARCH_PLAN_H

#include <stdint.h>

#include "regexp/object/object_layout.h"
#include "regexp/object/record_notes.h"
#include "strings/kernels/attributes.h"
#include "strings/kernels/find_pair_kernels.h"
#include "vekch/regexp_program.h"

namespace vekch::regexp {

struct alignas(8) SearchPlan {
  // Prefilters by the names of the literature, each with a pattern that takes it and one that
  // doesn't.
  enum Strategy : uint8_t {
    kNoPrefilter,
    // Where a line begins. ".*x", not "a.*x".
    kLineStart,
    // At a fixed distance from a literal that is found by a substring search. "ab+c" and
    // "(?<=x)[ab]", not "[ab]c".
    kPrefixLiteral,
    // An inner literal is found first, then the run of the classes before it is
    // walked backwards to where a match can begin ("reverse inner": A. Gallant, Regex engine
    // internals as a library, 2023). "\w+@\w" and "\w{1,9}@", not "\w+[@#]".
    kInnerLiteral,
    // By the classes of the first bytes, one bit for each position: forwards with few positions,
    // else backwards through a window, as the bit-parallel suffix automaton does (BNDM: G. Navarro
    // and M. Raffinot, A bit-parallel approach to suffix automata, 1998). "[^,][^;]", not "\1|x".
    kClassWindow,
    // The same, after a look for the two of these bytes that texts hold least often, 64 positions
    // at a time ("packed pair": W. Mula, SIMD-friendly algorithms for substring searching, 2016).
    // "[A-Z][a-z]+", not "[^,][^;]".
    kPackedPair,
    // Where a word begins, 64 positions at a time, and then by the classes of the first bytes.
    // "\b\w{5}\b", not "\b[A-Z]\w" nor "\w{5}\b".
    kWordStart,
    // Alternatives of literals, or what begins with such, all at once: backwards through a window
    // of hashed pairs of bytes (L. Salmela, J. Tarhio, J. Kytojoki, Multipattern string matching
    // with q-grams, 2006). "license|program" and "\b(?:copy|licen[cs]e)", not "if|then".
    kHashedPairs,
  };

  Strategy strategy;
  uint8_t window;         // how many bytes are known, or pairs of bytes
  uint8_t isAtWordStart;  // no match begins after a word byte
  uint8_t runDecides;     // what fails in the beginning of a run fails all along the run
  int32_t depth;          // that has to be there for positions to be passed over
  int32_t literal;        // kPrefixLiteral, kInnerLiteral: index of the record
  // kPrefixLiteral: from the match's start; kInnerLiteral: the least such distance
  int32_t distance;
  int32_t reach;  // kInnerLiteral: the most such distance
  kernels::BytePair pair;
  // kClassWindow, kPackedPair: bit k for a byte that may be at position k of a match.
  // kInnerLiteral: not 0 for a byte of the run.
  uint8_t bytes[256];
};

// kHashedPairs: bit k for the hash of two bytes that may be at the positions k and k + 1 of a
// match; where case is ignored a letter is there in both. The table follows the plan.
constexpr int32_t kPairHashes = 2048;

VEK_INLINE uint32_t PairHash(uint8_t first, uint8_t second) {
  return (uint32_t{first} << 4 ^ second) & (kPairHashes - 1);
}

inline const uint8_t* PairTableOf(const SearchPlan& plan) {
  return reinterpret_cast<const uint8_t*>(&plan + 1);
}

// The plan of a compiled pattern for a search in so many bytes, or null for none: there is no room
// for one, or it would take longer to make than it could save.
const SearchPlan* PlanFor(RegExpState* state, int32_t length);

}  // namespace vekch::regexp

#endif
