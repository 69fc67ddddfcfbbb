// How a search finds the places where a match may begin, without asking the matcher: made for a
// pattern when it pays for the first time. A place that is passed over is one where the matcher
// would have failed within the first records, so that it takes some depth; with less than that, no
// place is passed over, since the matcher would have had to give up there.

#ifndef VEKCH_REGEXP_ANALYSE_SEARCH_PLAN_H
#define VEKCH_REGEXP_ANALYSE_SEARCH_PLAN_H

#include <stdint.h>

#include "regexp/analyse/match_notes.h"
#include "strings/kernels/attributes.h"
#include "strings/kernels/find_pair_kernels.h"
#include "vekch/regexp_program.h"

namespace vekch::regexp {

struct alignas(8) SearchPlan {
  enum Strategy : uint8_t {
    kEverywhere,
    kLineStart,   // where a line begins
    kLiteral,     // at a fixed distance from a literal
    kRunLiteral,  // within a run of bytes that a literal ends
    kFilter,      // by the sets that a match's first bytes belong to
    kPair,        // the same, and two of those bytes are rare enough to look for them first
    kWords,  // by the pairs of bytes that the literals begin with, of which the pattern is made
  };

  Strategy strategy;
  uint8_t window;         // how many bytes are known, or pairs of bytes
  uint8_t isAtWordStart;  // no match begins behind a word byte
  uint8_t runDecides;     // kRunLiteral: what fails in a run's beginning fails all along the run
  int32_t depth;          // that has to be there for places to be passed over
  int32_t literal;        // kLiteral, kRunLiteral: index of the record
  int32_t distance;       // kLiteral: from the match's start; kRunLiteral: the least such distance
  kernels::BytePair pair;
  // kFilter, kPair: bit k for a byte that may stand at place k of a match. kRunLiteral: not 0 for a
  // byte of the run.
  uint8_t bytes[256];
};

// kWords: bit k for the hash of two bytes that may stand at the places k and k + 1 of a match; a
// letter counts in both cases. The table follows the plan.
constexpr int32_t kPairHashes = 2048;

VEK_INLINE uint32_t PairHash(uint8_t first, uint8_t second) {
  return ((first & 0xDFU) << 4 ^ (second & 0xDFU)) & (kPairHashes - 1);
}

inline const uint8_t* PairTableOf(const SearchPlan& plan) {
  return reinterpret_cast<const uint8_t*>(&plan + 1);
}

// The plan of a compiled pattern for a search in so many bytes, or null for none: there is no room
// for one, or it would take longer to make than it could save.
const SearchPlan* PlanFor(RegExpState* state, int32_t length);

}  // namespace vekch::regexp

#endif
