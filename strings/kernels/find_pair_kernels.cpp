// SPDX-License-Identifier: MIT
#include "strings/kernels/find_pair_kernels.h"

#include "strings/kernels/scan.h"

namespace vekch::kernels {
namespace {

template <int32_t kRanges>
struct HasPair {
  static constexpr Hits kHits = Hits::kSetLanes;
  const uint8_t* positions[2];
  ByteRange ranges[2][kRanges];

  VEK_INLINE HasPair(const uint8_t* haystack, const BytePair& pair) {
    for (int32_t side = 0; side < 2; ++side) {
      positions[side] = haystack + pair.offsets[side];
      for (int32_t r = 0; r < kRanges; ++r) {
        ranges[side][r] = MakeRange(pair.sets[side].lowest[r], pair.sets[side].highest[r]);
      }
    }
  }

  template <class Load>
  VEK_INLINE Block operator()(Load load, ptrdiff_t i) const {
    return InAny<kRanges>(load(positions[0] + i), ranges[0]) &
           InAny<kRanges>(load(positions[1] + i), ranges[1]);
  }
};

template <int32_t kRanges>
VEK_INLINE const uint8_t* FindGroup(const uint8_t* from, const uint8_t* end, const BytePair& pair,
                                    uint64_t* hits) {
  const HasPair<kRanges> probe(from, pair);
  const ptrdiff_t last = end - from - kGroup;
  ptrdiff_t i = 0;
  for (; i <= last; i += kGroup) {
    *hits = GroupBits(probe, i);
    if (*hits != 0) {
      return from + i;
    }
  }
  *hits = 0;
  return from + i;
}

}  // namespace

VEK_KERNEL const uint8_t* FindPairs(const uint8_t* from, const uint8_t* end, const BytePair& pair,
                                    uint64_t* hits) {
  switch (pair.rangeCount) {
    case 1:
      return FindGroup<1>(from, end, pair, hits);
    case 2:
      return FindGroup<2>(from, end, pair, hits);
    default:
      return FindGroup<4>(from, end, pair, hits);
  }
}

}  // namespace vekch::kernels
