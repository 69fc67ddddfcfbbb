// How a search finds the places where a match may begin, without asking the matcher: made once when
// a pattern is compiled. A place that is passed over is one where the matcher would have failed
// within the first records, so that it takes some depth; with less than that, no place is passed
// over, since the matcher would have had to give up there.

#ifndef VEKCH_REGEXP_SEARCH_PLAN_H
#define VEKCH_REGEXP_SEARCH_PLAN_H

#include <stdint.h>

#include "regexp/match_notes.h"
#include "vekch/regexp_program.h"

namespace vekch::regexp {

struct SearchPlan {
  enum Strategy : uint8_t {
    kEverywhere,
    kLineStart,   // where a line begins
    kLiteral,     // at a fixed distance from a literal
    kRunLiteral,  // within a run of bytes that a literal ends
    kFilter,      // by the sets that a match's first bytes belong to
  };

  Strategy strategy;
  uint8_t window;         // kFilter: how many bytes are known
  uint8_t isAtWordStart;  // no match begins behind a word byte
  uint8_t runDecides;     // kRunLiteral: what fails in a run's beginning fails all along the run
  int32_t depth;          // that has to be there for places to be passed over
  int32_t literal;        // kLiteral, kRunLiteral: index of the record
  int32_t distance;       // kLiteral: from the match's start; kRunLiteral: the least such distance
  int32_t mostDepth;      // that a match can need, INT32_MAX where it depends on the subject
  int32_t unused;
  // kFilter: bit k for a byte that may stand at place k of a match. kRunLiteral: not 0 for a byte
  // of the run.
  uint8_t bytes[256];
};

// The plan of a compiled pattern, or null where there was no room for one.
inline const SearchPlan* PlanOf(const RegExpState* state) {
  return reinterpret_cast<const SearchPlan*>(state->workTableA[0][1]);
}

// Makes the plan, in the first work table between the two addresses, which it may use as it likes.
void MakePlan(RegExpState* state, uint8_t* room, uint8_t* roomEnd);

}  // namespace vekch::regexp

#endif
