// The search driver: narrows the subject by its literals, chooses where matches may start, and
// tries the start positions in order.

#include "regexp/search/search.h"

#include "frame/checks.h"
#include "regexp/characters/bytes.h"
#include "regexp/match/matcher.h"
#include "regexp/search/literal_search.h"
#include "regexp/search/start_scan.h"
#include "unicode/utf8.h"

namespace vekch::regexp {
namespace {

// ---- What literals alone tell.

bool HasOption(const RegExpState& state, int32_t option) {
  return (state.compileFlags & static_cast<uint32_t>(option)) != 0;
}

// The pattern is one literal, which the matcher would find where it is found; depth for it and for
// the end behind it is there.
bool IsLoneLiteral(const RegExpState& state) {
  constexpr int32_t kLeastDepth = 2;
  const ProgramNode& node = *ProgramOf(&state);
  return state.nodeCount == 1 && IsLiteral(node) &&
         state.matchLimit / RegExpDepthShare > kLeastDepth &&
         (state.characterFormat == 0 || !IsUtf8Continuation(Literal(node).bytes[0]));
}

// No match ends behind the last occurrence of the literal that every match ends with.
int32_t LengthToLastLiteral(const uint8_t* subject, int32_t length, const RegExpState& state) {
  if (state.requiredLiteralIndex < 0) {
    return length;
  }
  const ProgramNode& node = ProgramOf(&state)[state.requiredLiteralIndex];
  const Literal literal(node);
  const int32_t at = FindLast(subject, length, literal, IsCaseless(node.c));
  return at == kNotFound ? 0 : at + literal.length;
}

// Whether the matcher can only fail where there is nothing of the literal that every match holds:
// if its depth can't run out. In an empty text no group goes on after a first repetition.
bool FailsOnNothing(const RegExpState& state) {
  constexpr int64_t kOwnLevels = 8;
  return state.matchLimit / RegExpDepthShare > 2 * int64_t{state.nodeCount} + kOwnLevels;
}

// The first match of a pattern that is one literal. Groups that the compiler has dropped took no
// part in it.
vekStatus FindLoneLiteral(const uint8_t* subject, int32_t length, const RegExpState& state,
                          RegExpFindResult* results, int32_t* count) {
  const ProgramNode& node = *ProgramOf(&state);
  const Literal literal(node);
  const int32_t at = FindFirst(subject, length, literal, IsCaseless(node.c));
  if (at == kNotFound) {
    *count = 0;
    return StatusNoError;
  }
  results[0] = {subject + at, literal.length};
  *count = *count < state.captureCount ? *count : state.captureCount;
  for (int32_t slot = 1; slot < *count; ++slot) {
    results[slot] = {nullptr, -1};
  }
  return *count < state.captureCount ? StatusRegExpResultsTruncated : StatusNoError;
}

// ---- The driver.

enum class Anchoring { kNone, kStart, kLineStart };

class Driver {
 public:
  // No match ends behind the first `usedLength` bytes of the subject.
  Driver(const uint8_t* subject, int32_t length, int32_t usedLength, RegExpState* patternState,
         Report wanted, RegExpFindResult* room, int32_t* count)
      : state(patternState),
        program(ProgramOf(patternState)),
        matcher(patternState, subject, length),
        report(wanted),
        results(room),
        numFind(count),
        searchStart(subject),
        searchLength(usedLength),
        isLoneLiteral(IsLoneLiteral(*state)),
        firstAlternative(FactsOf(state)->firstAlternative) {}

  vekStatus Run() {
    const bool findsAll = HasOption(*state, RegExpOptionG);
    if (state->searchMode == 2 && !findsAll) {
      return FindAlternatives();
    }
    if (isLoneLiteral) {
      return findsAll ? FindAll() : FindOne();
    }
    if (state->searchMode == 1) {
      StartAtFirstLiteral();
    }
    anchoring = AnchoringOfProgram();
    if (anchoring != Anchoring::kStart) {
      const SearchPlan* const made = PlanFor(state, searchLength);
      const bool applies = made != nullptr && made->strategy != SearchPlan::kEverywhere &&
                           state->matchLimit / RegExpDepthShare > made->depth;
      plan = applies ? made : nullptr;
    }
    return findsAll ? FindAll() : FindOne();
  }

