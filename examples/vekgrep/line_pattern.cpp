// SPDX-License-Identifier: MIT

// The filter names lines that may match, and each of them is searched alone. All matches of a line
// are taken from a replacement of all of them by nothing: the search with option g tells of groups
// alone where there are any.

#include "line_pattern.h"

#include <algorithm>

namespace examples::vekgrep {

std::unique_ptr<LinePattern> LinePattern::Compile(const std::string& pattern,
                                                  const PatternSettings& settings,
                                                  std::string* fault) {
  std::unique_ptr<LinePattern> compiled(new LinePattern);
  PatternSettings forAll = settings;
  forAll.letters += 'g';
  if (!compiled->first.Compile(pattern, settings, fault) ||
      !compiled->all.Compile(pattern, forAll, fault)) {
    return nullptr;
  }
  compiled->filter = std::make_unique<LineFilter>(pattern, settings, compiled->first);
  return compiled;
}

void LinePattern::Begin(const uint8_t* newText, int32_t newLength) {
  text = newText;
  length = newLength;
  kept = false;
  nextLine = 0;
  filter->Begin(text, length);
}

Outcome LinePattern::Seek(int32_t from, Range* range) {
  if (!kept || (outcome != Outcome::kNothing && found.begin < from)) {
    nextLine = std::max(nextLine, from);
    outcome = Outcome::kNothing;
    while (outcome == Outcome::kNothing && nextLine < length) {
      const int32_t place = filter->Next(nextLine);
      if (place < 0 || (place == length && text[length - 1] == '\n')) {
        break;
      }
      const int32_t newline = FindLastByte(text, {nextLine, place}, '\n');
      const int32_t begin = newline < 0 ? nextLine : newline + 1;
      nextLine = LineEnd(text, place, length);
      outcome = SearchLine({begin, nextLine - (text[nextLine - 1] == '\n' ? 1 : 0)});
    }
    kept = true;
  }
  *range = found;
  return outcome;
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
  nextMatch = matchesEnd = 0;
  if (outcome != Outcome::kMatch || found.begin < line.begin || found.begin > line.end) {
    return true;
  }
  const bool done = Replace(line, &matches);
  matchesEnd = matches.FoundCount();
  return done;
}

bool LinePattern::PeekMark(int32_t from, Mark* mark) {
  for (; nextMatch < matchesEnd; PassMark()) {
    const RegExpFindResult* match = matches.Found() + nextMatch;
    const auto begin = static_cast<int32_t>(match->pointer - text);
    if (begin >= from) {
      *mark = {{begin, begin + match->length}, match + 1, first.Slots() - 1};
      return true;
    }
  }
  return false;
}

}  // namespace examples::vekgrep
