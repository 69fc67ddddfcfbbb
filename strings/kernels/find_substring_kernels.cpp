// Search for a substring.
//
// Two bytes of the needle are chosen. A position of the source is a candidate if both chosen bytes
// stand at their places behind it; candidates are found 16 positions at a time, and each is
// compared with the whole needle. In long sources the chosen bytes are the two that texts hold
// least often; in short ones the first and the last.
//
// A text can be made so that false candidates abound. The bytes spent on them are counted, and when
// they pass a fixed multiple of the positions behind the scan, the rest of the source is searched
// by the two-way method of Crochemore and Perrin: linear time, constant space. So the whole is
// linear for every needle and text.
//
// Both directions run the same code: a direction says where the scan starts, which candidate of a
// block comes first, and how the two-way method indexes its strings.

#include "strings/kernels/compare_kernels.h"
#include "strings/kernels/find_kernels.h"
#include "strings/kernels/scan.h"

namespace vekch::kernels {
namespace {

constexpr int32_t kLongSource = 256;  // positions from which choosing bytes pays
constexpr int32_t kBytesToChooseFrom = 64;
constexpr int64_t kEffortPerPosition = 4;  // bytes spent on false candidates, per position passed
constexpr int64_t kEffortAtStart = 2048;

// Byte values from the most to the less common in text; what is not listed is rarer still.
constexpr char kCommonBytes[] =
    " etaoinsrhldcumfpgwybv,.\nkTIASECx-ROPLNDMFq0\"j1H'2WU)(B/:zGV=;_3Y*549K867J<>";

struct Commonness {
  uint8_t of[256];

  constexpr Commonness() : of() {
    constexpr int32_t count = sizeof kCommonBytes - 1;
    for (int32_t i = 0; i < count; ++i) {
      of[static_cast<uint8_t>(kCommonBytes[i])] = static_cast<uint8_t>(count - i);
    }
    of[0] = 255;  // fills binary files
  }
};
constexpr Commonness kCommonness;

struct Forward {
  static constexpr bool kForward = true;
  static VEK_INLINE uint8_t At(const uint8_t* s, int32_t /*length*/, int32_t i) { return s[i]; }
};

struct Backward {
  static constexpr bool kForward = false;
  static VEK_INLINE uint8_t At(const uint8_t* s, int32_t length, int32_t i) {
    return s[length - 1 - i];
  }
};

// Offsets of the two chosen bytes in the needle, the lower first.
struct Pair {
  int32_t low;
  int32_t high;
};

// The two rarest bytes among the needle's first ones, at different places and, where the needle
// has two, of different values.
VEK_INLINE Pair RarestPair(const uint8_t* needle, int32_t needleLength) {
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
  return rarest < second ? Pair{rarest, second} : Pair{second, rarest};
}

// A search in progress: the strings, the chosen bytes and the effort spent on false candidates.
template <class Direction>
struct Search {
  const uint8_t* source;
  const uint8_t* needle;
  int32_t needleLength;
  int32_t positions;  // at which the needle could start: 0 to positions - 1
  Pair pair;
  Block lowByte;
  Block highByte;
  int64_t effort;

  static constexpr Hits kHits = Hits::kSetLanes;

  // The candidates among the positions from i on, as a probe of the scan has it.
  template <class Load>
  VEK_INLINE Block operator()(Load load, ptrdiff_t i) const {
    return (load(source + i + pair.low) == lowByte) & (load(source + i + pair.high) == highByte);
  }

