// SPDX-License-Identifier: MIT

// Whether a pattern may be searched for in many lines at once, judged from its compiled program.

#ifndef VEKGREP_LINE_SAFETY_H
#define VEKGREP_LINE_SAFETY_H

#include <cstdint>

#include "compiled_pattern.h"

namespace examples::vekgrep {

struct LineSafety {
  // A line that has a match when it is searched alone begins, or holds the beginning of, a match of
  // the whole text that is found.
  bool keepsLines = false;

  // And these are the same matches.
  bool exact = false;

  // Both as long as no line is longer than this: from there on the match limit might run out.
  int32_t longestLine = 0;
};

// `whole` is the program of the pattern for a text of many lines.
LineSafety JudgeLines(const CompiledPattern& whole, uint8_t lineEnd);

// The longest line for which no search runs out of the match limit; 0 if there is none.
int32_t LongestSafeLine(const CompiledPattern& compiled);

}  // namespace examples::vekgrep

#endif
