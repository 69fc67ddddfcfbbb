// SPDX-License-Identifier: MIT

// Replaces the matches of a pattern in a text by a template, and reports what they were. Without a
// template the matches are left out.

#ifndef VEKGREP_REPLACER_H
#define VEKGREP_REPLACER_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "compiled_pattern.h"

namespace examples::vekgrep {

class Replacer {
 public:
  Replacer();
  Replacer(const Replacer&) = delete;
  Replacer& operator=(const Replacer&) = delete;

  // After false, `fault` says what is wrong with the template.
  bool ReadTemplate(const std::string& replacement, std::string* fault);

  // `all` is the pattern with option g, `first` without it. False if the match limit ran out; there
  // are no matches then, and the result is the text as it is.
  bool Replace(CompiledPattern& all, CompiledPattern& first, const uint8_t* line, int32_t length);

  // What came of it last. The elements of each match are the whole of it and each group.
  const RegExpFindResult* Found() const { return found.data(); }
  int32_t FoundCount() const { return foundCount; }
  const uint8_t* Result() const { return result.data(); }
  int32_t ResultLength() const { return resultLength; }

 private:
  bool ReplaceInEmpty(CompiledPattern& first, const uint8_t* line);
  int64_t LongestResult(int32_t length, int32_t slots) const;
  void Grow(int64_t size);

  std::string text;              // the template; its object refers to it
  int64_t references = 0;        // to groups, at most
  std::vector<uint64_t> object;  // what veksRegExpReplaceInit makes of it
  std::string literals;          // what it comes to where all groups are empty
  std::vector<RegExpFindResult> found;
  int32_t foundCount = 0;
  std::vector<uint8_t> result;
  int32_t resultLength = 0;
};

// A pattern with the template that its matches in a line are replaced by.
class LineReplacer {
 public:
  // Null with the reason in `fault` if one of them is at fault.
  static std::unique_ptr<LineReplacer> Make(const std::string& pattern,
                                            const PatternSettings& settings,
                                            const std::string& replacement, std::string* fault);

  // Makes of a line, without its end, what it becomes. False if it was given up and stays as it is.
  bool Replace(const uint8_t* text, Range line) {
    return replacer.Replace(all, first, text + line.begin, line.end - line.begin);
  }

  const uint8_t* Result() const { return replacer.Result(); }
  int32_t ResultLength() const { return replacer.ResultLength(); }

 private:
  LineReplacer() = default;

  CompiledPattern first;
  CompiledPattern all;
  Replacer replacer;
};

}  // namespace examples::vekgrep

#endif
