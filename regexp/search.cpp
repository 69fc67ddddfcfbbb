// The search driver: narrows the subject by its literals, chooses where matches may start, and
// tries the start positions in order.

#include "regexp/search.h"

#include "frame/checks.h"
#include "regexp/bytes.h"
#include "regexp/literal.h"
#include "regexp/matcher.h"
#include "regexp/start_scan.h"
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
  return state.nodeCount == 1 && IsLiteral(node) && state.matchLimit / 4 > kLeastDepth &&
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
  Driver(const uint8_t* subject, int32_t length, int32_t usedLength, RegExpState* state,
         Report report, RegExpFindResult* results, int32_t* count)
      : state_(state),
        program_(ProgramOf(state)),
        matcher_(state, subject, length),
        report_(report),
        results_(results),
        count_(count),
        start_(subject),
        length_(usedLength),
        isLoneLiteral_(IsLoneLiteral(*state)),
        firstAlternative_(InfoOf(state)->firstAlternative) {}

  vekStatus Run() {
    const bool findsAll = HasOption(*state_, RegExpOptionG);
    if (state_->searchMode == 2 && !findsAll) {
      return FindAlternatives();
    }
    if (isLoneLiteral_) {
      return findsAll ? FindAll() : FindOne();
    }
    if (state_->searchMode == 1) {
      StartAtFirstLiteral();
    }
    anchoring_ = AnchoringOfProgram();
    if (anchoring_ != Anchoring::kStart) {
      const SearchPlan* const plan = PlanFor(state_, length_);
      const bool applies = plan != nullptr && plan->strategy != SearchPlan::kEverywhere &&
                           state_->matchLimit / 4 > plan->depth;
      plan_ = applies ? plan : nullptr;
    }
    return findsAll ? FindAll() : FindOne();
  }

 private:
  // The pattern is alternatives of literals: the leftmost occurrence, and of two at one place that
  // of the alternative before.
  vekStatus FindAlternatives() {
    plan_ = PlanFor(state_, length_);
    const bool byPairs = plan_ != nullptr && plan_->strategy == SearchPlan::kWords;
    *count_ = (byPairs ? FindWord() : FindEachWord()) ? 1 : 0;
    return StatusNoError;
  }

  // Here places may lie within a character.
  bool FindWord() {
    const uint8_t* const end = start_ + length_;
    StartScan scan(state_, plan_, start_, start_, end, false, false);
    for (const uint8_t* at = scan.Next(start_); at != nullptr; at = scan.Next(at + 1)) {
      for (int32_t i = 0; i < state_->nodeCount; i += 2) {
        if (!matcher_.FailsAtOnce(program_ + i, at, end)) {
          results_[0] = {at, Literal(program_[i]).length};
          return true;
        }
      }
    }
    return false;
  }

  bool FindEachWord() {
    const bool caseless = HasOption(*state_, RegExpOptionI);
    int32_t best = kNotFound;
    for (int32_t i = 0; i < state_->nodeCount; i += 2) {
      const Literal literal(program_[i]);
      // A later one counts only if it begins before the best.
      const int64_t end = best == kNotFound ? length_ : int64_t{best} + literal.length - 1;
      const auto within = static_cast<int32_t>(end < length_ ? end : length_);
      const int32_t at = FindFirst(start_, within, literal, caseless);
      if (at != kNotFound) {
        best = at;
        results_[0] = {start_ + best, literal.length};
      }
    }
    return best != kNotFound;
  }

  void StartAtFirstLiteral() {
    const int32_t at =
        FindFirst(start_, length_, Literal(program_[0]), HasOption(*state_, RegExpOptionI));
    if (at != kNotFound) {
      start_ += at;
      length_ -= at;
    }
  }

  Anchoring AnchoringOfProgram() const {
    const bool isAnchor = state_->nodeCount > 0 && program_[0].op == OpAssert;
    if (!isAnchor || firstAlternative_ != 0) {
      return Anchoring::kNone;
    }
    const bool isLineAnchor = program_[0].a == '^' && HasOption(*state_, RegExpOptionM);
    if (isLineAnchor) {
      return Anchoring::kLineStart;
    }
    const bool isStartAnchor = program_[0].a == 'A' || program_[0].a == 'G' || program_[0].a == '^';
    const bool isOptional =
        state_->nodeCount > 1 && IsQuantifier(program_[1]) && program_[1].a == 0;
    return isStartAnchor && !isOptional ? Anchoring::kStart : Anchoring::kNone;
  }

  MatchResult FindNextLiteral(const uint8_t* at, const uint8_t* end) {
    const Literal literal(program_[0]);
    const int32_t found =
        FindFirst(at, static_cast<int32_t>(end - at), literal, IsCaseless(program_[0].c));
    if (found == kNotFound) {
      return MatchResult::kFail;
    }
    matcher_.ClearSlots();  // groups can have been dropped that a match reports all the same
    matcher_.Slots()[0].pointer = at + found;
    matcher_.Slots()[0].length = literal.length;
    return MatchResult::kOk;
  }

  // ---- Start positions.

  MatchResult MatchAt(const uint8_t* at, const uint8_t* end) {
    matcher_.ClearSlots();
    MatchResult result = matcher_.Match(program_, at, end);
    for (int32_t i = firstAlternative_; result == MatchResult::kFail && i != 0;
         i = NoteOf<AlternativeNote>(program_[i]).next) {
      const ProgramNode* const first = program_ + i + 1;
      if (plan_ == nullptr || !matcher_.FailsAtOnce(first, at, end)) {
        result = matcher_.Match(first, at, end);
      }
    }
    return result;
  }

  // Tries the start positions from `at` on, the one at the end included.
  MatchResult FindFrom(const uint8_t* at, const uint8_t* end) {
    if (isLoneLiteral_) {
      return FindNextLiteral(at, end);
    }
    return plan_ != nullptr ? FindByPlan(at, end) : FindInOrder(at, end);
  }

  MatchResult FindByPlan(const uint8_t* at, const uint8_t* end) {
    StartScan scan(state_, plan_, matcher_.Subject(), at, end, matcher_.IsUtf8(),
                   anchoring_ == Anchoring::kLineStart);
    MatchResult result = MatchResult::kFail;
    for (at = scan.Next(at); at != nullptr; at = scan.Next(scan.Behind(at))) {
      result = MatchAt(at, end);
      if (result != MatchResult::kFail) {
        break;
      }
    }
    return result;
  }

  MatchResult FindInOrder(const uint8_t* at, const uint8_t* end) {
    for (;;) {
      const MatchResult result = MatchAt(at, end);
      if (result != MatchResult::kFail || anchoring_ == Anchoring::kStart) {
        return result;
      }
      if (at >= end) {
        return MatchResult::kFail;
      }
      if (anchoring_ == Anchoring::kLineStart) {
        const int32_t newline = kernels::FindByte(at, static_cast<int32_t>(end - at), '\n');
        if (newline == kNotFound) {
          return MatchResult::kFail;
        }
        at += newline + 1;
      } else {
        at += matcher_.IsUtf8() ? ReadUtf8(at, end).length : 1;
      }
    }
  }

  // ---- Results.

  vekStatus FindOne() {
    const int32_t captures = state_->captureCount;
    *count_ = *count_ < captures ? *count_ : captures;
    const MatchResult result = FindFrom(start_, start_ + length_);
    if (result != MatchResult::kOk) {
      if (result == MatchResult::kFail && matcher_.StepsLeft() < 0) {
        return StatusRegExpMatchLimit;  // the count stays as it is
      }
      *count_ = 0;
      return result == MatchResult::kAbort ? StatusRegExpMatchLimit : StatusNoError;
    }
    for (int32_t slot = 0; slot < *count_; ++slot) {
      results_[slot] = matcher_.Slots()[slot];
    }
    return *count_ < captures ? StatusRegExpResultsTruncated : StatusNoError;
  }

  int32_t FirstSlot() const { return report_ == Report::kFind && state_->captureCount > 1 ? 1 : 0; }

  void Append(int32_t room) {
    for (int32_t slot = FirstSlot(); slot < state_->captureCount && found_ < room; ++slot) {
      results_[found_++] = matcher_.Slots()[slot];
    }
  }

  vekStatus FindAll() {
    const int32_t room = *count_;
    const uint8_t* const end = start_ + length_;
    const uint8_t* at = start_;
    while (at <= end && found_ < room) {
      if (FindFrom(at, end) != MatchResult::kOk) {
        break;
      }
      Append(room);
      const RegExpFindResult match = matcher_.Slots()[0];
      at = match.pointer;
      if (match.length > 0) {
        at = match.length < end - at ? at + match.length : end;
        continue;
      }
      if (found_ < room && at < end) {
        matcher_.requireNonEmpty = true;
        if (FindFrom(at, at + 1) == MatchResult::kOk) {
          Append(room);
        }
        matcher_.requireNonEmpty = false;
      }
      ++at;
    }
    if (matcher_.StepsLeft() < 0) {
      return StatusRegExpMatchLimit;
    }
    *count_ = found_;
    const int32_t perMatch = state_->captureCount - FirstSlot();
    return found_ != 0 && found_ < perMatch ? StatusRegExpResultsTruncated : StatusNoError;
  }

  RegExpState* const state_;
  const ProgramNode* const program_;
  Matcher matcher_;
  const Report report_;
  RegExpFindResult* const results_;
  int32_t* const count_;
  const uint8_t* start_;
  int32_t length_;
  const bool isLoneLiteral_;
  const int32_t firstAlternative_;
  Anchoring anchoring_ = Anchoring::kNone;
  const SearchPlan* plan_ = nullptr;  // by which start positions are passed over, if any are
  int32_t found_ = 0;
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
  // Without that literal the matcher can only fail, as long as its depth can't run out.
  if (used == 0 && length != 0 && state->matchLimit / 4 > InfoOf(state)->mostDepth) {
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
