// SPDX-License-Identifier: MIT

// One pattern, searched for in the lines of a text. A match stays in a line, of which the pattern
// sees the bytes before the byte that ends it and no others.

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
  // `marks`: whether all matches of lines will be asked for. Null with the reason in `fault` if the
  // pattern does not compile.
  static std::unique_ptr<LinePattern> Compile(const std::string& pattern,
                                              const PatternSettings& settings, bool marks,
                                              std::string* fault);

  bool MayGiveUp() const { return !filter->LimitIsAmple(); }

  // Goes over to another text, which must stay as it is meanwhile.
  void Begin(const uint8_t* text, int32_t length);

  // Searches the lines from `from`, the start of a line, on, up to one with a match or one that is
  // given up. Doesn't search again what was searched: a result is kept until `from` or Pass is
  // after it. The range is that of the first match in the line or, if it was given up, the line.
  Outcome Seek(int32_t from, Range* range);
  void Pass() { kept = false; }

  // Finds all matches of a line, without its end; none if the match of the last Seek is not in it.
  // False if it was given up.
  bool BeginLine(Range line);

  // The first of them that begins at or after `from` and was not passed.
  bool PeekMark(int32_t from, Mark* mark);
  void PassMark() { nextMatch += first.Slots(); }

 private:
  LinePattern() = default;
  bool FindAll();
  Outcome SeekFound(int32_t from, Range* range);
  Outcome SearchLine(Range line);

  CompiledPattern first;       // finds the first match
  CompiledPattern all;         // finds all
  CompiledPattern allOfWhole;  // finds all of a text, where the filter is exact
  std::unique_ptr<LineFilter> filter;
  uint8_t lineEnd = '\n';
  bool wantsMarks = false;
  const uint8_t* text = nullptr;
  int32_t length = 0;

  bool kept = false;
  Outcome outcome = Outcome::kNothing;
  Range found = {};
  int32_t nextLine = 0;  // after the line of `found`

  Replacer matches;  // of the line that is shown or, if foundAll, of the text
  bool foundAll = false;
  int32_t nextFound = 0;          // if foundAll: the match that Seek has come to
  int32_t nextMatch = 0;          // that PeekMark has come to
  int32_t lastMatchPosition = 0;  // where matches of the line that is shown begin at most
};

}  // namespace examples::vekgrep

#endif
