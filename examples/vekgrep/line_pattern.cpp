// SPDX-License-Identifier: MIT

// The filter names lines that may match, and where it isn't exact each of them is searched alone.
// All matches of a line are taken from a replacement of all of them by nothing: the search with
// option g reports groups alone where there are any. Where the filter is exact and all matches are
// wanted, those of a text are found in one call.

#include "line_pattern.h"

#include <algorithm>

namespace examples::vekgrep {
namespace {

// What the matches of one text may take, some MiB, depends on both.
constexpr int32_t kLongestText = 1 << 20;
constexpr int32_t kMostSlots = 8;

}  // namespace

std::unique_ptr<LinePattern> LinePattern::Compile(const std::string& pattern,
                                                  const PatternSettings& settings, bool marks,
                                                  std::string* fault) {
  std::unique_ptr<LinePattern> compiled(new LinePattern);
  PatternSettings forAll = settings;
  forAll.letters += 'g';
  if (!compiled->first.Compile(pattern, settings, fault) ||
      !compiled->all.Compile(pattern, forAll, fault)) {
    return nullptr;
  }
  compiled->filter = std::make_unique<LineFilter>(pattern, settings, compiled->first);
  compiled->lineEnd = settings.lineEnd;
  PatternSettings forWhole = compiled->filter->WholeSettings();
  forWhole.letters += 'g';
  compiled->wantsMarks = marks && compiled->first.Slots() <= kMostSlots &&
                         compiled->allOfWhole.Compile(pattern, forWhole, fault);
  return compiled;
}

void LinePattern::Begin(const uint8_t* newText, int32_t newLength) {
  text = newText;
  length = newLength;
  kept = false;
  nextLine = 0;
  filter->Begin(text, length);
  foundAll = wantsMarks && filter->IsExact() && length <= kLongestText && FindAll();
}

bool LinePattern::FindAll() {
  nextFound = 0;
  return matches.Replace(allOfWhole, first, text, length);
}

Outcome LinePattern::Seek(int32_t from, Range* range) {
  if (foundAll) {
    return SeekFound(from, range);
  }
  if (!kept || (outcome != Outcome::kNothing && found.begin < from)) {
    nextLine = std::max(nextLine, from);
    outcome = Outcome::kNothing;
    while (outcome == Outcome::kNothing && nextLine < length) {
      const int32_t position = filter->Next(nextLine, &found);
      if (position < 0 || (position == length && text[length - 1] == lineEnd)) {
        break;
      }
      const int32_t begin = nextLine;
      nextLine = LineEnd(text, position, length, lineEnd);
      if (filter->IsExact()) {
        outcome = Outcome::kMatch;
        found.end = std::min(found.end, nextLine);
      } else {
        outcome = SearchLine({LineStart(text, begin, position, lineEnd),
                              nextLine - (text[nextLine - 1] == lineEnd ? 1 : 0)});
      }
    }
    kept = true;
  }
  *range = found;
  return outcome;
}

Outcome LinePattern::SeekFound(int32_t from, Range* range) {
  const RegExpFindResult* results = matches.Found();
  for (; nextFound < matches.FoundCount(); nextFound += first.Slots()) {
    const auto begin = static_cast<int32_t>(results[nextFound].pointer - text);
    if (begin == length && text[length - 1] == lineEnd) {
      break;
    }
    if (begin >= from) {
      found = {begin, std::min(begin + results[nextFound].length, length)};
      *range = found;
      return outcome = Outcome::kMatch;
    }
  }
  return outcome = Outcome::kNothing;
}

// A match may be reported longer than what is left of its subject.
Outcome LinePattern::SearchLine(Range line) {
  RegExpFindResult match;
  int32_t count = 1;
  const vekStatus status =
      veksRegExpFind_8u(text + line.begin, line.end - line.begin, first.State(), &match, &count);
  if (status < StatusNoError) {
    found = line;
    return Outcome::kGivenUp;
  }
  if (count == 0) {
    return Outcome::kNothing;
  }
  const auto begin = static_cast<int32_t>(match.pointer - text);
  found = {begin, std::min(begin + match.length, line.end)};
  return Outcome::kMatch;
}

bool LinePattern::BeginLine(Range line) {
  lastMatchPosition = -1;
  if (outcome != Outcome::kMatch || found.begin < line.begin || found.begin > line.end) {
    return true;
  }
  lastMatchPosition = line.end;
  nextMatch = foundAll ? nextFound : 0;
  return foundAll || matches.Replace(all, first, text + line.begin, line.end - line.begin);
}

bool LinePattern::PeekMark(int32_t from, Mark* mark) {
  for (; nextMatch < matches.FoundCount(); PassMark()) {
    const RegExpFindResult* match = matches.Found() + nextMatch;
    const auto begin = static_cast<int32_t>(match->pointer - text);
    if (begin > lastMatchPosition) {
      return false;
    }
    if (begin >= from) {
      *mark = {{begin, begin + match->length}, match + 1, first.Slots() - 1};
      return true;
    }
  }
  return false;
}

}  // namespace examples::vekgrep