  // First candidate in scan order, among those given, at which the whole needle stands; -1 if
  // there is none. `position` gives a lane's position in the source.
  template <class Position>
  VEK_INLINE int32_t Verify(uint64_t candidates, Position position) {
    while (candidates != 0) {
      const int32_t lane = Direction::kForward ? LowestBit(candidates) : HighestBit(candidates);
      const int32_t at = position(lane);
      const int32_t difference = FirstHit(Differs{source + at, needle}, needleLength);
      if (difference < 0) {
        return at;
      }
      effort += kBlock + difference;
      candidates &= ~(uint64_t{1} << lane);
    }
    return -1;
  }
};

// The critical factorization of the needle, read in the search's direction: the maximal suffix
// under one order of byte values, or its reverse, whichever starts later. `period` is the period
// of that suffix.
struct Suffix {
  int32_t start;
  int32_t period;
};

template <class Direction>
VEK_INLINE Suffix MaximalSuffix(const uint8_t* needle, int32_t n, bool reversedOrder) {
  int32_t start = 0;      // of the best suffix so far
  int32_t candidate = 1;  // start of the suffix compared with it
  int32_t matched = 0;
  int32_t period = 1;
  while (candidate + matched < n) {
    const uint8_t a = Direction::At(needle, n, candidate + matched);
    const uint8_t b = Direction::At(needle, n, start + matched);
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
template <class Direction>
VEK_INLINE int32_t TwoWay(const uint8_t* source, int32_t length, const uint8_t* needle, int32_t n,
                          int32_t from) {
  const Suffix one = MaximalSuffix<Direction>(needle, n, false);
  const Suffix other = MaximalSuffix<Direction>(needle, n, true);
  const Suffix suffix = one.start >= other.start ? one : other;

  // The needle is periodic as a whole if what precedes the suffix repeats one period later.
  bool periodic = suffix.start + suffix.period <= n;
  for (int32_t i = 0; periodic && i < suffix.start; ++i) {
    periodic = Direction::At(needle, n, i) == Direction::At(needle, n, i + suffix.period);
  }
  const int32_t rest = n - suffix.start;
  const int32_t shift = periodic ? suffix.period : (suffix.start > rest ? suffix.start : rest) + 1;

  int32_t remembered = 0;  // bytes at the needle's start known to match
  for (int32_t at = from; at <= length - n;) {
    int32_t i = suffix.start > remembered ? suffix.start : remembered;
    while (i < n && Direction::At(needle, n, i) == Direction::At(source, length, at + i)) {
      ++i;
    }
    if (i < n) {
      at += i - suffix.start + 1;
      remembered = 0;
      continue;
    }
    i = suffix.start;
    while (i > remembered &&
           Direction::At(needle, n, i - 1) == Direction::At(source, length, at + i - 1)) {
      --i;
    }
    if (i <= remembered) {
      return Direction::kForward ? at : length - n - at;
    }
    at += shift;
    remembered = periodic ? n - shift : 0;
  }
  return -1;
}

// No templates: g++ places instances of a template in the ordinary code section.
VEK_KERNEL __attribute__((noinline)) int32_t FindFirstTwoWay(const uint8_t* source, int32_t length,
                                                             const uint8_t* needle,
                                                             int32_t needleLength, int32_t from) {
  return TwoWay<Forward>(source, length, needle, needleLength, from);
}

VEK_KERNEL __attribute__((noinline)) int32_t FindLastTwoWay(const uint8_t* source, int32_t length,
                                                            const uint8_t* needle,
                                                            int32_t needleLength, int32_t from) {
  return TwoWay<Backward>(source, length, needle, needleLength, from);
}

// Fewer than 16 positions: their ends, as the scan does for short strings.
template <class Direction>
VEK_INLINE int32_t FindAmongFew(Search<Direction>& search) {
  return UseBitsOfFew(search, search.positions, [&](uint64_t bits) {
    return search.Verify(bits, [](int32_t lane) { return lane; });
  });
}

// 64 positions a step, then 16 a step, the last step ending at the last position in scan order.
// Where a step overlaps the one before, false candidates are refused twice.
template <class Direction>
VEK_INLINE int32_t FindAmongMany(Search<Direction>& search) {
  const int32_t positions = search.positions;
  // First position of the step that covers `width` positions when `passed` lie behind the scan.
  const auto stepStart = [=](int32_t passed, int32_t width) {
    const int32_t overlap = passed + width > positions ? passed + width - positions : 0;
    return Direction::kForward ? passed - overlap : positions - passed - width + overlap;
  };
  int32_t passed = 0;
  while (passed < positions) {
    const int32_t width = positions - passed >= 64 ? 64 : kBlock;
    const int32_t start = stepStart(passed, width);
    const uint64_t candidates = width == 64 ? GroupBits(search, start)
                                            : HitBits<Search<Direction>>(search(AnyLoad{}, start));
    if (__builtin_expect(candidates != 0, 0)) {
      const int32_t at = search.Verify(candidates, [=](int32_t lane) { return start + lane; });
      if (at >= 0) {
        return at;
      }
      if (search.effort > kEffortAtStart + kEffortPerPosition * passed) {
        const auto twoWay = Direction::kForward ? FindFirstTwoWay : FindLastTwoWay;
        return twoWay(search.source, positions + search.needleLength - 1, search.needle,
                      search.needleLength, passed);
      }
    }
    passed += width;
  }
  return -1;
}

template <class Direction>
VEK_INLINE int32_t FindNeedle(const uint8_t* source, int32_t length, const uint8_t* needle,
                              int32_t needleLength) {
  const int32_t positions = length - needleLength + 1;
  const Pair pair =
      positions >= kLongSource ? RarestPair(needle, needleLength) : Pair{0, needleLength - 1};
  Search<Direction> search = {source,
                              needle,
                              needleLength,
                              positions,
                              pair,
                              Splat(needle[pair.low]),
                              Splat(needle[pair.high]),
                              0};
  return positions < kBlock ? FindAmongFew(search) : FindAmongMany(search);
}

}  // namespace

VEK_KERNEL int32_t FindSubstring(const uint8_t* source, int32_t length, const uint8_t* needle,
                                 int32_t needleLength) {
  return needleLength == 1 ? FindByte(source, length, needle[0])
                           : FindNeedle<Forward>(source, length, needle, needleLength);
}

VEK_KERNEL int32_t FindLastSubstring(const uint8_t* source, int32_t length, const uint8_t* needle,
                                     int32_t needleLength) {
  return needleLength == 1 ? FindLastByte(source, length, needle[0])
                           : FindNeedle<Backward>(source, length, needle, needleLength);
}

}  // namespace vekch::kernels
