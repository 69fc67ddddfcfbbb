// Search for a substring. A position of the source is a candidate if chosen bytes of the needle
// stand at their places behind it; candidates are found 64 positions a step, and each is compared
// with the whole needle. Up to four ways are tried, each when the one before it has been misled too
// often:
//
//   1. by one byte, if it is rare in texts: in a long source the rarest, in a short one the first
//   2. by two bytes, in a long source: the two that texts hold least often
//   3. by four bytes, spread over the needle; in a short source, where choosing would take longer
//      than comparing, at once
//   4. the two-way method of Crochemore and Perrin: linear time, constant space
//
// A text can be made so that false candidates abound. The bytes spent on them are counted, and what
// may be spent is a fixed multiple of the positions passed: the whole is linear for every needle
// and text.
//
// Both directions run the same code: a direction says where the scan starts, which candidate of a
// step comes first, and how the two-way method indexes its strings.

#include "strings/kernels/commonness.h"
#include "strings/kernels/compare_kernels.h"
#include "strings/kernels/find_kernels.h"
#include "strings/kernels/scan.h"

namespace vekch::kernels {
namespace {

constexpr int32_t kBytesToChooseFrom = 64;
constexpr int32_t kLongSource = 1024;  // positions from which choosing bytes pays
constexpr int32_t kRare = 32;          // a byte below this commonness is rare

constexpr int32_t kGaveUp = -2;  // in place of a position: misled too often

// ---- The choice of bytes

// Offsets in the needle of the bytes that make a position a candidate.
template <int32_t kBytes>
struct Choice {
  int32_t offsets[kBytes];
};

// The two rarest bytes among the needle's first ones, the rarest first, at different places and,
// where the needle has two, of different values.
VEK_INLINE Choice<2> RarestPair(const uint8_t* needle, int32_t needleLength) {
  const int32_t end = needleLength < kBytesToChooseFrom ? needleLength : kBytesToChooseFrom;
  int32_t rarest = 0;
  for (int32_t i = 1; i < end; ++i) {
    if (kCommonness.of[needle[i]] < kCommonness.of[needle[rarest]]) {
      rarest = i;
    }
  }
  int32_t second = rarest == 0 ? end - 1 : 0;
  for (int32_t i = 0; i < end; ++i) {
    const bool betterValue = needle[second] == needle[rarest] ||
                             kCommonness.of[needle[i]] < kCommonness.of[needle[second]];
    if (needle[i] != needle[rarest] && betterValue) {
      second = i;
    }
  }
  return {{rarest, second}};
}

VEK_INLINE Choice<2> Ends(int32_t needleLength) { return {{0, needleLength - 1}}; }

VEK_INLINE bool IsRare(uint8_t byte) { return kCommonness.of[byte] < kRare; }

// Four places from end to end, all different from a needle of four bytes on.
VEK_INLINE Choice<4> SpreadFour(int32_t needleLength) {
  const int32_t third = needleLength / 3;
  return {{0, third, needleLength - 1 - third, needleLength - 1}};
}

// ---- Candidates

struct Task {
  const uint8_t* source;
  const uint8_t* needle;
  int32_t needleLength;
  int32_t positions;  // at which the needle could start: 0 to positions - 1
};

// Candidates as hits of a probe.
template <int32_t kBytes>
struct HasChosen {
  static constexpr Hits kHits = Hits::kSetLanes;
  const uint8_t* places[kBytes];
  Block bytes[kBytes];

  VEK_INLINE HasChosen(const Task& task, const Choice<kBytes>& choice) {
    for (int32_t i = 0; i < kBytes; ++i) {
      places[i] = task.source + choice.offsets[i];
      bytes[i] = Splat(task.needle[choice.offsets[i]]);
    }
  }

