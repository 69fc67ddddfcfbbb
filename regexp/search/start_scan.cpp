#include "regexp/search/start_scan.h"

#include "regexp/search/literal_search.h"
#include "unicode/utf8.h"

namespace vekch::regexp {
namespace {

constexpr int32_t kLongestCharacter = 6;
constexpr int32_t kLeastToSkip = 4;  // bytes of a window that is looked at from its end

// The first of the places before `end` behind which a whole window is possible, by what `placesOf`
// tells of each byte of it. From the window's end: what was possible there says how far the next
// window can be.
template <class PlacesOf>
VEK_INLINE const uint8_t* FindBackward(const uint8_t* at, const uint8_t* end, int32_t window,
                                       PlacesOf placesOf) {
  const uint32_t all = (1U << window) - 1;
  while (end - at >= window) {
    uint32_t places = all;
    int32_t shift = window;
    int32_t i = window;
    do {
      places &= placesOf(at + --i);
      if ((places & 1) != 0) {
        if (i == 0) {
          return at;
        }
        shift = i;
      }
      places >>= 1;
    } while (places != 0);
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

StartScan::StartScan(const RegExpState* state, const SearchPlan* searchPlan, const Text& text)
    : program(ProgramOf(state)),
      plan(searchPlan),
      subject(text.subject),
      first(text.first),
      textEnd(text.end),
      isUtf8(text.isUtf8),
      atLineStarts(text.atLineStarts) {}

const uint8_t* StartScan::Next(const uint8_t* at) {
  while (at != nullptr && at <= textEnd) {
    at = Candidate(at);
    if (at != nullptr && atLineStarts && at != first && !IsLineStart(at)) {
      at = NextLineStart(at);
    } else if (at == nullptr || IsPlace(at)) {
      return at;
    } else {
      ++at;
    }
  }
  return nullptr;
}

const uint8_t* StartScan::Candidate(const uint8_t* at) {
  switch (plan->strategy) {
    case SearchPlan::kLineStart:
      return NextLineStart(at);
    case SearchPlan::kLiteral:
      return NextLiteral(at);
    case SearchPlan::kRunLiteral:
      return NextInRun(at);
    case SearchPlan::kFilter:
    case SearchPlan::kPair:
      return NextByFilter(at);
    case SearchPlan::kWords:
      return NextWord(at);
    default:
      return at;
  }
}

const uint8_t* StartScan::Behind(const uint8_t* at) const {
  if (plan->runDecides != 0 && runLiteral != nullptr && runLiteral >= at) {
    return runLiteral + 1;
  }
  return at + 1;
}

// Not within a character.
bool StartScan::IsPlace(const uint8_t* at) const {
  if (!isUtf8 || at == textEnd || !IsUtf8Continuation(*at)) {
    return true;
  }
  const uint8_t* lead = at;
  while (lead > first && at - lead < kLongestCharacter - 1 && IsUtf8Continuation(*lead)) {
    --lead;
  }
  return lead == at || ReadUtf8(lead, textEnd).length <= at - lead;
}

const uint8_t* StartScan::NextLineStart(const uint8_t* at) const {
  if (IsLineStart(at)) {
    return at;
  }
  const auto length = static_cast<int32_t>(textEnd - at);
  const int32_t newline = length == 0 ? kNotFound : kernels::FindByte(at, length, '\n');
  return newline == kNotFound ? nullptr : at + newline + 1;
}

const uint8_t* StartScan::NextLiteral(const uint8_t* at) const {
  const Literal literal(program[plan->literal]);
  if (plan->distance < 0 && at - subject < -plan->distance) {
    at = subject - plan->distance;
    if (at > textEnd) {
      return nullptr;
    }
  }
  const uint8_t* const from = at + plan->distance;
  const int32_t found = FindFirst(from, static_cast<int32_t>(textEnd - from), literal, false);
  return found == kNotFound ? nullptr : from + found - plan->distance;
}

const uint8_t* StartScan::NextInRun(const uint8_t* at) {
  const Literal literal(program[plan->literal]);
  for (;;) {
    if (textEnd - at < plan->distance) {
      return nullptr;
    }
    if (runLiteral == nullptr || runLiteral < at + plan->distance) {
      const uint8_t* const from = at + plan->distance;
      const int32_t found = FindFirst(from, static_cast<int32_t>(textEnd - from), literal, false);
      if (found == kNotFound) {
        return nullptr;
      }
      runLiteral = from + found;
      runStart = runLiteral;
      while (runStart > at && plan->bytes[runStart[-1]] != 0) {
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

const uint8_t* StartScan::NextByFilter(const uint8_t* at) {
  for (;; ++at) {
    at = plan->strategy == SearchPlan::kPair ? NextPair(at) : NextWindow(at);
    if (at == nullptr || plan->isAtWordStart == 0 || at == subject || !IsWordByte(at[-1])) {
      return at;
    }
    while (at + 1 < textEnd && IsWordByte(at[1])) {
      ++at;
    }
  }
}

const uint8_t* StartScan::NextWindow(const uint8_t* at) {
  if (plan->window < kLeastToSkip) {
    return FindWindowForward(at, textEnd, *plan);
  }
  const uint8_t* const bytes = plan->bytes;
  return FindBackward(at, textEnd, plan->window,
                      [bytes](const uint8_t* p) { return uint32_t{bytes[*p]}; });
}

const uint8_t* StartScan::NextWord(const uint8_t* at) const {
  const uint8_t* const table = PairTableOf(*plan);
  return FindBackward(at, textEnd - 1, plan->window,
                      [table](const uint8_t* p) { return uint32_t{table[PairHash(p[0], p[1])]}; });
}

// Places are looked at 64 at a time, and remembered; the last ones by the filter alone.
const uint8_t* StartScan::NextPair(const uint8_t* at) {
  const uint8_t* const end = textEnd - (plan->window - 1);
  for (;;) {
    if (pairsFrom == nullptr || at - pairsFrom >= kernels::kGroup) {
      if (end - at < kernels::kGroup) {
        return NextWindow(at);
      }
      pairsFrom = kernels::FindPairs(at, end, plan->pair, &pairs);
      if (pairs == 0) {
        at = pairsFrom;
        pairsFrom = nullptr;
        continue;
      }
      at = pairsFrom > at ? pairsFrom : at;
    }
    pairs = pairs >> (at - pairsFrom) << (at - pairsFrom);
    for (; pairs != 0; pairs &= pairs - 1) {
      at = pairsFrom + kernels::LowestBit(pairs);
      if (FitsWindow(at, *plan)) {
        return at;
      }
    }
    at = pairsFrom + kernels::kGroup;
  }
}

}  // namespace vekch::regexp
