// SPDX-License-Identifier: MIT

// Search for a substring:
//
//   nearby      the positions where the scan starts, by masks of the needle's first and last byte:
//               one mask for up to 64, two for up to 128
//   further on  in a haystack that is not long, by the same two bytes. In a long one by bytes
//               chosen for being rare there and in texts: by one, if the 64 bytes before do not
//               hold it, else by two; for a very long needle by skipping
//
// and where candidates turn out false too often:
//
//   by the byte at which the last of them failed, if the 64 bytes before do not hold it
//   by skipping, unless that was done; for a short needle, by four bytes spread over it
//   by the two-way method, which can't be misled
//
// Tried and not kept: choosing by how common bytes are in texts alone (in a text over few letters
// the choice was as good as none); four bytes at once in haystacks up to 1 KiB (half the speed of
// two); skipping for needles of 24 to 47 bytes before anything else (in periodic texts half of the
// time).

#include "strings/kernels/byte_frequency.h"
#include "strings/kernels/find_candidates.h"
#include "strings/kernels/find_kernels.h"
#include "strings/kernels/find_skipping.h"
#include "strings/kernels/find_two_way.h"
#include "strings/kernels/taken.h"

namespace vekch::kernels {
namespace {

constexpr int32_t kLongHaystack = 1024;      // positions from which choosing bytes pays
constexpr int32_t kVeryLongHaystack = 8192;  // and filling a table for skipping

// Of the needle's bytes, in a long haystack; in one that is not very long, fewer.
constexpr int32_t kMostToChooseFrom = 32;
constexpr int32_t kFewToChooseFrom = 12;

constexpr int32_t kSkipWhenMisled = 16;  // needle lengths from which skipping is faster than four
constexpr int32_t kSkipAtOnce = 48;      // bytes, and than two

constexpr int64_t kPatienceNearby = 64;
constexpr int64_t kPatienceShort = 2048;  // where there are no more positions than those nearby
constexpr int32_t kNearby = 256;  // positions by the first and the last byte in any haystack
constexpr Allowance kForOne = {64, 2};
constexpr Allowance kForTwo = {256, 2};
constexpr Allowance kForFour = {1024, 64};
constexpr Allowance kForSkipping = {128, 2};

// ---- The choice of bytes

struct RareBytes {
  Choice<2> pair;  // the rarest first, different if the needle has two different bytes
  bool isAbsent;   // whether the sample does not hold the rarest
};

// How many of 64 bytes have a value.
VEK_INLINE uint32_t CountIn(const uint8_t* sample, uint8_t value) {
  const Block wanted = Splat(value);
  Block minusCounts = LoadAny(sample) == wanted;
#pragma GCC unroll 3
  for (int32_t i = 1; i < 4; ++i) {
    minusCounts = minusCounts + (LoadAny(sample + i * kBlock) == wanted);
  }
  return SumOfBytes(ZeroBlock() - minusCounts);
}

// Of the needle's first and last bytes, those that a sample of the haystack, then texts at large
// hold least often.
VEK_INLINE RareBytes ChooseRareBytes(const Task& task, const uint8_t* sample) {
  const int32_t most = task.positions < kVeryLongHaystack ? kFewToChooseFrom : kMostToChooseFrom;
  const int32_t count = task.needleLength < most ? task.needleLength : most;
  RareBytes rare = {Ends(task.needleLength), false};
  uint32_t rarest = UINT32_MAX;
  uint32_t second = UINT32_MAX;
  for (int32_t step = 0; step < count; ++step) {
    const int32_t i = step % 2 == 0 ? step / 2 : task.needleLength - 1 - step / 2;
    const uint8_t byte = task.needle[i];
    // Equal bytes have equal figures, so the second is always another byte.
    const uint32_t rank = (CountIn(sample, byte) << 8) + kByteFrequencyRank.of[byte];
    if (rank < rarest) {
      if (rarest != UINT32_MAX) {
        second = rarest;
        rare.pair.offsets[1] = rare.pair.offsets[0];
      }
      rarest = rank;
      rare.pair.offsets[0] = i;
    } else if (rank > rarest && rank < second) {
      second = rank;
      rare.pair.offsets[1] = i;
    }
  }
  rare.isAbsent = rarest < 256;
  return rare;
}

// ---- The ways. Functions of their own, so that none pays for the registers and the stack of
// another; no templates, since g++ places instances of a template in the ordinary code section.

#define VEK_OUT_OF_LINE VEK_KERNEL __attribute__((noinline))

VEK_OUT_OF_LINE int32_t VerifyFirst(const uint8_t* start, const uint8_t* needle,
                                    int32_t needleLength, uint64_t candidates, Patience* patience) {
  return Verify<Direction::kForward>(start, needle, needleLength, candidates, patience);
}
VEK_OUT_OF_LINE int32_t VerifyLast(const uint8_t* start, const uint8_t* needle,
                                   int32_t needleLength, uint64_t candidates, Patience* patience) {
  return Verify<Direction::kBackward>(start, needle, needleLength, candidates, patience);
}

template <Direction kDirection, int32_t kBytes>
VEK_INLINE int32_t FindByBytes(const Task& task, const Choice<kBytes>& choice,
                               const Allowance& allowance, Progress* progress) {
  return FindInSteps<kDirection>(task, HasChosen<kBytes>(task, choice), allowance,
                                 kDirection == Direction::kForward ? VerifyFirst : VerifyLast,
                                 progress);
}

VEK_OUT_OF_LINE int32_t ByOneForward(const Task& task, int32_t offset, Progress* progress) {
  return FindByBytes<Direction::kForward, 1>(task, {{offset}}, kForOne, progress);
}
VEK_OUT_OF_LINE int32_t ByOneBackward(const Task& task, int32_t offset, Progress* progress) {
  return FindByBytes<Direction::kBackward, 1>(task, {{offset}}, kForOne, progress);
}

VEK_OUT_OF_LINE int32_t ByTwoForward(const Task& task, const Choice<2>& pair, Progress* progress) {
  return FindByBytes<Direction::kForward>(task, pair, kForTwo, progress);
}
VEK_OUT_OF_LINE int32_t ByTwoBackward(const Task& task, const Choice<2>& pair, Progress* progress) {
  return FindByBytes<Direction::kBackward>(task, pair, kForTwo, progress);
}

VEK_OUT_OF_LINE int32_t ByFourForward(const Task& task, Progress* progress) {
  return FindByBytes<Direction::kForward>(task, SpreadFour(task.needleLength), kForFour, progress);
}
VEK_OUT_OF_LINE int32_t ByFourBackward(const Task& task, Progress* progress) {
  return FindByBytes<Direction::kBackward>(task, SpreadFour(task.needleLength), kForFour, progress);
}

VEK_OUT_OF_LINE int32_t BySkippingForward(const Task& task, Progress* progress) {
  return FindBySkipping<Direction::kForward>(task, kForSkipping, progress);
}
VEK_OUT_OF_LINE int32_t BySkippingBackward(const Task& task, Progress* progress) {
  return FindBySkipping<Direction::kBackward>(task, kForSkipping, progress);
}

// The length is summed up in this order since it may be the largest that there is.
VEK_OUT_OF_LINE int32_t ByTwoWayForward(const Task& task, int32_t passed) {
  return TwoWay<Direction::kForward>(task.haystack, task.needleLength - 1 + task.positions,
                                     task.needle, task.needleLength, passed);
}
VEK_OUT_OF_LINE int32_t ByTwoWayBackward(const Task& task, int32_t passed) {
  return TwoWay<Direction::kBackward>(task.haystack, task.needleLength - 1 + task.positions,
                                      task.needle, task.needleLength, passed);
}

// ---- The ways in their order, each going on where the one before it gave up.

// 64 bytes of the haystack where those already passed end.
template <Direction kDirection>
VEK_INLINE const uint8_t* SampleAt(const Task& task, int32_t passed) {
  const int32_t reached = passed > kGroup ? passed : kGroup;
  return kDirection == Direction::kForward ? task.haystack + reached - kGroup
                                           : task.haystack + task.positions - reached;
}

template <Direction kDirection>
VEK_INLINE int32_t FindByRareBytes(const Task& task, Progress* progress) {
  constexpr bool kForward = kDirection == Direction::kForward;
  const RareBytes rare = ChooseRareBytes(task, SampleAt<kDirection>(task, progress->passed));
  if (rare.isAbsent) {
    VEKCH_TAKEN("substring by one byte");
    const int32_t at =
        (kForward ? ByOneForward : ByOneBackward)(task, rare.pair.offsets[0], progress);
    if (at != kGaveUp) {
      return at;
    }
  }
  VEKCH_TAKEN("substring by two bytes");
  return (kForward ? ByTwoForward : ByTwoBackward)(task, rare.pair, progress);
}

template <Direction kDirection>
VEK_INLINE int32_t FindByFailure(const Task& task, Progress* progress) {
  constexpr bool kForward = kDirection == Direction::kForward;
  const uint8_t* sample = SampleAt<kDirection>(task, progress->passed);
  if (CountIn(sample, task.needle[progress->failedAt]) != 0) {
    return kGaveUp;
  }
  VEKCH_TAKEN("substring by the byte that failed");
  return (kForward ? ByOneForward : ByOneBackward)(task, progress->failedAt, progress);
}

// The next positions in scan order by the needle's ends too, in a short haystack all of them.
template <Direction kDirection>
VEK_INLINE int32_t FindNearby(const Task& task, Progress* progress) {
  constexpr bool kForward = kDirection == Direction::kForward;
  VEKCH_TAKEN("substring nearby");
  const int32_t positions = task.positions < kLongHaystack ? task.positions : kNearby;
  const int32_t offset = kForward ? 0 : task.positions - positions;
  const Task nearby = {task.haystack + offset, task.needle, task.needleLength, positions};
  const int32_t at = FindByBytes<kDirection>(nearby, Ends(task.needleLength), kForTwo, progress);
  if (at == -1) {
    progress->passed = positions;
  }
  return at < 0 ? at : offset + at;
}

// After those nearby, which are passed unless they were given up.
template <Direction kDirection>
VEK_INLINE int32_t FindFurther(const Task& task, Progress progress) {
  constexpr bool kForward = kDirection == Direction::kForward;
  const bool isLong = task.positions >= kLongHaystack;
  bool skipped = false;
  int32_t at = kGaveUp;
  if (progress.passed != 0) {
    at = FindNearby<kDirection>(task, &progress);
    if (at == -1 && isLong) {
      skipped = task.positions >= kVeryLongHaystack && task.needleLength >= kSkipAtOnce;
      at = skipped ? (kForward ? BySkippingForward : BySkippingBackward)(task, &progress)
                   : FindByRareBytes<kDirection>(task, &progress);
    }
  }
  if (at == kGaveUp && task.positions >= kGroup) {
    at = FindByFailure<kDirection>(task, &progress);
  }
  if (at == kGaveUp && isLong && (skipped || progress.passed < kNearby)) {
    at = FindByRareBytes<kDirection>(task, &progress);
  }
  if (at == kGaveUp && !skipped && task.needleLength >= kSkipWhenMisled) {
    at = (kForward ? BySkippingForward : BySkippingBackward)(task, &progress);
  }
  if (at == kGaveUp && task.needleLength >= 4 && task.positions >= kGroup) {
    VEKCH_TAKEN("substring by four bytes");
    at = (kForward ? ByFourForward : ByFourBackward)(task, &progress);
  }
  return at != kGaveUp ? at
                       : (kForward ? ByTwoWayForward : ByTwoWayBackward)(task, progress.passed);
}

VEK_OUT_OF_LINE int32_t FurtherForward(const Task& task, Progress progress) {
  return FindFurther<Direction::kForward>(task, progress);
}
VEK_OUT_OF_LINE int32_t FurtherBackward(const Task& task, Progress progress) {
  return FindFurther<Direction::kBackward>(task, progress);
}

// ---- Nearby: the first 128 positions by the needle's ends

// The starts of the first 64 positions of more, and of the next ones, which may overlap them.
template <Direction kDirection>
VEK_INLINE int32_t FirstGroup(int32_t positions) {
  return kDirection == Direction::kForward ? 0 : positions - kGroup;
}
template <Direction kDirection>
VEK_INLINE int32_t SecondGroup(int32_t positions) {
  const int32_t others = positions - kGroup;
  return kDirection == Direction::kForward ? (others < kGroup ? others : kGroup)
                                           : (others < kGroup ? 0 : others - kGroup);
}

// Goes on where there are candidates, from position `start` on.
template <Direction kDirection>
VEK_INLINE int32_t GoOnWith(const Task& task, uint64_t candidates, int32_t start) {
  constexpr bool kForward = kDirection == Direction::kForward;
  // A short needle has nothing better to go on with where candidates abound.
  Patience patience = {task.positions <= kGroup              ? kPatienceShort
                       : task.needleLength < kSkipWhenMisled ? INT64_MAX
                                                             : kPatienceNearby,
                       0};
  for (;;) {
    const int32_t lane = Verify<kDirection>(task.haystack + start, task.needle, task.needleLength,
                                            candidates, &patience);
    if (lane >= 0) {
      return start + lane;
    }
    if (lane == kGaveUp) {
      return (kForward ? FurtherForward : FurtherBackward)(task, {0, patience.failedAt});
    }
    if (task.positions <= kGroup) {
      return -1;
    }
    candidates = 0;
    if (start == FirstGroup<kDirection>(task.positions)) {
      start = SecondGroup<kDirection>(task.positions);
      candidates = GroupBits(HasChosen<2>(task, Ends(task.needleLength)), start);
    }
    if (candidates == 0) {
      return task.positions <= 2 * kGroup
                 ? -1
                 : (kForward ? FurtherForward : FurtherBackward)(task, {2 * kGroup, 0});
    }
  }
}

VEK_OUT_OF_LINE int32_t RefuteForward(const uint8_t* haystack, int32_t positions,
                                      const uint8_t* needle, int32_t needleLength,
                                      uint64_t candidates, int32_t start) {
  return GoOnWith<Direction::kForward>({haystack, needle, needleLength, positions}, candidates,
                                       start);
}
VEK_OUT_OF_LINE int32_t RefuteBackward(const uint8_t* haystack, int32_t positions,
                                       const uint8_t* needle, int32_t needleLength,
                                       uint64_t candidates, int32_t start) {
  return GoOnWith<Direction::kBackward>({haystack, needle, needleLength, positions}, candidates,
                                        start);
}

// Mostly the first candidate is right, and a short needle quickly compared.
VEK_OUT_OF_LINE int32_t GoOnForward(const uint8_t* haystack, int32_t positions,
                                    const uint8_t* needle, int32_t needleLength,
                                    uint64_t candidates, int32_t start) {
  const int32_t at = start + LowestBit(candidates);
  return needleLength < kBlock && Equal(haystack + at, needle, needleLength)
             ? at
             : RefuteForward(haystack, positions, needle, needleLength, candidates, start);
}
VEK_OUT_OF_LINE int32_t GoOnBackward(const uint8_t* haystack, int32_t positions,
                                     const uint8_t* needle, int32_t needleLength,
                                     uint64_t candidates, int32_t start) {
  const int32_t at = start + HighestBit(candidates);
  return needleLength < kBlock && Equal(haystack + at, needle, needleLength)
             ? at
             : RefuteBackward(haystack, positions, needle, needleLength, candidates, start);
}

VEK_OUT_OF_LINE int32_t AfterNearbyForward(const uint8_t* haystack, int32_t positions,
                                           const uint8_t* needle, int32_t needleLength) {
  return FurtherForward({haystack, needle, needleLength, positions}, {2 * kGroup, 0});
}
VEK_OUT_OF_LINE int32_t AfterNearbyBackward(const uint8_t* haystack, int32_t positions,
                                            const uint8_t* needle, int32_t needleLength) {
  return FurtherBackward({haystack, needle, needleLength, positions}, {2 * kGroup, 0});
}

// Every call is the last thing done, so that a search without candidates saves no registers.
template <Direction kDirection>
VEK_INLINE int32_t FindNeedle(const uint8_t* haystack, int32_t length, const uint8_t* needle,
                              int32_t needleLength) {
  constexpr bool kForward = kDirection == Direction::kForward;
  const int32_t positions = length - needleLength + 1;
  if (positions == 1) {
    return Equal(haystack, needle, needleLength) ? 0 : -1;
  }
  const HasChosen<2> ends({haystack, needle, needleLength, positions}, Ends(needleLength));
  const auto goOnIfAny = [&](uint64_t candidates, int32_t start) __attribute__((always_inline)) {
    return candidates == 0 ? -1
                           : (kForward ? GoOnForward : GoOnBackward)(
                                 haystack, positions, needle, needleLength, candidates, start);
  };
  if (positions <= kGroup) {
    return UseBitsOfShort(
        ends, positions, [&](uint64_t candidates) __attribute__((always_inline)) {
          return goOnIfAny(candidates, 0);
        });
  }
  const int32_t first = FirstGroup<kDirection>(positions);
  if (const uint64_t candidates = GroupBits(ends, first); candidates != 0) {
    return goOnIfAny(candidates, first);
  }
  const int32_t second = SecondGroup<kDirection>(positions);
  if (const uint64_t candidates = GroupBits(ends, second); candidates != 0) {
    return goOnIfAny(candidates, second);
  }
  return positions <= 2 * kGroup ? -1
                                 : (kForward ? AfterNearbyForward : AfterNearbyBackward)(
                                       haystack, positions, needle, needleLength);
}

}  // namespace

VEK_KERNEL int32_t FindSubstring(const uint8_t* haystack, int32_t length, const uint8_t* needle,
                                 int32_t needleLength) {
  return needleLength == 1
             ? FindByte(haystack, length, needle[0])
             : FindNeedle<Direction::kForward>(haystack, length, needle, needleLength);
}

VEK_KERNEL int32_t FindLastSubstring(const uint8_t* haystack, int32_t length, const uint8_t* needle,
                                     int32_t needleLength) {
  return needleLength == 1
             ? FindLastByte(haystack, length, needle[0])
             : FindNeedle<Direction::kBackward>(haystack, length, needle, needleLength);
}

}  // namespace vekch::kernels