  template <class Load>
  VEK_INLINE Block operator()(Load load, ptrdiff_t i) const {
    Block hits = load(places[0] + i) == bytes[0];
#pragma GCC unroll 4
    for (int32_t k = 1; k < kBytes; ++k) {
      hits = hits & (load(places[k] + i) == bytes[k]);
    }
    return hits;
  }
};

// First position in scan order, among the candidates at `start` and behind it, at which the whole
// needle stands; -1 if there is none. What is spent on the others is added to `effort`.
template <Direction kDirection>
VEK_INLINE int32_t Verify(const Task& task, uint64_t candidates, int32_t start, int64_t* effort) {
  while (candidates != 0) {
    const int32_t lane =
        kDirection == Direction::kForward ? LowestBit(candidates) : HighestBit(candidates);
    const uint8_t* at = task.source + start + lane;
    const int32_t difference = FirstHit(Differs{at, task.needle}, task.needleLength);
    if (difference < 0) {
      return start + lane;
    }
    *effort += kBlock + difference;
    candidates &= ~(uint64_t{1} << lane);
  }
  return -1;
}

// Functions of their own here and below, so that the search for candidates pays for nothing else.
// They are no templates: g++ places instances of a template in the ordinary code section.
VEK_KERNEL __attribute__((noinline)) int32_t VerifyFirst(const Task& task, uint64_t candidates,
                                                         int32_t start, int64_t* effort) {
  return Verify<Direction::kForward>(task, candidates, start, effort);
}

VEK_KERNEL __attribute__((noinline)) int32_t VerifyLast(const Task& task, uint64_t candidates,
                                                        int32_t start, int64_t* effort) {
  return Verify<Direction::kBackward>(task, candidates, start, effort);
}

// Fewer than 16 positions: their ends, as the scan does for short strings.
template <Direction kDirection>
VEK_INLINE int32_t FindAmongFew(const Task& task) {
  constexpr auto kVerify = kDirection == Direction::kForward ? VerifyFirst : VerifyLast;
  const HasChosen<2> probe(task, Ends(task.needleLength));
  return UseBitsOfFew(probe, task.positions, [&](uint64_t candidates) {
    int64_t effort = 0;
    return candidates == 0 ? -1 : kVerify(task, candidates, 0, &effort);
  });
}

// What may be spent on false candidates: so many bytes at once, and so many per 16 positions.
struct Allowance {
  int64_t atStart;
  int64_t perBlock;
};

constexpr Allowance kForOne = {256, 2};
constexpr Allowance kForTwo = {1024, 2};
constexpr Allowance kForFour = {4096, 64};

// At least kWidth positions, 16 or 64, in steps of so many; the last step ends at the last position
// in scan order, and where it overlaps the one before, false candidates are refused twice. Starts
// behind *passed positions; on giving up *passed are behind.
template <Direction kDirection, int32_t kWidth, int32_t kBytes>
VEK_INLINE int32_t FindInSteps(const Task& task, const HasChosen<kBytes>& probe,
                               const Allowance& allowance, int32_t* passed) {
  constexpr bool kForward = kDirection == Direction::kForward;
  const ptrdiff_t last = task.positions - kWidth;
  int64_t effort = 0;
  // A step may end behind the last position that a length can tell.
  for (ptrdiff_t behind = *passed; behind < task.positions; behind += kWidth) {
    const ptrdiff_t begin = behind < last ? behind : last;
    const auto start = static_cast<int32_t>(kForward ? begin : last - begin);
    const uint64_t candidates = kWidth == kGroup
                                    ? GroupBits(probe, start)
                                    : HitBits<HasChosen<kBytes>>(probe(AnyLoad{}, start));
    if (__builtin_expect(candidates != 0, 0)) {
      const int32_t at = (kForward ? VerifyFirst : VerifyLast)(task, candidates, start, &effort);
      if (at >= 0) {
        return at;
      }
      if (effort > allowance.atStart + behind / kBlock * allowance.perBlock) {
        *passed = static_cast<int32_t>(behind);
        return kGaveUp;
      }
    }
  }
  return -1;
}

template <Direction kDirection, int32_t kBytes>
VEK_INLINE int32_t FindAmongMany(const Task& task, const Choice<kBytes>& choice,
                                 const Allowance& allowance, int32_t* passed) {
  const HasChosen<kBytes> probe(task, choice);
  return task.positions >= kGroup ? FindInSteps<kDirection, kGroup>(task, probe, allowance, passed)
                                  : FindInSteps<kDirection, kBlock>(task, probe, allowance, passed);
}

// ---- The two-way method

// A string's byte at an index in the search's direction.
template <Direction kDirection>
VEK_INLINE uint8_t At(const uint8_t* s, int32_t length, int32_t i) {
  return kDirection == Direction::kForward ? s[i] : s[length - 1 - i];
}

// The critical factorization of the needle, read in the search's direction: the maximal suffix
// under one order of byte values, or its reverse, whichever starts later. `period` is the period
// of that suffix.
struct Suffix {
  int32_t start;
  int32_t period;
};

template <Direction kDirection>
VEK_INLINE Suffix MaximalSuffix(const uint8_t* needle, int32_t n, bool reversedOrder) {
  int32_t start = 0;      // of the best suffix so far
  int32_t candidate = 1;  // start of the suffix compared with it
  int32_t matched = 0;
  int32_t period = 1;
  while (candidate + matched < n) {
    const uint8_t a = At<kDirection>(needle, n, candidate + matched);
    const uint8_t b = At<kDirection>(needle, n, start + matched);
    if (a == b) {
      if (matched + 1 == period) {
        candidate += period;
        matched = 0;
      } else {
        ++matched;
      }
    } else if ((a < b) != reversedOrder) {
      candidate += matched + 1;
      matched = 0;
      period = candidate - start;
    } else {
      start = candidate;
      candidate = start + 1;
      matched = 0;
      period = 1;
    }
  }
  return {start, period};
}

// The two-way method on the source bytes from `from` on, all indices in the search's direction.
template <Direction kDirection>
VEK_INLINE int32_t TwoWay(const uint8_t* source, int32_t length, const uint8_t* needle, int32_t n,
                          int32_t from) {
  const Suffix one = MaximalSuffix<kDirection>(needle, n, false);
  const Suffix other = MaximalSuffix<kDirection>(needle, n, true);
  const Suffix suffix = one.start >= other.start ? one : other;

  // The needle is periodic as a whole if what precedes the suffix repeats one period later.
  bool periodic = suffix.start + suffix.period <= n;
  for (int32_t i = 0; periodic && i < suffix.start; ++i) {
    periodic = At<kDirection>(needle, n, i) == At<kDirection>(needle, n, i + suffix.period);
  }
  const int32_t rest = n - suffix.start;
  const int32_t shift = periodic ? suffix.period : (suffix.start > rest ? suffix.start : rest) + 1;

  int32_t remembered = 0;  // bytes at the needle's start known to match
  for (int32_t at = from; at <= length - n;) {
    int32_t i = suffix.start > remembered ? suffix.start : remembered;
    while (i < n && At<kDirection>(needle, n, i) == At<kDirection>(source, length, at + i)) {
      ++i;
    }
    if (i < n) {
      at += i - suffix.start + 1;
      remembered = 0;
      continue;
    }
    i = suffix.start;
    while (i > remembered &&
           At<kDirection>(needle, n, i - 1) == At<kDirection>(source, length, at + i - 1)) {
      --i;
    }
    if (i <= remembered) {
      return kDirection == Direction::kForward ? at : length - n - at;
    }
    at += shift;
    remembered = periodic ? n - shift : 0;
  }
  return -1;
}

// ---- The ways in their order, each going on where the one before it gave up.

template <Direction kDirection>
VEK_INLINE int32_t FindWithFour(const Task& task, int32_t passed) {
  const int32_t at =
      FindAmongMany<kDirection>(task, SpreadFour(task.needleLength), kForFour, &passed);
  return at != kGaveUp ? at
                       : TwoWay<kDirection>(task.source, task.needleLength - 1 + task.positions,
                                            task.needle, task.needleLength, passed);
}

template <Direction kDirection, int32_t kBytes, class Next>
VEK_INLINE int32_t FindWithRare(const Task& task, const Choice<kBytes>& rare,
                                const Allowance& allowance, int32_t passed, Next next) {
  const int32_t at = FindAmongMany<kDirection>(task, rare, allowance, &passed);
  return at != kGaveUp ? at : next(passed);
}

#define VEK_SUBSTRING_KERNELS(suffix, direction)                                                \
  VEK_KERNEL __attribute__((noinline)) int32_t AmongFew##suffix(const Task& task) {             \
    return FindAmongFew<direction>(task);                                                       \
  }                                                                                             \
  VEK_KERNEL __attribute__((noinline))                                                          \
  int32_t WithFour##suffix(const Task& task, int32_t passed) {                                  \
    return FindWithFour<direction>(task, passed);                                               \
  }                                                                                             \
  VEK_KERNEL __attribute__((noinline))                                                          \
  int32_t WithPair##suffix(const Task& task, const Choice<2>& pair, int32_t passed) {           \
    return FindWithRare<direction>(task, pair, kForTwo, passed,                                 \
                                   [&](int32_t p) { return WithFour##suffix(task, p); });       \
  }                                                                                             \
  VEK_KERNEL __attribute__((noinline))                                                          \
  int32_t WithOne##suffix(const Task& task, const Choice<2>& pair) {                            \
    return FindWithRare<direction>(task, Choice<1>{{pair.offsets[0]}}, kForOne, 0,              \
                                   [&](int32_t p) { return WithPair##suffix(task, pair, p); }); \
  }                                                                                             \
  VEK_INLINE int32_t FindNeedle##suffix(const uint8_t* source, int32_t length,                  \
                                        const uint8_t* needle, int32_t needleLength) {          \
    const Task task = {source, needle, needleLength, length - needleLength + 1};                \
    if (task.positions < kBlock) {                                                              \
      return AmongFew##suffix(task);                                                            \
    }                                                                                           \
    const bool isShort = task.positions < kLongSource;                                          \
    const Choice<2> pair = isShort ? Ends(needleLength) : RarestPair(needle, needleLength);     \
    if (IsRare(needle[pair.offsets[0]])) {                                                      \
      return WithOne##suffix(task, pair);                                                       \
    }                                                                                           \
    return isShort && needleLength >= 4 ? WithFour##suffix(task, 0)                             \
                                        : WithPair##suffix(task, pair, 0);                      \
  }

VEK_SUBSTRING_KERNELS(Forward, Direction::kForward)
VEK_SUBSTRING_KERNELS(Backward, Direction::kBackward)

}  // namespace

VEK_KERNEL int32_t FindSubstring(const uint8_t* source, int32_t length, const uint8_t* needle,
                                 int32_t needleLength) {
  return needleLength == 1 ? FindByte(source, length, needle[0])
                           : FindNeedleForward(source, length, needle, needleLength);
}

VEK_KERNEL int32_t FindLastSubstring(const uint8_t* source, int32_t length, const uint8_t* needle,
                                     int32_t needleLength) {
  return needleLength == 1 ? FindLastByte(source, length, needle[0])
                           : FindNeedleBackward(source, length, needle, needleLength);
}

}  // namespace vekch::kernels
