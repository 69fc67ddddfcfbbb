// SPDX-License-Identifier: MIT

// Searches for fixed texts. A chunk is searched as a whole, so that one without an occurrence costs
// one pass for each text.

#ifndef VEKGREP_TEXT_SEARCHER_H
#define VEKGREP_TEXT_SEARCHER_H

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "searcher.h"

namespace examples::vekgrep {

class TextSearcher : public Searcher {
 public:
  TextSearcher(const std::vector<std::string>& patterns, bool ignoreCase);

  // Length of the longest pattern.
  int32_t LongestPattern() const { return longestPattern; }

  // Whether the empty text is among the patterns. Such occurrences are never reported by Next.
  bool MatchesEveryLine() const override { return matchesEveryLine; }

  void Begin(const uint8_t* text, int32_t length) override;

  // Of the occurrences that start first the longest. `from` may be any place.
  Outcome Next(int32_t from, Range* match) override;

  void BeginLine(Range line) override;
  Outcome NextMark(Mark* mark) override;
  bool Replace(Range /*line*/, Replacer* /*replacer*/) override { return false; }

 private:
  static constexpr int32_t kNowhere = std::numeric_limits<int32_t>::max();

  struct Pattern {
    std::string bytes;
    int32_t next;  // its first occurrence behind where it was asked for last, or kNowhere
  };

  int32_t Find(const std::string& bytes, int32_t from) const;

  std::vector<Pattern> patterns;
  bool matchesEveryLine = false;
  int32_t longestPattern = 0;
  bool foldsCase = false;
  std::vector<uint8_t> folded;    // the text in small letters, if foldsCase
  const uint8_t* text = nullptr;  // what is searched
  int32_t length = 0;
  Range unmarked = {};  // what is left of the line that is shown
};

}  // namespace examples::vekgrep

#endif