 private:
  // The pattern is alternatives of literals: the leftmost occurrence, and of two at one place that
  // of the alternative before.
  vekStatus FindAlternatives() {
    plan = PlanFor(state, searchLength);
    const bool byPairs = plan != nullptr && plan->strategy == SearchPlan::kWords;
    *numFind = (byPairs ? FindWord() : FindEachWord()) ? 1 : 0;
    return StatusNoError;
  }

  // Here places may lie within a character.
  bool FindWord() {
    const uint8_t* const end = searchStart + searchLength;
    StartScan scan(state, plan, {searchStart, searchStart, end, false, false});
    for (const uint8_t* at = scan.Next(searchStart); at != nullptr; at = scan.Next(at + 1)) {
      for (int32_t i = 0; i < state->nodeCount; i += 2) {
        if (!matcher.FailsAtOnce(program + i, at, end)) {
          results[0] = {at, Literal(program[i]).length};
          return true;
        }
      }
    }
    return false;
  }

  bool FindEachWord() {
    const bool caseless = HasOption(*state, RegExpOptionI);
    int32_t best = kNotFound;
    for (int32_t i = 0; i < state->nodeCount; i += 2) {
      const Literal literal(program[i]);
      // A later one counts only if it begins before the best.
      const int64_t end = best == kNotFound ? searchLength : int64_t{best} + literal.length - 1;
      const auto within = static_cast<int32_t>(end < searchLength ? end : searchLength);
      const int32_t at = FindFirst(searchStart, within, literal, caseless);
      if (at != kNotFound) {
        best = at;
        results[0] = {searchStart + best, literal.length};
      }
    }
    return best != kNotFound;
  }

  void StartAtFirstLiteral() {
    const int32_t at =
        FindFirst(searchStart, searchLength, Literal(program[0]), HasOption(*state, RegExpOptionI));
    if (at != kNotFound) {
      searchStart += at;
      searchLength -= at;
    }
  }

  Anchoring AnchoringOfProgram() const {
    const bool isAnchor = state->nodeCount > 0 && program[0].op == OpAssert;
    if (!isAnchor || firstAlternative != 0) {
      return Anchoring::kNone;
    }
    const bool isLineAnchor = program[0].a == '^' && HasOption(*state, RegExpOptionM);
    if (isLineAnchor) {
      return Anchoring::kLineStart;
    }
    const bool isStartAnchor = program[0].a == 'A' || program[0].a == 'G' || program[0].a == '^';
    const bool isOptional = state->nodeCount > 1 && IsQuantifier(program[1]) && program[1].a == 0;
    return isStartAnchor && !isOptional ? Anchoring::kStart : Anchoring::kNone;
  }

  MatchResult FindNextLiteral(const uint8_t* at, const uint8_t* end) {
    const Literal literal(program[0]);
    const int32_t found =
        FindFirst(at, static_cast<int32_t>(end - at), literal, IsCaseless(program[0].c));
    if (found == kNotFound) {
      return MatchResult::kFail;
    }
    matcher.ClearSlots();  // groups can have been dropped that a match reports all the same
    matcher.Slots()[0].pointer = at + found;
    matcher.Slots()[0].length = literal.length;
    return MatchResult::kOk;
  }

  // ---- Start positions.

  MatchResult MatchAt(const uint8_t* at, const uint8_t* end) {
    matcher.ClearSlots();
    MatchResult result = matcher.Match(program, at, end);
    for (int32_t i = firstAlternative; result == MatchResult::kFail && i != 0;
         i = NoteOf<AlternativeNote>(program[i]).next) {
      const ProgramNode* const first = program + i + 1;
      if (plan == nullptr || !matcher.FailsAtOnce(first, at, end)) {
        result = matcher.Match(first, at, end);
      }
    }
    return result;
  }

  // Tries the start positions from `at` on, the one at the end included.
  MatchResult FindFrom(const uint8_t* at, const uint8_t* end) {
    if (isLoneLiteral) {
      return FindNextLiteral(at, end);
    }
    return plan != nullptr ? FindByPlan(at, end) : FindInOrder(at, end);
  }

