// SPDX-License-Identifier: MIT

// One pattern, searched for in the lines of a text. A match stays in a line, of which the pattern
// sees the bytes in front of the newline and no others.

#ifndef VEKGREP_LINE_PATTERN_H
#define VEKGREP_LINE_PATTERN_H

#include <cstdint>
#include <memory>
#include <string>

#include "compiled_pattern.h"
#include "line_filter.h"
#include "replacer.h"
#include "searcher.h"

namespace examples::vekgrep {

class LinePattern {
 public:
  // Null with the reason in `fault` if the pattern does not compile.
  static std::unique_ptr<LinePattern> Compile(const std::string& pattern,
                                              const PatternSettings& settings, std::string* fault);

  // Goes over to another text, which must stay as it is meanwhile.
  void Begin(const uint8_t* text, int32_t length);

  // Searches the lines from `from`, the start of a line, on, up to one with a match or one that is
  // given up. Doesn't search again what was searched: a result is kept until `from` or Pass is
  // behind it. The range is that of the first match in the line or, if it was given up, the line.
  Outcome Seek(int32_t from, Range* range);
  void Pass() { kept = false; }

  // Finds all matches of a line, without its newline; none if the match of the last Seek is not in
  // it. False if it was given up.
  bool BeginLine(Range line);

  // The first of them that begins at or behind `from` and was not passed.
  bool PeekMark(int32_t from, Mark* mark);
  void PassMark() { nextMatch += first.Slots(); }

  // Makes of a line what it becomes when all matches are replaced. False if it was given up and
  // stays as it is.
  bool Replace(Range line, Replacer* replacer) {
    return replacer->Replace(all, first, text + line.begin, line.end - line.begin);
  }

 private:
  LinePattern() = default;
  Outcome SearchLine(Range line);

  CompiledPattern first;  // finds the first match
  CompiledPattern all;    // finds all
  std::unique_ptr<LineFilter> filter;
  const uint8_t* text = nullptr;
  int32_t length = 0;

  bool kept = false;
  Outcome outcome = Outcome::kNothing;
  Range found = {};
  int32_t nextLine = 0;  // behind the line of `found`

  Replacer matches;  // of the line that is shown
  int32_t matchesEnd = 0;
  int32_t nextMatch = 0;
};

}  // namespace examples::vekgrep

#endif
