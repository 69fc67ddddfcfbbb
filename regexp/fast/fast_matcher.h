// SPDX-License-Identifier: MIT

// The fast matcher: whether a translated program matches at one position of a subject, where
// neither budget of the search can run out. Where one could, or its backtrack frames are used up,
// it gives up, and the exact matcher does the same try from the beginning.

#ifndef VEKCH_REGEXP_FAST_FAST_MATCHER_H
#define VEKCH_REGEXP_FAST_FAST_MATCHER_H

#include <stdint.h>

#include "regexp/fast/failure_memory.h"
#include "regexp/fast/fast_program.h"
#include "vekch/regexp.h"

namespace vekch::regexp {

enum class FastResult {
  kMatch,
  kFail,
  kGivesUp,    // the exact matcher is to do the try
  kExhausted,  // it has come back to its choices as often as the call may
};

// A call of the search, as far as the fast matcher has to do with it.
struct FastCall {
  const FastProgram* program;
  RegExpState* state;
  const uint8_t* subject;
  const uint8_t* subjectEnd;
  // Levels of depth that the repetitions of groups may take; below 0 if nothing may be tried.
  int32_t allowance;
  int64_t returnsAllowed;
  // Returns to choices after which a try is done again with the memory.
  int32_t lightReturns = 2000;
  FailureMemory memory = {};
  const uint8_t* furthest = nullptr;  // that the tries with the memory have come to
  // For FindFast: bit 1 for a byte that may follow the first of a match, if there is always one.
  const uint8_t* secondBytes = nullptr;
};

inline int32_t AllowanceOf(const FastProgram& program, const RegExpState& state) {
  return static_cast<int32_t>(static_cast<uint32_t>(state.matchLimit) / RegExpDepthShare) - 1 -
         program.depth;
}

// A call that comes back to its choices so often at most.
inline FastCall FastCallOf(const FastProgram& program, RegExpState* state, const uint8_t* subject,
                           int32_t length, int64_t returns) {
  return {&program, state, subject, subject + length, AllowanceOf(program, *state), returns};
}

// Matches where a subject begins, which is its only position or the first of some. kExhausted where
// that takes more than a few frames and returns to choices.
FastResult MatchFirst(const FastProgram& program, RegExpState* state, const uint8_t* subject,
                      int32_t length);

// Matches at `start`, in a text that ends at `limit`; on kMatch the slots hold the match.
FastResult MatchFast(FastCall* call, const uint8_t* start, const uint8_t* limit);

// The first match from `start` on, at any position where a character begins.
FastResult FindFast(FastCall* call, const uint8_t* start, const uint8_t* limit);

}  // namespace vekch::regexp

#endif
