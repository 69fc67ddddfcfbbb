// SPDX-License-Identifier: MIT
#include "regexp/characters/byte_ranges.h"

namespace vekch::regexp {
namespace {

struct Bounds {
  uint8_t at[2 * kernels::kMostRanges + 1];  // where members begin, and where they end, in turn
  int32_t count;                             // above that of `at` where there are more
};

// Of the members, or from where others follow on.
Bounds BoundsOf(const uint8_t* table, uint8_t bit) {
  Bounds bounds = {{}, 0};
  const kernels::Block wanted = kernels::Splat(bit);
  uint32_t previous = 0;  // whether the byte below the current 16 is a member
  for (int32_t base = 0; base < 256; base += kernels::kBlock) {
    const kernels::Block members = kernels::LoadAny(table + base) & wanted;
    const uint32_t bits = kernels::LaneBits(members == wanted);
    for (uint32_t changes = bits ^ ((bits << 1 | previous) & 0xFFFFU); changes != 0;
         changes &= changes - 1) {
      if (bounds.count < static_cast<int32_t>(sizeof bounds.at)) {
        bounds.at[bounds.count] = static_cast<uint8_t>(base + kernels::LowestBit(changes));
      }
      ++bounds.count;
    }
    previous = bits >> 15;
  }
  return bounds;
}

// The ranges between the bounds from one on, and how many; the last may go up to 255.
int32_t RangesFrom(const Bounds& bounds, int32_t first, kernels::Ranges* ranges) {
  const int32_t count = (bounds.count - first + 1) / 2;
  if (count < 1 || count > kernels::kMostRanges) {
    return 0;
  }
  for (int32_t i = 0; i < count; ++i) {
    const int32_t end = first + 2 * i + 1;
    ranges->lowest[i] = bounds.at[end - 1];
    ranges->highest[i] = static_cast<uint8_t>(end < bounds.count ? bounds.at[end] - 1 : 255);
  }
  kernels::RepeatLast(ranges, count);
  const bool isAll = ranges->lowest[0] == 0 && ranges->highest[0] == 255;
  return isAll ? 0 : count;
}

}  // namespace

int32_t RangesOf(const uint8_t* table, uint8_t bit, kernels::Ranges* ranges) {
  const int32_t count = RangesFrom(BoundsOf(table, bit), 0, ranges);
  return count == 3 ? 4 : count;
}

void FillRangeSet(const uint8_t* table, uint8_t bit, kernels::RangeSet* set) {
  constexpr kernels::Ranges kAll = {{0, 0x80, 0x80, 0x80}, {0x7F, 0xFF, 0xFF, 0xFF}};
  const Bounds bounds = BoundsOf(table, bit);
  // The others lie between the members, and can be fewer ranges, where byte 0 is a member.
  const bool beginsInside = bounds.count > 0 && bounds.at[0] == 0;
  if (beginsInside && bounds.count == 1) {
    kernels::Spread(kAll, 2, false, set);
    return;
  }
  kernels::Ranges members;
  kernels::Ranges others;
  const int32_t count = RangesFrom(bounds, 0, &members);
  const int32_t otherCount = beginsInside ? RangesFrom(bounds, 1, &others) : 0;
  const bool isComplement = otherCount > 0 && (count == 0 || otherCount < count);
  set->count = 0;
  if (isComplement || count > 0) {
    kernels::Spread(isComplement ? others : members, isComplement ? otherCount : count,
                    isComplement, set);
  }
}

}  // namespace vekch::regexp