  MatchResult FindByPlan(const uint8_t* at, const uint8_t* end) {
    const bool atLineStarts = anchoring == Anchoring::kLineStart;
    StartScan scan(state, plan, {matcher.Subject(), at, end, matcher.IsUtf8(), atLineStarts});
    MatchResult result = MatchResult::kFail;
    at = scan.Next(at);
    while (at != nullptr) {
      const int64_t steps = matcher.StepsLeft();
      result = MatchAt(at, end);
      if (result != MatchResult::kFail) {
        break;
      }
      // A try that cost steps would cost some again, or fail otherwise with those that are left.
      at = scan.Next(matcher.StepsLeft() == steps ? scan.Behind(at) : at + 1);
    }
    return result;
  }

  MatchResult FindInOrder(const uint8_t* at, const uint8_t* end) {
    for (;;) {
      const MatchResult result = MatchAt(at, end);
      if (result != MatchResult::kFail || anchoring == Anchoring::kStart) {
        return result;
      }
      if (at >= end) {
        return MatchResult::kFail;
      }
      if (anchoring == Anchoring::kLineStart) {
        const int32_t newline = kernels::FindByte(at, static_cast<int32_t>(end - at), '\n');
        if (newline == kNotFound) {
          return MatchResult::kFail;
        }
        at += newline + 1;
      } else {
        at += matcher.IsUtf8() ? ReadUtf8(at, end).length : 1;
      }
    }
  }

  // ---- Results.

  vekStatus FindOne() {
    const int32_t captures = state->captureCount;
    *numFind = *numFind < captures ? *numFind : captures;
    const MatchResult result = FindFrom(searchStart, searchStart + searchLength);
    if (result != MatchResult::kOk) {
      if (result == MatchResult::kFail && matcher.StepsLeft() < 0) {
        return StatusRegExpMatchLimit;  // the count stays as it is
      }
      *numFind = 0;
      return result == MatchResult::kAbort ? StatusRegExpMatchLimit : StatusNoError;
    }
    for (int32_t slot = 0; slot < *numFind; ++slot) {
      results[slot] = matcher.Slots()[slot];
    }
    return *numFind < captures ? StatusRegExpResultsTruncated : StatusNoError;
  }

  int32_t FirstSlot() const { return report == Report::kFind && state->captureCount > 1 ? 1 : 0; }

  void Append(int32_t room) {
    for (int32_t slot = FirstSlot(); slot < state->captureCount && foundCount < room; ++slot) {
      results[foundCount++] = matcher.Slots()[slot];
    }
  }

  vekStatus FindAll() {
    const int32_t room = *numFind;
    const uint8_t* const end = searchStart + searchLength;
    const uint8_t* at = searchStart;
    while (at <= end && foundCount < room) {
      if (FindFrom(at, end) != MatchResult::kOk) {
        break;
      }
      Append(room);
      const RegExpFindResult match = matcher.Slots()[0];
      at = match.pointer;
      if (match.length > 0) {
        at = match.length < end - at ? at + match.length : end;
        continue;
      }
      if (foundCount < room && at < end) {
        matcher.requireNonEmpty = true;
        if (FindFrom(at, at + 1) == MatchResult::kOk) {
          Append(room);
        }
        matcher.requireNonEmpty = false;
      }
      ++at;
    }
    if (matcher.StepsLeft() < 0) {
      return StatusRegExpMatchLimit;
    }
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
  const uint8_t* searchStart;
  int32_t searchLength;
  const bool isLoneLiteral;
  const int32_t firstAlternative;
  Anchoring anchoring = Anchoring::kNone;
  const SearchPlan* plan = nullptr;  // by which start positions are passed over, if any are
  int32_t foundCount = 0;
};

}  // namespace

vekStatus Search(const uint8_t* subject, int32_t length, RegExpState* state, Report report,
                 RegExpFindResult* results, int32_t* count) {
  if (state->regExpTag != RegExpTag) {
    return StatusRegExpError;
  }
  const bool isLone = IsLoneLiteral(*state);
  if (isLone && !HasOption(*state, RegExpOptionG)) {
    return FindLoneLiteral(subject, length, *state, results, count);
  }
  const int32_t used = isLone ? length : LengthToLastLiteral(subject, length, *state);
  if (used == 0 && length != 0 && FailsOnNothing(*state)) {
    *count = 0;
    return StatusNoError;
  }
  return Driver(subject, length, used, state, report, results, count).Run();
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
