// SPDX-License-Identifier: MIT

// Ranges of byte values, tested in all lanes of a block.

#ifndef VEKCH_STRINGS_KERNELS_BYTE_RANGE_H
#define VEKCH_STRINGS_KERNELS_BYTE_RANGE_H

#include "strings/kernels/block.h"

namespace vekch::kernels {

// The bytes from a lowest to a highest value, tested with one addition and one comparison: the
// addition moves the range to the top of the signed bytes, so that a member is whatever is then
// greater than the byte below the moved range. The range of all 256 bytes has no byte below it and
// can't be tested so.
struct ByteRange {
  Block shift;
  Block below;
};

VEK_INLINE ByteRange MakeRange(uint8_t lowest, uint8_t highest) {
  return {Splat(static_cast<uint8_t>(127 - highest)),
          Splat(static_cast<uint8_t>(126 - (highest - lowest)))};
}

VEK_INLINE Block InRange(Block b, const ByteRange& range) {
  return {_mm_cmpgt_epi8((b + range.shift).lanes, range.below.lanes)};
}

constexpr int32_t kMostRanges = 4;  // beyond, testing them costs more than looking up

template <int32_t kCount>
VEK_INLINE Block InAny(Block b, const ByteRange* ranges) {
  Block hits = InRange(b, ranges[0]);
#pragma GCC unroll 4
  for (int32_t r = 1; r < kCount; ++r) {
    hits = hits | InRange(b, ranges[r]);
  }
  return hits;
}

}  // namespace vekch::kernels

#endif
