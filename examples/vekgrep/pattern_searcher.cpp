// SPDX-License-Identifier: MIT

// Each pattern runs ahead to its next line with a match and waits there until the search comes by.

#include "pattern_searcher.h"

#include <algorithm>
#include <utility>

namespace examples::vekgrep {
namespace {

// The longer one of two that start together.
bool ComesFirst(Range a, Range b) {
  return a.begin < b.begin || (a.begin == b.begin && a.end > b.end);
}

}  // namespace

bool PatternSearcher::Add(const std::string& pattern, const PatternSettings& settings, bool marks,
                          std::string* fault) {
  std::unique_ptr<LinePattern> compiled = LinePattern::Compile(pattern, settings, marks, fault);
  if (compiled == nullptr) {
    return false;
  }
  patterns.push_back(std::move(compiled));
  return true;
}

bool PatternSearcher::MayGiveUp() const {
  return std::any_of(patterns.begin(), patterns.end(),
                     [](const auto& pattern) { return pattern->MayGiveUp(); });
}

void PatternSearcher::Begin(const uint8_t* text, int32_t length) {
  for (const auto& pattern : patterns) {
    pattern->Begin(text, length);
  }
}

Outcome PatternSearcher::Next(int32_t from, Range* match) {
  Outcome outcome = Outcome::kNothing;
  LinePattern* next = nullptr;
  for (const auto& pattern : patterns) {
    Range range;
    const Outcome own = pattern->Seek(from, &range);
    const bool toTell = own == Outcome::kGivenUp && outcome == Outcome::kMatch;
    if (own != Outcome::kNothing &&
        (next == nullptr || ComesFirst(range, *match) || (toTell && range.begin == match->begin))) {
      next = pattern.get();
      outcome = own;
      *match = range;
    }
  }
  if (outcome == Outcome::kGivenUp) {
    next->Pass();
  }
  return outcome;
}

void PatternSearcher::BeginLine(Range newLine) {
  line = newLine;
  markedTo = line.begin;
  givenUp = false;
  for (const auto& pattern : patterns) {
    givenUp |= !pattern->BeginLine(line);
  }
}

Outcome PatternSearcher::NextMark(Mark* mark) {
  LinePattern* next = nullptr;
  for (const auto& pattern : patterns) {
    Mark own;
    if (pattern->PeekMark(markedTo, &own) &&
        (next == nullptr || ComesFirst(own.range, mark->range))) {
      next = pattern.get();
      *mark = own;
    }
  }
  if (next == nullptr) {
    return std::exchange(givenUp, false) ? Outcome::kGivenUp : Outcome::kNothing;
  }
  next->PassMark();
  mark->range.end = std::min(mark->range.end, line.end);
  markedTo = mark->range.end;
  return Outcome::kMatch;
}

}  // namespace examples::vekgrep
