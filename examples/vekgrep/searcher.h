// SPDX-License-Identifier: MIT

// Where a text matches: what searching for fixed text and for patterns have in common. The text is
// a chunk of lines as it was read.

#ifndef VEKGREP_SEARCHER_H
#define VEKGREP_SEARCHER_H

#include <cstdint>

#include "common/bytes.h"
#include "vekch/regexp.h"

namespace examples::vekgrep {

enum class Outcome {
  kNothing,
  kMatch,
  kGivenUp  // a pattern's match limit ran out in a line, which counts as one without a match
};

// A match to be shown, with what its groups captured: positions in the text.
struct Mark {
  Range range;
  const RegExpFindResult* groups;
  int32_t groupCount;
};

class Searcher {
 public:
  virtual ~Searcher() = default;

  // Whether every line is selected, by matches that need not be looked for.
  virtual bool MatchesEveryLine() const { return false; }

  // Whether kGivenUp may come.
  virtual bool MayGiveUp() const { return false; }

  // Goes over to another text, which must stay as it is meanwhile.
  virtual void Begin(const uint8_t* text, int32_t length) = 0;

  // The first match at or after `from`, the start of a line; within one text `from` must not
  // decrease. With kGivenUp `match` is a position in the line, and the search goes on from there
  // when asked again.
  virtual Outcome Next(int32_t from, Range* match) = 0;

  // Goes over to showing the matches of the line that Next found last; `line` is without the byte
  // that ends it.
  virtual void BeginLine(Range line) = 0;

  // The next match of the line, after the one before and possibly empty. kGivenUp is the last.
  virtual Outcome NextMark(Mark* mark) = 0;
};

}  // namespace examples::vekgrep

#endif
