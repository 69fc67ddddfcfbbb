// SPDX-License-Identifier: MIT

// The search driver: narrows the subject by what the literals say, tries the start positions in
// order, and reports what was found.

#include "regexp/search/search.h"

#include "frame/checks.h"
#include "regexp/analyse/search_plan.h"
#include "regexp/fast/fast_matcher.h"
#include "regexp/fast/lone_run.h"
#include "regexp/fast/translator.h"
#include "regexp/match/matcher.h"
#include "regexp/search/literals.h"
#include "regexp/search/start_positions.h"
#include "strings/kernels/taken.h"

namespace vekch::regexp {
namespace {

bool FindsAll(const RegExpState& state) { return (state.compileFlags & RegExpOptionG) != 0; }

vekStatus ReportOne(RegExpState* state, RegExpFindResult* results, int32_t* count) {
  const RegExpFindResult* const slots = SlotsOf(state);
  const int32_t captures = state->captureCount;
  const int32_t reported = *count < captures ? *count : captures;
  *count = reported;
  for (int32_t slot = 0; slot < reported; ++slot) {
    results[slot] = slots[slot];
  }
  return reported < captures ? StatusRegExpResultsTruncated : StatusNoError;
}

class Driver {
 public:
  // The stretch is the part of the subject that has to be searched.
  Driver(const uint8_t* subject, int32_t length, const Stretch& stretch, RegExpState* patternState,
         Report wanted, RegExpFindResult* room, int32_t* count)
      : state(patternState),
        program(ProgramOf(patternState)),
        matcher(patternState, subject, length),
        report(wanted),
        results(room),
        numFind(count),
        searchStart(stretch.begin),
        searchEnd(stretch.begin + stretch.length),
        isLoneLiteral(IsLoneLiteral(*patternState)),
        rule(isLoneLiteral ? StartRule{StartRule::kEveryCharacter, nullptr}
                           : StartRuleFor(patternState, stretch.length)),
        firstAlternative(FactsOf(patternState)->firstAlternative),
        positions(patternState, rule, {subject, searchStart, searchEnd, matcher.IsUtf8()}) {
    if (!isLoneLiteral && PlanFor(patternState, stretch.length) != nullptr) {
      UseFast(subject, length);
    }
  }

  vekStatus Run() { return FindsAll(*state) ? FindAll() : FindOne(); }

 private:
  // ---- A match.

  // Of the pattern or of any of its alternatives, at one position.
  void UseFast(const uint8_t* subject, int32_t length) {
    const FastProgram* const translated = FastProgramFor(state);
    if (translated != nullptr) {
      fast = FastCallOf(*translated, state, subject, length, Matcher::MostReturns(*state, length));
      // No prefilter is better than a look-up of the character that begins a match.
      const bool isUnfiltered = rule.plan == nullptr ||
                                (rule.plan->strategy == SearchPlan::kClassWindow &&
                                 rule.plan->isAtWordStart == 0 && translated->firstCharacter != 0);
      usesFastLoop = fast.allowance >= 0 && rule.way == StartRule::kEveryCharacter && isUnfiltered;
      fast.secondBytes = rule.plan != nullptr && rule.plan->window > 1 ? rule.plan->bytes : nullptr;
      isLoneRun = fast.allowance >= 0 && rule.way == StartRule::kEveryCharacter &&
                  translated->loneRun != nullptr;
    }
  }

  // Of a try that was not given up.
  MatchResult ResultOf(FastResult result) {
    return result == FastResult::kMatch  ? MatchResult::kOk
           : result == FastResult::kFail ? MatchResult::kFail
                                         : matcher.Exhaust();
  }

