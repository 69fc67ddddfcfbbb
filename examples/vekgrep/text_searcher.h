// SPDX-License-Identifier: MIT

// Searches for fixed texts. A chunk is searched as a whole: for few texts once for each, for many
// of them once for all.

#ifndef VEKGREP_TEXT_SEARCHER_H
#define VEKGREP_TEXT_SEARCHER_H

#include <cstdint>
#include <limits>
#include <string>
#include <unordered_map>
#include <vector>

#include "compiled_pattern.h"
#include "searcher.h"

namespace examples::vekgrep {

class TextSearcher : public Searcher {
 public:
  // With bounds the texts to be searched consist of whole lines.
  TextSearcher(const std::vector<std::string>& texts, bool ignoreCase,
               Bounds bounds = Bounds::kNone, uint8_t lineEnd = '\n');

  // Length of the longest text.
  int32_t LongestText() const { return longest; }

  // Whether the empty text is among them. Such occurrences are never reported by Next.
  bool MatchesEveryLine() const override { return matchesEveryLine; }

  void Begin(const uint8_t* text, int32_t length) override;

  // Of the occurrences that start first the longest. `from` may be any position.
  Outcome Next(int32_t from, Range* match) override;

  void BeginLine(Range line) override;
  Outcome NextMark(Mark* mark) override;

 private:
  static constexpr int32_t kNowhere = std::numeric_limits<int32_t>::max();

  enum class Way { kUnknown, kEach, kTogether };

  struct Text {
    std::string bytes;
    int32_t next;  // its first occurrence after where it was asked for last, or kNowhere
  };

  void ChooseWay();
  int32_t Size(const Text& one) const { return static_cast<int32_t>(one.bytes.size()); }
  int32_t Find(const Text& one, int32_t from) const;
  bool HasBounds(Range found) const;
  void NextOfEach(int32_t from, Range* match);
  void NextTogether(int32_t from, Range* match) const;
  void FillShifts();
  int64_t StepsTogether(int32_t sampled) const;
  void Check(int32_t begin, uint16_t pair, Range* match) const;

  std::vector<Text> texts;
  const Bounds bounds;
  const uint8_t lineEnd;
  bool matchesEveryLine = false;
  int32_t longest = 0;
  bool foldsCase = false;
  std::vector<uint8_t> folded;    // the text in small letters, if foldsCase
  const uint8_t* text = nullptr;  // what is searched
  int32_t length = 0;
  Range unmarked = {};  // what is left of the line that is shown

  Way way = Way::kUnknown;
  // Of kTogether: how far a text that is to be found may still be at least, by two bytes of what is
  // searched; and by the last two of a text's first `shortest` bytes, which texts have them.
  int32_t shortest = 0;
  std::vector<uint8_t> shifts;
  std::unordered_map<uint16_t, std::vector<size_t>> byPair;
};

}  // namespace examples::vekgrep

#endif
