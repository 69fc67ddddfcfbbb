// SPDX-License-Identifier: MIT

// Search for a needle by a few of its bytes. A position of the haystack is a candidate if the
// chosen bytes are at their positions after it; candidates are found 64 positions a step, and each
// is compared with the whole needle.
//
// A text can be made so that false candidates abound. The bytes spent on them are counted, and what
// may be spent is bounded by a multiple of the positions passed: beyond that, the search gives up
// and leaves the rest to another one. So it is linear for every needle and text.
//
// Both directions run the same code: a direction says where the scan starts and which candidate of
// a step comes first.

#ifndef VEKCH_STRINGS_KERNELS_FIND_CANDIDATES_H
#define VEKCH_STRINGS_KERNELS_FIND_CANDIDATES_H

#include "strings/kernels/compare_kernels.h"
#include "strings/kernels/scan.h"

namespace vekch::kernels {

constexpr int32_t kGaveUp = -2;  // instead of a position: misled too often

struct Task {
  const uint8_t* haystack;
  const uint8_t* needle;
  int32_t needleLength;
  int32_t positions;  // at which the needle could start: 0 to positions - 1
};

// Offsets in the needle of the bytes that make a position a candidate.
template <int32_t kBytes>
struct Choice {
  int32_t offsets[kBytes];
};

VEK_INLINE Choice<2> Ends(int32_t needleLength) { return {{0, needleLength - 1}}; }

// Four positions from end to end, all different from a needle of four bytes on.
VEK_INLINE Choice<4> SpreadFour(int32_t needleLength) {
  const int32_t third = needleLength / 3;
  return {{0, third, needleLength - 1 - third, needleLength - 1}};
}

// Candidates as hits of a probe.
template <int32_t kBytes>
struct HasChosen {
  static constexpr Hits kHits = Hits::kSetLanes;
  const uint8_t* positions[kBytes];
  Block bytes[kBytes];

  VEK_INLINE HasChosen(const Task& task, const Choice<kBytes>& choice) {
    for (int32_t i = 0; i < kBytes; ++i) {
      positions[i] = task.haystack + choice.offsets[i];
      bytes[i] = Splat(task.needle[choice.offsets[i]]);
    }
  }

  template <class Load>
  VEK_INLINE Block operator()(Load load, ptrdiff_t i) const {
    Block hits = load(positions[0] + i) == bytes[0];
#pragma GCC unroll 4
    for (int32_t k = 1; k < kBytes; ++k) {
      hits = hits & (load(positions[k] + i) == bytes[k]);
    }
    return hits;
  }
};

// What may still be spent on false candidates, and the position in the needle at which the last of
// them failed.
struct Patience {
  int64_t left;
  int32_t failedAt;
};

// The first in scan order of the candidates, of which there are some, at which the whole needle
// occurs; -1 if there is none. Candidates are given by a bit for each position from `start` on.
template <Direction kDirection>
VEK_INLINE int32_t Verify(const uint8_t* start, const uint8_t* needle, int32_t needleLength,
                          uint64_t candidates, Patience* patience) {
  do {
    const int32_t lane =
        kDirection == Direction::kForward ? LowestBit(candidates) : HighestBit(candidates);
    int32_t difference = 0;  // in a short needle, where does not matter yet
    if (needleLength < kBlock) {
      if (Equal(start + lane, needle, needleLength)) {
        return lane;
      }
    } else {
      difference = FirstHit(Differs{start + lane, needle}, needleLength);
      if (difference < 0) {
        return lane;
      }
    }
    patience->left -= kBlock + difference;
    if (patience->left < 0) {
      patience->failedAt = FirstHit(Differs{start + lane, needle}, needleLength);
      return kGaveUp;
    }
    candidates &= ~(uint64_t{1} << lane);
  } while (candidates != 0);
  return -1;
}

// How far a search came that gave up: so many positions in scan order are known to be none.
struct Progress {
  int32_t passed;
  int32_t failedAt;  // position in the needle at which the last false candidate failed
};

// What may be spent on false candidates: so many bytes at once, and so many per 16 positions.
struct Allowance {
  int64_t atStart;
  int64_t perBlock;
};

// The positions after those passed, of 64 and more in all. `verify` is Verify in this direction, as
// a function of its own, so that the search for candidates pays for nothing else. The last step
// ends with the last position and overlaps the one before it, and one of a long haystack starts on
// a boundary of 64: false candidates are then refused twice.
//
// Tried and not kept: fetching 512 bytes ahead (no faster beyond the first cache, and slower in
// it).
template <Direction kDirection, int32_t kBytes, class VerifyFunction>
VEK_INLINE int32_t FindInSteps(const Task& task, const HasChosen<kBytes>& probe,
                               const Allowance& allowance, VerifyFunction verify,
                               Progress* progress) {
  constexpr bool kForward = kDirection == Direction::kForward;
  const ptrdiff_t last = ptrdiff_t{task.positions} - kGroup;
  Patience patience = {allowance.atStart, 0};
  ptrdiff_t paid = 0;  // positions for which there is patience
  int32_t found = -1;
  // Whether the search ends with this step.
  const auto endsWith = [&](ptrdiff_t start, uint64_t candidates) __attribute__((always_inline)) {
    const ptrdiff_t covered = kForward ? start : last - start;
    patience.left += (covered - paid) / kBlock * allowance.perBlock;
    paid = covered;
    const int32_t lane =
        verify(task.haystack + start, task.needle, task.needleLength, candidates, &patience);
    if (lane >= 0) {
      found = static_cast<int32_t>(start) + lane;
    } else if (lane == kGaveUp) {
      if (covered > progress->passed) {
        progress->passed = static_cast<int32_t>(covered);
      }
      progress->failedAt = patience.failedAt;
      found = kGaveUp;
    }
    return lane != -1;
  };
  ptrdiff_t start = kForward ? progress->passed : last - progress->passed;
  if (last - progress->passed > kAlignFrom && progress->passed >= kGroup) {
    const ptrdiff_t beyond = Misalignment<kGroup>(probe.positions[0] + start);
    start += kForward ? -beyond : kGroup - beyond;
  }
  for (; kForward ? start < last : start > 0; start += kForward ? kGroup : -kGroup) {
    const uint64_t candidates = GroupBits(probe, start);
    if (__builtin_expect(candidates != 0, 0) && endsWith(start, candidates)) {
      return found;
    }
  }
  start = kForward ? last : 0;
  const uint64_t candidates = GroupBits(probe, start);
  return candidates != 0 && endsWith(start, candidates) ? found : -1;
}

}  // namespace vekch::kernels

#endif
