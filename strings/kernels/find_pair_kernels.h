// SPDX-License-Identifier: MIT

// Search for positions where two bytes, at a fixed distance from each other, belong to one set
// each.

#ifndef VEKCH_STRINGS_KERNELS_FIND_PAIR_KERNELS_H
#define VEKCH_STRINGS_KERNELS_FIND_PAIR_KERNELS_H

#include <stdint.h>

#include "strings/kernels/range_set.h"

namespace vekch::kernels {

struct BytePair {
  int32_t offsets[2];  // of the two bytes after a position, none of them negative
  int32_t rangeCount;
  Ranges sets[2];
};

// Looks at the positions from `from` on, 64 at a time, as long as 64 remain before `end`: returns
// the first of 64 positions of which some have both bytes, and a bit for each of them in `hits`; or
// the first of the positions that remain, with `hits` 0. The bytes after the positions are read,
// also after `end`.
const uint8_t* FindPairs(const uint8_t* from, const uint8_t* end, const BytePair& pair,
                         uint64_t* hits);

}  // namespace vekch::kernels

#endif
