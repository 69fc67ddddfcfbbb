// SPDX-License-Identifier: MIT

// Finds the lines of a text in which a pattern may match, so that most lines are never searched one
// by one. Which way it takes is decided from the compiled program:
//
//   kLiterals  every match holds one of some literals: the lines in which they are
//   kWhole     a match in a line is also one in the text as a whole: the lines in which such a
//              match begins. Most often it is even the same match, and the line needs no search
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

// What a pattern is searched for as, where it is nothing but texts.
struct PlainTexts {
  std::vector<std::string> texts;
  bool ignoreCase = false;
};

// False if a search for fixed text would find anything else.
bool IsPlainText(const std::string& pattern, const PatternSettings& settings, PlainTexts* plain);

class LineFilter {
 public:
  // The text of a pattern that compiles, and what it compiles to.
  LineFilter(const std::string& pattern, const PatternSettings& settings,
             const CompiledPattern& compiled);

  // Which way it is, in words.
  std::string Description() const;

  // Whether no search of a line can run out of the match limit, whatever the line.
  bool LimitIsAmple() const { return limitIsAmple; }

  // Goes over to another text, which must stay as it is meanwhile.
  void Begin(const uint8_t* text, int32_t length);

  // Whether the matches in the text are, one by one, the matches in its lines.
  bool IsExact() const { return exact && wholeNow; }

  // A position in the first such line at or after `from`, the start of a line; -1 if there is none.
  // Where the filter is exact it is the first match. Within one text `from` must not decrease.
  int32_t Next(int32_t from, Range* match);

  // Finds the text's matches where the filter is exact.
  CompiledPattern& Whole() { return whole; }

  // How the pattern is compiled for that.
  const PatternSettings& WholeSettings() const { return wholeSettings; }

 private:
  enum class Way { kLiterals, kWhole, kEvery };

  bool FilterByLiterals(const std::string& pattern, const PatternSettings& settings);
  bool FilterByWhole(const std::string& pattern, const PatternSettings& settings);

  Way way = Way::kEvery;
  bool limitIsAmple = false;
  std::vector<std::string> literals;
  std::unique_ptr<TextSearcher> literalSearcher;
  CompiledPattern whole;
  PatternSettings wholeSettings;
  bool exact = false;
  int32_t longestLine = 0;  // kWhole holds for lines up to it
  uint8_t lineEnd = '\n';
  const uint8_t* text = nullptr;
  int32_t length = 0;
  bool wholeNow = false;  // kWhole, and no line of the text is too long
};

}  // namespace examples::vekgrep

#endif
