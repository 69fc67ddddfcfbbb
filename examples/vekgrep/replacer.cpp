// SPDX-License-Identifier: MIT

// The library leaves off where the results or the replaced text don't fit, so the call is made
// again with more room until there was enough for certain.

#include "replacer.h"

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

namespace examples::vekgrep {
namespace {

constexpr int32_t kFewMatches = 16;

}  // namespace

Replacer::Replacer() {
  std::string fault;
  ReadTemplate("", &fault);
}

bool Replacer::ReadTemplate(const std::string& replacement, std::string* fault) {
  text = replacement;
  references = std::count(text.begin(), text.end(), '$');
  int32_t size = 0;
  veksRegExpReplaceGetSize(Bytes(text), &size);
  object.resize((static_cast<size_t>(size) + sizeof(uint64_t) - 1) / sizeof(uint64_t));
  const vekStatus status =
      veksRegExpReplaceInit(Bytes(text), reinterpret_cast<RegExpReplaceState*>(object.data()));
  if (status != StatusNoError) {
    *fault = "replacement '" + text + "': \"$\" needs a group's number or \"&\" after it";
    return false;
  }
  // An empty line is refused as a source. What a match in it is replaced by shows before a
  // byte that does not match.
  CompiledPattern start;
  start.Compile("\\A", {"g"}, fault);
  Replace(start, start, Bytes("x"), 1);
  literals.assign(result.begin(), result.begin() + resultLength - 1);
  return true;
}

bool Replacer::Replace(CompiledPattern& all, CompiledPattern& first, const uint8_t* line,
                       int32_t length) {
  const int32_t slots = all.Slots();
  found.resize(std::max(found.size(), static_cast<size_t>(kFewMatches * slots)));
  if (length == 0) {
    return ReplaceInEmpty(first, line);
  }
  Grow(int64_t{length} + 1);
  for (;;) {
    int32_t replaced = length;
    resultLength = static_cast<int32_t>(result.size());
    foundCount = static_cast<int32_t>(found.size());
    const vekStatus status = veksRegExpReplace_8u(
        line, &replaced, result.data(), &resultLength, found.data(), &foundCount, all.State(),
        reinterpret_cast<const RegExpReplaceState*>(object.data()));
    if (status == StatusRegExpMatchLimit) {
      foundCount = 0;
      return false;
    }
    const int64_t longest = LongestResult(length, slots);
    if (found.size() < static_cast<size_t>(foundCount + slots)) {
      found.resize(2 * found.size());
    } else if (static_cast<int64_t>(result.size()) <= longest) {
      Grow(longest + 1);
    } else {
      return true;
    }
  }
}

bool Replacer::ReplaceInEmpty(CompiledPattern& first, const uint8_t* line) {
  foundCount = first.Slots();
  const vekStatus status = veksRegExpFind_8u(line, 0, first.State(), found.data(), &foundCount);
  foundCount = status >= StatusNoError ? foundCount : 0;
  resultLength = foundCount > 0 ? static_cast<int32_t>(literals.size()) : 0;
  Grow(resultLength);
  std::copy_n(literals.begin(), resultLength, result.begin());
  return status >= StatusNoError;
}

// No result for what was found is longer.
int64_t Replacer::LongestResult(int32_t length, int32_t slots) const {
  int64_t longest = length;
  for (int32_t match = 0; match < foundCount; match += slots) {
    int32_t piece = 0;
    for (int32_t slot = match; slot < std::min(match + slots, foundCount); ++slot) {
      piece = std::max(piece, found[static_cast<size_t>(slot)].length);
    }
    longest += static_cast<int64_t>(text.size()) + references * piece;
  }
  return longest;
}

void Replacer::Grow(int64_t size) {
  if (size > std::numeric_limits<int32_t>::max()) {
    throw std::bad_alloc();
  }
  result.resize(std::max(result.size(), static_cast<size_t>(size)));
}

std::unique_ptr<LineReplacer> LineReplacer::Make(const std::string& pattern,
                                                 const PatternSettings& settings,
                                                 const std::string& replacement,
                                                 std::string* fault) {
  std::unique_ptr<LineReplacer> made(new LineReplacer);
  PatternSettings forAll = settings;
  forAll.letters += 'g';
  const bool valid = made->first.Compile(pattern, settings, fault) &&
                     made->all.Compile(pattern, forAll, fault) &&
                     made->replacer.ReadTemplate(replacement, fault);
  return valid ? std::move(made) : nullptr;
}

}  // namespace examples::vekgrep
