// SPDX-License-Identifier: MIT

// Searches for patterns.

#ifndef VEKGREP_PATTERN_SEARCHER_H
#define VEKGREP_PATTERN_SEARCHER_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "line_pattern.h"
#include "searcher.h"

namespace examples::vekgrep {

class PatternSearcher : public Searcher {
 public:
  // After false, `fault` says what is wrong with the pattern.
  bool Add(const std::string& pattern, const PatternSettings& settings, bool marks,
           std::string* fault);

  bool MayGiveUp() const override;
  void Begin(const uint8_t* text, int32_t length) override;
  Outcome Next(int32_t from, Range* match) override;

  // Of several patterns, the matches that don't overlap an earlier one.
  void BeginLine(Range line) override;
  Outcome NextMark(Mark* mark) override;

 private:
  std::vector<std::unique_ptr<LinePattern>> patterns;
  Range line = {};  // that is shown
  int32_t markedTo = 0;
  bool givenUp = false;  // while its matches were looked for
};

}  // namespace examples::vekgrep

#endif
