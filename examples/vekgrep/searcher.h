// Where a text matches. The text is a chunk of lines as it was read; it is searched as a whole, so
// that a chunk without an occurrence costs one pass for each pattern.

#ifndef VEKGREP_SEARCHER_H
#define VEKGREP_SEARCHER_H

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "common/bytes.h"

namespace examples::vekgrep {

class Searcher {
 public:
  Searcher(const std::vector<std::string>& patterns, bool ignoreCase);

  // Whether the empty text is among the patterns. Such occurrences select every line and are never
  // reported by Next.
  bool MatchesEveryLine() const { return matchesEveryLine; }

  // Length of the longest pattern.
  int32_t LongestPattern() const { return longestPattern; }

  // Goes over to another text, which must stay as it is meanwhile.
  void Begin(const uint8_t* text, int32_t length);

  // The occurrence that starts first, and of those the longest, at or behind `from`. Within one
  // text `from` must not decrease.
  bool Next(int32_t from, Range* match);

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
};

}  // namespace examples::vekgrep

#endif
