// SPDX-License-Identifier: MIT

// Search for positions where two bytes, at a fixed distance from each other, belong to one set
// each.

#ifndef VEKCH_STRINGS_KERNELS_FIND_PAIR_KERNELS_H
#define VEKCH_STRINGS_KERNELS_FIND_PAIR_KERNELS_H

#include <stdint.h>

namespace vekch::kernels {

constexpr int32_t kMostPairRanges = 4;

// A set of bytes as ranges, of which there are 1, 2 or 4; the last may be repeated.
struct PairRanges {
  uint8_t lowest[kMostPairRanges];
  uint8_t highest[kMostPairRanges];
};

// Fills the ranges after the first `count` of them, of which there is one at least.
inline void RepeatLast(PairRanges* ranges, int32_t count) {
  for (int32_t i = count; i < kMostPairRanges; ++i) {
    ranges->lowest[i] = ranges->lowest[count - 1];
    ranges->highest[i] = ranges->highest[count - 1];
  }
}

struct BytePair {
  int32_t offsets[2];  // of the two bytes after a position, none of them negative
  int32_t rangeCount;
  PairRanges sets[2];
};

// Looks at the positions from `from` on, 64 at a time, as long as 64 remain before `end`: returns
// the first of 64 positions of which some have both bytes, and a bit for each of them in `hits`; or
// the first of the positions that remain, with `hits` 0. The bytes after the positions are read,
// also after `end`.
const uint8_t* FindPairs(const uint8_t* from, const uint8_t* end, const BytePair& pair,
                         uint64_t* hits);

}  // namespace vekch::kernels

#endif
