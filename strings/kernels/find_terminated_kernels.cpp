// SPDX-License-Identifier: MIT

// Search for a substring in a string that ends with a zero byte:
//
//   first       in the group of the first byte, 16 positions after the other by a mask of the
//               needle's first two bytes, up to the first candidate that turns out false
//   nearby      the same, and then group after group, until the candidates were false too often
//   further on  in pieces that grow, each of them looked through for the terminator before it is
//               searched as any other haystack: what was looked through is still in the cache
//
// So an occurrence early in a long string is found without a look at the rest, and neither string
// is measured where that can be helped.
//
// Tried and not kept: measuring both strings also where all lies nearby (three times the time for
// an occurrence in the first bytes); the positions of the first group after 16 of them by one mask
// (a fifth slower for strings of 16 to 31 bytes, and no faster for longer ones); more than one
// false candidate in the first step, which calls nothing (a third slower for strings without any).

#include "strings/kernels/find_end.h"
#include "strings/kernels/find_kernels.h"
#include "strings/kernels/lanes.h"
#include "strings/kernels/taken.h"

namespace vekch::kernels {
namespace {

// ---- Further on

constexpr ptrdiff_t kFirstPiece = 4096;
constexpr ptrdiff_t kLargestPiece = 16384;  // for short needles; leaves room in the first cache

// The start of a string that holds no terminator, in whole groups from the first one's end on; or
// the whole string.
struct Known {
  ptrdiff_t length;
  bool ended;
};

// Goes on to a length of at least `wanted`, if the string is so long.
VEK_INLINE Known GoOn(const uint8_t* haystack, Known known, ptrdiff_t wanted) {
  for (; known.length < wanted; known.length += kGroup) {
    const uint8_t* group = haystack + known.length;
    if (StopsIn(group, AtTerminator{})) {
      return {known.length + LowestBit(StopBits(group, AtTerminator{})), true};
    }
  }
  return known;
}

// From position `from` on.
VEK_INLINE int32_t FindInPieces(const uint8_t* haystack, Known known, ptrdiff_t from,
                                const uint8_t* needle, ptrdiff_t n) {
  const ptrdiff_t largest = kLargestPiece < 8 * n ? 8 * n : kLargestPiece;
  ptrdiff_t piece = kFirstPiece;
  for (;;) {
    const ptrdiff_t least = from + n;
    if (!known.ended) {
      known = GoOn(haystack, known, piece < n ? least : from + piece);
    }
    if (known.length >= least) {
      const int32_t at = FindSubstring(haystack + from, static_cast<int32_t>(known.length - from),
                                       needle, static_cast<int32_t>(n));
      if (at >= 0) {
        return static_cast<int32_t>(from) + at;
      }
      from = known.length - n + 1;
    }
    if (known.ended) {
      return -1;
    }
    piece = 4 * piece < largest ? 4 * piece : largest;
  }
}

__attribute__((noinline)) VEK_READS_GROUPS VEK_KERNEL int32_t FindFurther(const uint8_t* haystack,
                                                                          ptrdiff_t from,
                                                                          const uint8_t* needle) {
  VEKCH_TAKEN("terminated further on");
  const ptrdiff_t offset = Misalignment<kGroup>(haystack);
  const uint64_t ends = StopBits(haystack - offset, AtTerminator{}) >> offset;
  const Known known = ends == 0 ? Known{kGroup - offset, false} : Known{LowestBit(ends), true};
  return FindInPieces(haystack, known, from, needle, FindEnd(needle, AtTerminator{}));
}

// ---- Nearby

constexpr ptrdiff_t kNearby = 2048;
constexpr int32_t kPatience = 256;    // what may be spent on candidates: so much in all,
constexpr int32_t kPerCandidate = 8;  // for each one so much and one for each byte compared
constexpr int32_t kUnsure = -2;       // more would have to be spent

// Before all that, in the first group:
constexpr int32_t kMostCompared = 40;  // bytes at each candidate

// The first of some candidates, given by a bit for each position of the haystack, at which the
// needle of at least two bytes occurs, the first two of which are known to be equal.
__attribute__((noinline)) VEK_KERNEL int32_t FindAmong(uint64_t candidates, const uint8_t* haystack,
                                                       const uint8_t* needle, int32_t* patience) {
  for (; candidates != 0; candidates &= candidates - 1) {
    const int32_t at = LowestBit(candidates);
    *patience -= kPerCandidate;
    int32_t i = 2;
    for (; needle[i] != 0; ++i) {
      if (--*patience < 0) {
        return kUnsure;
      }
      if (haystack[at + i] != needle[i]) {
        break;
      }
    }
    if (needle[i] == 0) {
      return at;
    }
  }
  return -1;
}

// Compares a needle whose first two bytes match at a position: how many bytes do, up to
// kMostCompared.
VEK_INLINE int32_t EqualBytes(const uint8_t* position, const uint8_t* needle) {
  int32_t i = 2;
  while (i < kMostCompared && needle[i] != 0 && position[i] == needle[i]) {
    ++i;
  }
  return i;
}

// The needle's first two bytes.
struct Pair {
  Block first;
  Block second;