  MatchResult MatchAt(const uint8_t* at, const uint8_t* end) {
    // Steps that were lost before count for the exact matcher alone, and so does a match's length.
    if (fast.allowance >= 0 && !matcher.requireNonEmpty &&
        matcher.StepsLeft() == state->matchLimit) {
      const FastResult result = MatchFast(&fast, at, end);
      VEKCH_TAKEN(result == FastResult::kGivesUp ? "fast matcher that gave up" : "fast matcher");
      if (result != FastResult::kGivesUp) {
        return ResultOf(result);
      }
    }
    VEKCH_TAKEN("exact matcher");
    matcher.ClearSlots();
    MatchResult result = matcher.Match(program, at, end);
    for (int32_t i = firstAlternative; result == MatchResult::kFail && i != 0;
         i = AlternativeNoteOf(program[i]).next) {
      result = matcher.Match(program + i + 1, at, end);
    }
    return result;
  }

  // At the first start position from `at` on where there is one.
  MatchResult FindFrom(const uint8_t* at, const uint8_t* end) {
    if (isLoneRun) {
      VEKCH_TAKEN("lone run");
      const int32_t captures = state->captureCount;
      const int32_t found = FindRuns(*fast.program, at, end, {matcher.Slots(), captures, captures});
      return found != 0 ? MatchResult::kOk : MatchResult::kFail;
    }
    if (isLoneLiteral) {
      matcher.ClearSlots();  // groups can have been dropped that a match reports all the same
      const Stretch rest = {at, static_cast<int32_t>(end - at)};
      return FindLoneLiteral(rest, *state, matcher.Slots()) ? MatchResult::kOk : MatchResult::kFail;
    }
    if (usesFastLoop && !matcher.requireNonEmpty && matcher.StepsLeft() == state->matchLimit) {
      VEKCH_TAKEN("start positions of the fast matcher");
      const FastResult result = FindFast(&fast, at, end);
      if (result != FastResult::kGivesUp) {
        return ResultOf(result);
      }
    }
    if (end == searchEnd) {
      positions.GoOnFrom(at);
      return FindAmong(&positions, end);
    }
    StartPositions few(state, rule, {matcher.Subject(), at, end, matcher.IsUtf8()});
    return FindAmong(&few, end);
  }

  MatchResult FindAmong(StartPositions* starts, const uint8_t* end) {
    const uint8_t* at = starts->First();
    while (at != nullptr) {
      const int64_t steps = matcher.StepsLeft();
      const MatchResult result = MatchAt(at, end);
      if (result != MatchResult::kFail) {
        return result;
      }
      at = starts->After(at, matcher.StepsLeft() == steps);
    }
    return MatchResult::kFail;
  }

  // ---- Results.

  vekStatus FindOne() {
    const int32_t captures = state->captureCount;
    *numFind = *numFind < captures ? *numFind : captures;
    const MatchResult result = FindFrom(searchStart, searchEnd);
    if (result != MatchResult::kOk) {
      if (result == MatchResult::kFail && matcher.StepsLeft() < 0) {
        return StatusRegExpMatchLimit;  // the count stays as it is
      }
      *numFind = 0;
      return result == MatchResult::kAbort ? StatusRegExpMatchLimit : StatusNoError;
    }
    return ReportOne(state, results, numFind);
  }

  int32_t FirstSlot() const { return report == Report::kFind && state->captureCount > 1 ? 1 : 0; }

  void Append(int32_t room) {
    for (int32_t slot = FirstSlot(); slot < state->captureCount && foundCount < room; ++slot) {
      results[foundCount++] = matcher.Slots()[slot];
    }
  }

  vekStatus FindAll() {
    if (isLoneRun) {  // no try of which could lose steps
      VEKCH_TAKEN("lone run");
      foundCount = FindRuns(*fast.program, searchStart, searchEnd,
                            {results, *numFind, state->captureCount - FirstSlot()});
      return ReportAll();
    }
    const int32_t room = *numFind;
    const uint8_t* at = searchStart;
    while (at <= searchEnd && foundCount < room) {
      if (FindFrom(at, searchEnd) != MatchResult::kOk) {
        break;
      }
      Append(room);
      const RegExpFindResult match = matcher.Slots()[0];
      at = match.pointer;
      if (match.length > 0) {
        at = match.length < searchEnd - at ? at + match.length : searchEnd;
        continue;
      }
      if (foundCount < room && at < searchEnd) {
        matcher.requireNonEmpty = true;
        if (FindFrom(at, at + 1) == MatchResult::kOk) {
          Append(room);
        }
        matcher.requireNonEmpty = false;
      }
      ++at;
    }
    return matcher.StepsLeft() < 0 ? StatusRegExpMatchLimit : ReportAll();
  }

