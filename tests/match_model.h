// SPDX-License-Identifier: MIT

// Searches answered by a slow and obvious matcher: plain recursion over a compiled program, record
// by record, with both budgets counted as they are laid down.

#ifndef VEKCH_TESTS_MATCH_MODEL_H
#define VEKCH_TESTS_MATCH_MODEL_H

#include "tests/pattern_object.h"

namespace vekch::test {

// What is reported of every match: its groups alone, or, as for a replacement, the whole as well.
enum class Slots { kGroupsAlone, kWholeMatchesToo };

// What a search for `state` reports in `room` results; its arguments are valid ones. It is given
// up after `mostSteps` records.
SearchAnswer AnswerOfModel(const RegExpState& state, const uint8_t* subject, int32_t length,
                           int32_t room, int64_t mostSteps = INT64_MAX,
                           Slots reported = Slots::kGroupsAlone);

}  // namespace vekch::test

#endif
