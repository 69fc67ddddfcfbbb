// SPDX-License-Identifier: MIT

// Searches told by a slow and obvious matcher: plain recursion over a compiled program, record by
// record, with both budgets counted as they are laid down.

#ifndef VEKCH_TESTS_MATCH_MODEL_H
#define VEKCH_TESTS_MATCH_MODEL_H

#include <cstdint>
#include <vector>

#include "vekch/regexp_program.h"
#include "vekch/status.h"

namespace vekch::test {

struct SearchAnswer {
  vekStatus status = StatusNoError;
  int32_t count = 0;
  std::vector<RegExpFindResult> results;  // `count` of them, unless the status is an error
  bool isComplete = true;                 // false if it was given up, after too many steps
};

// What a search for `state` reports in `room` results; its arguments are valid ones. It is given
// up after `mostSteps` records.
SearchAnswer AnswerOfModel(const RegExpState& state, const uint8_t* subject, int32_t length,
                           int32_t room, int64_t mostSteps = INT64_MAX);

}  // namespace vekch::test

#endif