  vekStatus ReportAll() {
    *numFind = foundCount;
    const int32_t perMatch = state->captureCount - FirstSlot();
    return foundCount != 0 && foundCount < perMatch ? StatusRegExpResultsTruncated : StatusNoError;
  }

  RegExpState* const state;
  const ProgramNode* const program;
  Matcher matcher;
  const Report report;
  RegExpFindResult* const results;
  int32_t* const numFind;
  const uint8_t* const searchStart;
  const uint8_t* const searchEnd;
  const bool isLoneLiteral;
  const StartRule rule;
  const int32_t firstAlternative;
  bool isLoneRun = false;
  bool usesFastLoop = false;
  StartPositions positions;
  FastCall fast = {nullptr, nullptr, nullptr, nullptr, -1, 0};
  int32_t foundCount = 0;
};

// ---- Without the driver.

constexpr int32_t kShortSubject = 256;  // beyond it, starts are better looked for by a plan

// The first match in a short text by the fast program alone: setting up the driver and the exact
// matcher would take longer than the search. kGivesUp where they are needed. The position `tried`
// is known to fail.
FastResult FindDirectly(const uint8_t* subject, int32_t length, const Stretch& stretch,
                        RegExpState* state, const uint8_t* tried) {
  const FastProgram* const program = FastProgramOf(state);
  if (program == nullptr || stretch.length > kShortSubject ||
      program->isUtf8 != (state->characterFormat != 0)) {
    return FastResult::kGivesUp;
  }
  FastCall call =
      FastCallOf(*program, state, subject, length, Matcher::MostReturns(*state, length));
  const StartRule rule = StartRuleFor(state, stretch.length);
  const uint8_t* const begin = stretch.begin;
  const uint8_t* const end = begin + stretch.length;
  if (call.allowance < 0) {
    return FastResult::kGivesUp;
  }
  VEKCH_TAKEN("direct");
  // A field often matches where it begins: only then is a prefilter asked.
  FastResult result = begin == tried ? FastResult::kFail : MatchFast(&call, begin, end);
  if (result != FastResult::kFail || rule.way == StartRule::kFirst) {
    return result;
  }
  if (rule.way == StartRule::kEveryCharacter && rule.plan == nullptr) {
    return FindFast(&call, begin, end);
  }
  StartPositions starts(state, rule, {subject, begin, end, program->isUtf8});
  const uint8_t* at = begin;
  while (result == FastResult::kFail && (at = starts.After(at, true)) != nullptr) {
    result = MatchFast(&call, at, end);
  }
  return result;
}

// The first match of a pattern that is one literal, without the driver. Groups that the compiler
// has dropped took no part in it.
vekStatus FindOneLoneLiteral(const Stretch& text, const RegExpState& state,
                             RegExpFindResult* results, int32_t* count) {
  VEKCH_TAKEN("lone literal");
  if (!FindLoneLiteral(text, state, results)) {
    *count = 0;
    return StatusNoError;
  }
  *count = *count < state.captureCount ? *count : state.captureCount;
  for (int32_t slot = 1; slot < *count; ++slot) {
    results[slot] = {nullptr, -1};
  }
  return *count < state.captureCount ? StatusRegExpResultsTruncated : StatusNoError;
}

// A function of its own, so that searches which the literals decide pay nothing for its registers.
[[gnu::noinline]] vekStatus Drive(const uint8_t* subject, int32_t length, const Stretch& stretch,
                                  RegExpState* state, Report report, RegExpFindResult* results,
                                  int32_t* count) {
  return Driver(subject, length, stretch, state, report, results, count).Run();
}

// A search for one match in a stretch, by the fast program alone where it can be. The position
// `tried` is known to fail.
VEK_INLINE vekStatus FindOneIn(const Stretch& stretch, const uint8_t* subject, int32_t length,
                               RegExpState* state, RegExpFindResult* results, int32_t* count,
                               const uint8_t* tried) {
  switch (FindDirectly(subject, length, stretch, state, tried)) {
    case FastResult::kMatch:
      return ReportOne(state, results, count);
    case FastResult::kFail:
      *count = 0;
      return StatusNoError;
    case FastResult::kExhausted:
      *count = 0;
      return StatusRegExpMatchLimit;
    case FastResult::kGivesUp:
      break;
  }
  return Drive(subject, length, stretch, state, Report::kFind, results, count);
}

// The first match where no literal but a prefix literal says anything. A field often matches where
// it begins, or nowhere.
[[gnu::noinline]] vekStatus FindAtBeginningOrOn(const FastProgram& program, const uint8_t* subject,
                                                int32_t length, RegExpState* state,
                                                RegExpFindResult* results, int32_t* count) {
  VEKCH_TAKEN("first position");
  const FastResult result = MatchFirst(program, state, subject, length);
  if (result == FastResult::kMatch) {
    return ReportOne(state, results, count);
  }
  if (result == FastResult::kFail && program.onlyAtStart) {
    *count = 0;
    return StatusNoError;
  }
  const Stretch text = {subject, length};
  return FindOneIn(HasPrefixLiteral(*state) ? FromPrefixLiteral(text, *state) : text, subject,
                   length, state, results, count, result == FastResult::kFail ? subject : nullptr);
}

}  // namespace

vekStatus Search(const uint8_t* subject, int32_t length, RegExpState* state, Report report,
                 RegExpFindResult* results, int32_t* count) {
  if (state->regExpTag != RegExpTag) {
    return StatusRegExpError;
  }
  const FastProgram* const program = FastProgramOf(state);
  if (program != nullptr && length <= program->directLength &&
      program->isUtf8 == (state->characterFormat != 0)) {
    return FindAtBeginningOrOn(*program, subject, length, state, results, count);
  }
  Stretch stretch = {subject, length};
  if (IsLoneLiteral(*state)) {
    return FindsAll(*state) ? Drive(subject, length, stretch, state, report, results, count)
                            : FindOneLoneLiteral(stretch, *state, results, count);
  }
  stretch = UpToSuffixLiteral(stretch, *state);
  if (stretch.length == 0 && length != 0 && FailsOnNothing(*state)) {
    VEKCH_TAKEN("suffix literal that is absent");
    *count = 0;
    return StatusNoError;
  }
  if (IsAlternativesOfLiterals(*state) && !FindsAll(*state)) {
    VEKCH_TAKEN("alternatives of literals");
    *count = FindAlternatives(stretch, state, results) ? 1 : 0;
    return StatusNoError;
  }
  if (HasPrefixLiteral(*state)) {
    VEKCH_TAKEN("prefix literal");
    stretch = FromPrefixLiteral(stretch, *state);
  }
  return FindsAll(*state) ? Drive(subject, length, stretch, state, report, results, count)
                          : FindOneIn(stretch, subject, length, state, results, count, nullptr);
}

}  // namespace vekch::regexp

vekStatus veksRegExpFind_8u(const uint8_t* src, int32_t len, RegExpState* state,
                            RegExpFindResult* results, int32_t* numFind) noexcept {
  if (vekch::AnyNull(src, state, results, numFind)) {
    return StatusNullPointer;
  }
  if (vekch::AnyNegative(len)) {
    return StatusLengthError;
  }
  if (*numFind < 1) {
    return StatusSizeError;
  }
  return vekch::regexp::Search(src, len, state, vekch::regexp::Report::kFind, results, numFind);
}
