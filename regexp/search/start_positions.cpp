// SPDX-License-Identifier: MIT
#include "regexp/search/start_positions.h"

#include "regexp/characters/bytes.h"
#include "regexp/search/literal_search.h"

namespace vekch::regexp {
namespace {

constexpr int32_t kLeastToSkip = 4;  // bytes of a window that is looked at from its end

// The first of the positions before `end` after which a whole window is possible, by what
// `positionsOf` says of each byte of it. From the window's end: what was possible there says how
// far the next window can be.
template <class PositionsOf>
VEK_INLINE const uint8_t* FindBackward(const uint8_t* at, const uint8_t* end, int32_t window,
                                       PositionsOf positionsOf) {
  const uint32_t all = (1U << window) - 1;
  while (end - at >= window) {
    uint32_t positions = all;
    int32_t shift = window;
    int32_t i = window;
    do {
      positions &= positionsOf(at + --i);
      if ((positions & 1) != 0) {
        if (i == 0) {
          return at;
        }
        shift = i;
      }
      positions >>= 1;
    } while (positions != 0);
    at += shift;
  }
  return nullptr;
}

VEK_INLINE bool FitsWindow(const uint8_t* at, const SearchPlan& plan) {
  int32_t i = 0;
  while (i < plan.window && (plan.bytes[at[i]] >> i & 1) != 0) {
    ++i;
  }
  return i == plan.window;
}

const uint8_t* FindWindowForward(const uint8_t* at, const uint8_t* end, const SearchPlan& plan) {
  const uint8_t* const last = end - plan.window;
  const uint8_t* const bytes = plan.bytes;
  for (; at <= last; ++at) {
    if ((bytes[*at] & 1) != 0 && FitsWindow(at, plan)) {
      return at;
    }
  }
  return nullptr;
}

}  // namespace

// ---- The rule.

StartRule::Way WayOf(const RegExpState& state) {
  const ProgramNode* const program = ProgramOf(&state);
  if (state.nodeCount == 0 || program[0].op != OpAssert || FactsOf(&state)->firstAlternative != 0) {
    return StartRule::kEveryCharacter;
  }
  const int32_t letter = program[0].a;
  if (letter == RegExpAssertLineOrSubjectStart && (state.compileFlags & RegExpOptionM) != 0) {
    return StartRule::kLineStarts;
  }
  const bool isStart = letter == RegExpAssertSubjectStart || letter == RegExpAssertSearchStart ||
                       letter == RegExpAssertLineOrSubjectStart;
  const bool isOptional = state.nodeCount > 1 && IsQuantifier(program[1]) && program[1].a == 0;
  return isStart && !isOptional ? StartRule::kFirst : StartRule::kEveryCharacter;
}

StartRule StartRuleFor(RegExpState* state, int32_t length) {
  const StartRule::Way way = WayOf(*state);
  if (way == StartRule::kFirst) {
    return {way, nullptr};
  }
  const SearchPlan* const plan = PlanFor(state, length);
  const bool applies = plan != nullptr && plan->strategy != SearchPlan::kNoPrefilter &&
                       DepthLimit(*state) > plan->depth;
  return {way, applies ? plan : nullptr};
}

// ---- The positions.

const uint8_t* StartPositions::NextByPlan(const uint8_t* at) {
  while (at != nullptr && at <= text.end) {
    at = Candidate(at);
    if (at != nullptr && rule.way == StartRule::kLineStarts && at != text.first &&
        !IsLineStart(at)) {
      at = NextLineStart(at);
    } else if (at == nullptr || IsPosition(at)) {
      return at;
    } else {
      ++at;
    }
  }
  return nullptr;
}

const uint8_t* StartPositions::Candidate(const uint8_t* at) {
  switch (plan->strategy) {
    case SearchPlan::kLineStart:
      return NextLineStart(at);
    case SearchPlan::kPrefixLiteral:
      return NextLiteral(at);
    case SearchPlan::kInnerLiteral:
      return NextInRun(at);
    case SearchPlan::kClassWindow:
    case SearchPlan::kPackedPair:
      return NextByClasses(at);
    case SearchPlan::kWordStart:
      return NextWordStart(at);
    case SearchPlan::kHashedPairs:
      return NextWord(at);
    default:
      return at;
  }
}

// What follows the run in which a try has failed that decides for all of it.
const uint8_t* StartPositions::AfterRun(const uint8_t* at) const {
  if (plan->strategy == SearchPlan::kInnerLiteral) {
    const bool isAhead = runLiteral != nullptr && runLiteral >= at;  // no way leads back
    return isAhead ? runLiteral + 1 : at + 1;
  }
  while (at < text.end && (plan->bytes[*at] & 1) != 0) {
    ++at;
  }
  return at < text.end ? at : at + 1;
}

// Not within a character.
bool StartPositions::IsPosition(const uint8_t* at) const {
  return !text.isUtf8 || at == text.end || !IsUtf8Continuation(*at) ||
         PreviousUtf8(at + 1, text.first, text.end) == at;
}

const uint8_t* StartPositions::NextLineStart(const uint8_t* at) const {
  if (IsLineStart(at)) {
    return at;
  }
  const auto length = static_cast<int32_t>(text.end - at);
  const int32_t newline = length == 0 ? kNotFound : kernels::FindByte(at, length, '\n');
  return newline == kNotFound ? nullptr : at + newline + 1;
}

const uint8_t* StartPositions::NextLiteral(const uint8_t* at) const {
  const Literal literal(program[plan->literal]);
  if (plan->distance < 0 && at - text.subject < -plan->distance) {
    at = text.subject - plan->distance;
    if (at > text.end) {
      return nullptr;
    }
  }
  const uint8_t* const from = at + plan->distance;
  const int32_t found = FindFirst(from, static_cast<int32_t>(text.end - from), literal, false);
  return found == kNotFound ? nullptr : from + found - plan->distance;
}

const uint8_t* StartPositions::NextInRun(const uint8_t* at) {
  const Literal literal(program[plan->literal]);
  for (;;) {
    if (text.end - at < plan->distance) {
      return nullptr;
    }
    if (runLiteral == nullptr || runLiteral < at + plan->distance) {
      const uint8_t* const from = at + plan->distance;
      const int32_t found = FindFirst(from, static_cast<int32_t>(text.end - from), literal, false);
      if (found == kNotFound) {
        return nullptr;
      }
      runLiteral = from + found;
      runStart = runLiteral;
      while (runStart > at && runLiteral - runStart < plan->reach &&
             plan->bytes[runStart[-1]] != 0) {
        --runStart;
      }
    }
    at = runStart > at ? runStart : at;
    if (runLiteral - at >= plan->distance) {
      return at;
    }
    at = runLiteral + 1 - plan->distance;
  }
}

const uint8_t* StartPositions::NextByClasses(const uint8_t* at) {
  for (;; ++at) {
    at = plan->strategy == SearchPlan::kPackedPair ? NextPair(at) : NextWindow(at);
    if (at == nullptr || plan->isAtWordStart == 0 || at == text.subject || !IsWordByte(at[-1])) {
      return at;
    }
    while (at + 1 < text.end && IsWordByte(at[1])) {
      ++at;
    }
  }
}

const uint8_t* StartPositions::NextWindow(const uint8_t* at) {
  if (plan->window < kLeastToSkip) {
    return FindWindowForward(at, text.end, *plan);
  }
  const uint8_t* const bytes = plan->bytes;
  return FindBackward(at, text.end, plan->window,
                      [bytes](const uint8_t* p) { return uint32_t{bytes[*p]}; });
}

const uint8_t* StartPositions::NextWord(const uint8_t* at) const {
  const uint8_t* const table = PairTableOf(*plan);
  return FindBackward(at, text.end - 1, plan->window,
                      [table](const uint8_t* p) { return uint32_t{table[PairHash(p[0], p[1])]}; });
}

// Positions are looked at 64 at a time by one way, and remembered; the last ones by the other.
template <class FindGroup, class FindLast>
VEK_INLINE const uint8_t* StartPositions::NextOfGroups(const uint8_t* at, FindGroup findGroup,
                                                       FindLast findLast) {
  const uint8_t* const end = text.end - (plan->window - 1);
  for (;;) {
    if (groupFrom == nullptr || at - groupFrom >= kernels::kGroup) {
      if (end - at < kernels::kGroup) {
        return findLast(at, end);
      }
      groupFrom = findGroup(at, end);
      if (group == 0) {
        at = groupFrom;
        groupFrom = nullptr;
        continue;
      }
      at = groupFrom > at ? groupFrom : at;
    }
    group = group >> (at - groupFrom) << (at - groupFrom);
    for (; group != 0; group &= group - 1) {
      at = groupFrom + kernels::LowestBit(group);
      if (FitsWindow(at, *plan)) {
        return at;
      }
    }
    at = groupFrom + kernels::kGroup;
  }
}

const uint8_t* StartPositions::NextPair(const uint8_t* at) {
  return NextOfGroups(
      at,
      [this](const uint8_t* from, const uint8_t* end) {
        return kernels::FindPairs(from, end, plan->pair, &group);
      },
      [this](const uint8_t* from, const uint8_t*) { return NextWindow(from); });
}

// 64 positions where words begin at some, or the first position of less than 64.
const uint8_t* StartPositions::FindWordStarts(const uint8_t* at, const uint8_t* end) {
  const kernels::LoadedSet<4> words({kernels::MakeRange('0', '9'), kernels::MakeRange('A', 'Z'),
                                     kernels::MakeRange('_', '_'), kernels::MakeRange('a', 'z')});
  for (group = 0; end - at >= kernels::kGroup; at += kernels::kGroup) {
    const uint64_t members = words.MembersInGroup(at);
    const bool goesOn = at != text.subject && IsWordByte(at[-1]);
    group = members & ~(members << 1 | (goesOn ? 1 : 0));
    if (group != 0) {
      break;
    }
  }
  return at;
}

const uint8_t* StartPositions::NextWordStart(const uint8_t* at) {
  return NextOfGroups(
      at, [this](const uint8_t* from, const uint8_t* end) { return FindWordStarts(from, end); },
      [this](const uint8_t* from, const uint8_t* end) {
        const auto isStart = [this](const uint8_t* position) {
          return (position == text.subject || !IsWordByte(position[-1])) &&
                 FitsWindow(position, *plan);
        };
        while (from < end && !isStart(from)) {
          ++from;
        }
        return from < end ? from : nullptr;
      });
}

}  // namespace vekch::regexp
