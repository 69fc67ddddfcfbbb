// SPDX-License-Identifier: MIT

// Patterns that are one run of a set, "\w+" or "\p{L}+", or one of its members, "[aeiou]", also
// before the end of a line or of the text, "\w+$", or captured, "(\w+)$": their matches are where
// members begin and end, which is looked for in 64 bytes at a time, without a try for each.

#ifndef VEKCH_REGEXP_FAST_LONE_RUN_H
#define VEKCH_REGEXP_FAST_LONE_RUN_H

#include <stdint.h>

#include "regexp/fast/fast_matcher.h"

namespace vekch::regexp {

// What is wanted of matches: each is reported once, or a second time as what its group captured.
struct RunResults {
  RegExpFindResult* first;
  int32_t room;
  int32_t perMatch;
};

// The matches of a program with a lone run from `at` on, in a text that ends at `limit`: as many as
// there is room for. The number of results.
int32_t FindRuns(const FastProgram& program, const uint8_t* at, const uint8_t* limit,
                 const RunResults& results);

}  // namespace vekch::regexp

#endif
