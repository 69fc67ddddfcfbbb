// SPDX-License-Identifier: MIT

// Replaces the matches of a pattern in one line by a template, and tells what they were. Without a
// template the matches are left out.

#ifndef VEKGREP_REPLACER_H
#define VEKGREP_REPLACER_H

#include <cstdint>
#include <string>
#include <vector>

#include "compiled_pattern.h"

namespace examples::vekgrep {

class Replacer {
 public:
  Replacer();
  Replacer(const Replacer&) = delete;
  Replacer& operator=(const Replacer&) = delete;

  // After false, `fault` tells what is wrong with the template.
  bool ReadTemplate(const std::string& replacement, std::string* fault);

  // `all` is the pattern with option g, `first` without it. False if the match limit ran out; there
  // are no matches then, and the result is the line as it is.
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

}  // namespace examples::vekgrep

#endif
