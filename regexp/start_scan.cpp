#include "regexp/start_scan.h"

#include "regexp/literal.h"
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

StartScan::StartScan(const RegExpState* state, const SearchPlan* plan, const uint8_t* subject,
                     const uint8_t* from, const uint8_t* end, bool isUtf8, bool atLineStarts)
    : program_(ProgramOf(state)),
      plan_(plan),
      subject_(subject),
      from_(from),
      end_(end),
      isUtf8_(isUtf8),
      atLineStarts_(atLineStarts) {}

const uint8_t* StartScan::Next(const uint8_t* at) {
  while (at != nullptr && at <= end_) {
    at = Candidate(at);
    if (at != nullptr && atLineStarts_ && at != from_ && !IsLineStart(at)) {
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
  switch (plan_->strategy) {
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
  if (plan_->runDecides != 0 && runLiteral_ != nullptr && runLiteral_ >= at) {
    return runLiteral_ + 1;
  }
  return at + 1;
}

// Not within a character.
bool StartScan::IsPlace(const uint8_t* at) const {
  if (!isUtf8_ || at == end_ || !IsUtf8Continuation(*at)) {
    return true;
  }
  const uint8_t* lead = at;
  while (lead > from_ && at - lead < kLongestCharacter - 1 && IsUtf8Continuation(*lead)) {
    --lead;
  }
  return lead == at || ReadUtf8(lead, end_).length <= at - lead;
}

const uint8_t* StartScan::NextLineStart(const uint8_t* at) const {
  if (IsLineStart(at)) {
    return at;
  }
  const auto length = static_cast<int32_t>(end_ - at);
  const int32_t newline = length == 0 ? kNotFound : kernels::FindByte(at, length, '\n');
  return newline == kNotFound ? nullptr : at + newline + 1;
}

const uint8_t* StartScan::NextLiteral(const uint8_t* at) const {
  const Literal literal(program_[plan_->literal]);
  if (plan_->distance < 0 && at - subject_ < -plan_->distance) {
    at = subject_ - plan_->distance;
    if (at > end_) {
      return nullptr;
    }
  }
  const uint8_t* const from = at + plan_->distance;
  const int32_t found = FindFirst(from, static_cast<int32_t>(end_ - from), literal, false);
  return found == kNotFound ? nullptr : from + found - plan_->distance;
}

const uint8_t* StartScan::NextInRun(const uint8_t* at) {
  const Literal literal(program_[plan_->literal]);
  for (;;) {
    if (end_ - at < plan_->distance) {
      return nullptr;
    }
    if (runLiteral_ == nullptr || runLiteral_ < at + plan_->distance) {
      const uint8_t* const from = at + plan_->distance;
      const int32_t found = FindFirst(from, static_cast<int32_t>(end_ - from), literal, false);
      if (found == kNotFound) {
        return nullptr;
      }
      runLiteral_ = from + found;
      runStart_ = runLiteral_;
      while (runStart_ > at && plan_->bytes[runStart_[-1]] != 0) {
        --runStart_;
      }
    }
    at = runStart_ > at ? runStart_ : at;
    if (runLiteral_ - at >= plan_->distance) {
      return at;
    }
    at = runLiteral_ + 1 - plan_->distance;
  }
}

const uint8_t* StartScan::NextByFilter(const uint8_t* at) {
  for (;; ++at) {
    at = plan_->strategy == SearchPlan::kPair ? NextPair(at) : NextWindow(at);
    if (at == nullptr || plan_->isAtWordStart == 0 || at == subject_ || !IsWordByte(at[-1])) {
      return at;
    }
    while (at + 1 < end_ && IsWordByte(at[1])) {
      ++at;
    }
  }
}

const uint8_t* StartScan::NextWindow(const uint8_t* at) {
  if (plan_->window < kLeastToSkip) {
    return FindWindowForward(at, end_, *plan_);
  }
  const uint8_t* const bytes = plan_->bytes;
  return FindBackward(at, end_, plan_->window,
                      [bytes](const uint8_t* p) { return uint32_t{bytes[*p]}; });
}

const uint8_t* StartScan::NextWord(const uint8_t* at) const {
  const uint8_t* const table = PairTableOf(*plan_);
  return FindBackward(at, end_ - 1, plan_->window,
                      [table](const uint8_t* p) { return uint32_t{table[PairHash(p[0], p[1])]}; });
}

// Places are looked at 64 at a time, and remembered; the last ones by the filter alone.
const uint8_t* StartScan::NextPair(const uint8_t* at) {
  const uint8_t* const end = end_ - (plan_->window - 1);
  for (;;) {
    if (pairsFrom_ == nullptr || at - pairsFrom_ >= kernels::kGroup) {
      if (end - at < kernels::kGroup) {
        return NextWindow(at);
      }
      pairsFrom_ = kernels::FindPairs(at, end, plan_->pair, &pairs_);
      if (pairs_ == 0) {
        at = pairsFrom_;
        pairsFrom_ = nullptr;
        continue;
      }
      at = pairsFrom_ > at ? pairsFrom_ : at;
    }
    pairs_ = pairs_ >> (at - pairsFrom_) << (at - pairsFrom_);
    for (; pairs_ != 0; pairs_ &= pairs_ - 1) {
      at = pairsFrom_ + kernels::LowestBit(pairs_);
      if (FitsWindow(at, *plan_)) {
        return at;
      }
    }
    at = pairsFrom_ + kernels::kGroup;
  }
}

}  // namespace vekch::regexp
