// SPDX-License-Identifier: MIT

// A set of bytes as up to four ranges, or as all but these, tested in all lanes of a block.

#ifndef VEKCH_STRINGS_KERNELS_RANGE_SET_H
#define VEKCH_STRINGS_KERNELS_RANGE_SET_H

#include "strings/kernels/byte_range.h"

namespace vekch::kernels {

// Up to kMostRanges of them; the last fills the rest. None is of all bytes.
struct Ranges {
  uint8_t lowest[kMostRanges];
  uint8_t highest[kMostRanges];
};

// Fills the ranges after the first `count` of them, of which there is one at least.
inline void RepeatLast(Ranges* ranges, int32_t count) {
  for (int32_t i = count; i < kMostRanges; ++i) {
    ranges->lowest[i] = ranges->lowest[count - 1];
    ranges->highest[i] = ranges->highest[count - 1];
  }
}

// What a test needs, ready in memory at any address; 0 ranges where a set has no such form.
struct RangeSet {
  int32_t count;
  uint32_t flip;  // 0xFFFF where the members are all bytes outside the ranges, else 0
  uint8_t shift[kMostRanges][kBlock];
  uint8_t below[kMostRanges][kBlock];

  VEK_INLINE ByteRange At(int32_t r) const { return {LoadAny(shift[r]), LoadAny(below[r])}; }
};

// A bit for each member among 16 bytes: the ranges are read each time, for few blocks.
VEK_INLINE uint32_t MembersAt(const RangeSet& set, const uint8_t* at) {
  const Block bytes = LoadAny(at);
  Block hits = InRange(bytes, set.At(0));
  for (int32_t r = 1; r < set.count; ++r) {
    hits = hits | InRange(bytes, set.At(r));
  }
  return LaneBits(hits) ^ set.flip;
}

inline void Spread(const Ranges& ranges, int32_t count, bool isComplement, RangeSet* set) {
  set->count = count;
  set->flip = isComplement ? 0xFFFF : 0;
  for (int32_t r = 0; r < kMostRanges; ++r) {
    const ByteRange range = MakeRange(ranges.lowest[r], ranges.highest[r]);
    StoreAny(set->shift[r], range.shift);
    StoreAny(set->below[r], range.below);
  }
}

// The set with its ranges in registers.
template <int32_t kCount>
struct LoadedSet {
  ByteRange ranges[kCount];
  uint32_t flip;

  explicit VEK_INLINE LoadedSet(const ByteRange (&members)[kCount]) : flip(0) {
    for (int32_t r = 0; r < kCount; ++r) {
      ranges[r] = members[r];
    }
  }

  explicit VEK_INLINE LoadedSet(const RangeSet& set) : flip(set.flip) {
    for (int32_t r = 0; r < kCount; ++r) {
      ranges[r] = set.At(r);
    }
  }

  // A bit for each member among 16 bytes.
  VEK_INLINE uint32_t MembersAt(const uint8_t* at) const {
    return LaneBits(InAny<kCount>(LoadAny(at), ranges)) ^ flip;
  }

  // And among 64.
  VEK_INLINE uint64_t MembersInGroup(const uint8_t* at) const {
    return MembersAt(at) | uint64_t{MembersAt(at + kBlock)} << 16 |
           uint64_t{MembersAt(at + 2 * kBlock)} << 32 | uint64_t{MembersAt(at + 3 * kBlock)} << 48;
  }
};

// Calls `use` with the set loaded.
template <class Use>
VEK_INLINE auto WithLoaded(const RangeSet& set, Use use) {
  return set.count == 1   ? use(LoadedSet<1>(set))
         : set.count == 2 ? use(LoadedSet<2>(set))
                          : use(LoadedSet<4>(set));
}

// The first byte that is no member, 16 at a time as long as 16 remain before `end`: where it is,
// or where fewer remain.
VEK_INLINE const uint8_t* SkipMembers(const RangeSet& set, const uint8_t* at, const uint8_t* end) {
  return WithLoaded(
      set, [ at, end ](const auto& loaded) __attribute__((always_inline)) {
        const uint8_t* p = at;
        for (; end - p >= kBlock; p += kBlock) {
          const uint32_t others = loaded.MembersAt(p) ^ 0xFFFFU;
          if (others != 0) {
            return p + LowestBit(others);
          }
        }
        return p;
      });
}

}  // namespace vekch::kernels

#endif