  VEK_INLINE Block StartsAt(const uint8_t* p) const {
    return (LoadAny(p) == first) & (LoadAny(p + 1) == second);
  }
};

// The lowest lanes, up to the first one that is set.
VEK_INLINE uint64_t LanesBefore(uint64_t ends) { return (ends - 1) & ~ends; }

// From position `from` on.
__attribute__((noinline)) VEK_READS_GROUPS VEK_KERNEL int32_t FindNearby(const uint8_t* haystack,
                                                                         const uint8_t* needle,
                                                                         ptrdiff_t from) {
  VEKCH_TAKEN("terminated nearby");
  const Pair pair = {Splat(needle[0]), Splat(needle[1])};
  int32_t patience = kPatience;
  // Decides about the positions from `from` on; returns whether the search ends with that.
  int32_t found = -1;
  const auto endsWith = [&](uint64_t candidates, uint64_t ends) __attribute__((always_inline)) {
    const uint64_t before = candidates & LanesBefore(ends);
    if (before != 0) {
      const int32_t lane = FindAmong(before, haystack + from, needle, &patience);
      if (lane != -1) {
        found = lane == kUnsure ? FindFurther(haystack, from, needle)
                                : static_cast<int32_t>(from) + lane;
        return true;
      }
    }
    return ends != 0;
  };

  // The group of the first byte, but for its last bytes.
  const ptrdiff_t firstGroup = kGroup - Misalignment<kGroup>(haystack);
  for (; firstGroup - from > kBlock; from += kBlock) {
    const uint8_t* at = haystack + from;
    if (endsWith(LaneBits(pair.StartsAt(at)), ZeroBits(LoadAny(at)))) {
      return found;
    }
  }
  // Its last block, in which the string may start. A pair that starts with the last byte is left.
  const uint8_t* block = haystack + firstGroup - kBlock;
  const ptrdiff_t before =
      from - (firstGroup - kBlock);  // lanes that are done, or not the string's
  const Block bytes = LoadAligned(block);
  if (endsWith(LaneBits((bytes == pair.first) & (LanesDown<1>(bytes) == pair.second)) >> before,
               ZeroBits(bytes) >> before)) {
    return found;
  }
  // Groups, and with each the pair that starts right before it.
  for (from = firstGroup - 1; from < kNearby; from += kGroup) {
    const uint8_t* at = haystack + from;
    const Block p0 = pair.StartsAt(at);
    const Block p1 = pair.StartsAt(at + kBlock);
    const Block p2 = pair.StartsAt(at + 2 * kBlock);
    const Block p3 = pair.StartsAt(at + 3 * kBlock);
    const Block lowest =
        Lower(Lower(LoadAligned(at + 1), LoadAligned(at + 1 + kBlock)),
              Lower(LoadAligned(at + 1 + 2 * kBlock), LoadAligned(at + 1 + 3 * kBlock)));
    if (LaneBits((p0 | p1) | (p2 | p3) | (lowest == ZeroBlock())) != 0) {
      const uint64_t candidates = LaneBits(p0) | (uint64_t{LaneBits(p1)} << 16) |
                                  (uint64_t{LaneBits(p2)} << 32) | (uint64_t{LaneBits(p3)} << 48);
      // A pair lies before the terminator if its second byte does, whose lane is the next one.
      if (endsWith(candidates, StopBits(at + 1, AtTerminator{}))) {
        return found;
      }
    }
  }
  return FindFurther(haystack, from, needle);
}

}  // namespace

VEK_READS_GROUPS VEK_KERNEL int32_t FindInTerminated(const uint8_t* haystack,
                                                     const uint8_t* needle) {
  if (needle[0] == 0) {
    return -1;
  }
  const Block first = Splat(needle[0]);
  if (needle[1] == 0) {
    const int32_t at = FindEnd(haystack, AtTerminatorOr{first});
    return haystack[at] == 0 ? -1 : at;
  }
  // Here nothing is called, so no register is saved.
  const Pair pair = {first, Splat(needle[1])};
  const ptrdiff_t firstGroup = kGroup - Misalignment<kGroup>(haystack);
  ptrdiff_t from = 0;
  for (; firstGroup - from > kBlock; from += kBlock) {
    const uint8_t* at = haystack + from;
    const uint32_t ends = ZeroBits(LoadAny(at));
    const uint64_t candidates = LaneBits(pair.StartsAt(at)) & LanesBefore(ends);
    if (candidates != 0) {
      const int32_t lane = LowestBit(candidates);
      if (needle[EqualBytes(at + lane, needle)] == 0) {
        return static_cast<int32_t>(from) + lane;
      }
      break;
    }
    if (ends != 0) {
      return -1;
    }
  }
  return FindNearby(haystack, needle, from);
}

}  // namespace vekch::kernels
