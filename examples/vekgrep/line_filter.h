// SPDX-License-Identifier: MIT

// Finds the lines of a text in which a pattern may match, so that most lines are never searched one
// by one. Which way it takes is decided from the compiled program:
//
//   kLiterals  every match holds one of some literals: the lines in which they stand
//   kWhole     a match in a line is also one in the text as a whole: the lines in which such a
//              match begins
//   kEvery     neither is certain
//
// What is left out has no match, and would not let a search run out of its match limit either; a
// line that is found may have none.

#ifndef VEKGREP_LINE_FILTER_H
#define VEKGREP_LINE_FILTER_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "compiled_pattern.h"
#include "text_searcher.h"

namespace examples::vekgrep {

class LineFilter {
 public:
  // The text of a pattern that compiles, and what it compiles to.
  LineFilter(const std::string& pattern, const PatternSettings& settings,
             const CompiledPattern& compiled);

  // Which way it is, in words.
  std::string Description() const;

  // Goes over to another text, which must stay as it is meanwhile.
  void Begin(const uint8_t* text, int32_t length);

  // A place in the first such line at or behind `from`, the start of a line; -1 if there is none.
  // Within one text `from` must not decrease.
  int32_t Next(int32_t from);

 private:
  enum class Way { kLiterals, kWhole, kEvery };

  bool FilterByLiterals(const CompiledPattern& compiled);
  bool FilterByWhole(const std::string& pattern, const PatternSettings& settings);

  Way way = Way::kEvery;
  std::vector<std::string> literals;
  std::unique_ptr<TextSearcher> literalSearcher;
  CompiledPattern whole;
  const uint8_t* text = nullptr;
  int32_t length = 0;
};

}  // namespace examples::vekgrep

#endif
