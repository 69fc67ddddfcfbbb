// SPDX-License-Identifier: MIT

// Bytes of a fixed number, each of a set of its own, tested 16 at a time with the captures among
// them.

#ifndef VEKCH_REGEXP_FAST_FIXED_BYTES_H
#define VEKCH_REGEXP_FAST_FIXED_BYTES_H

#include <stdint.h>

#include "regexp/fast/group.h"
#include "regexp/fast/machine.h"
#include "strings/kernels/byte_range.h"
#include "strings/kernels/ends.h"

namespace vekch::regexp::fast {

// The lanes of a block whose bytes lie in the ranges of their positions. A RangeSet has the same
// ranges for all lanes; here each has its own, so that the bytes to add lie beside those to compare
// with, range by range and block by block.
VEK_INLINE uint32_t InRanges(kernels::Block bytes, const uint8_t* ranges, int32_t count) {
  const auto inside = [&bytes](const uint8_t* range) __attribute__((always_inline)) {
    return kernels::InRange(bytes,
                            {kernels::LoadAny(range), kernels::LoadAny(range + kernels::kBlock)});
  };
  kernels::Block hits = inside(ranges);
  for (int32_t k = 1; k < count; ++k) {
    ranges += 2 * kernels::kBlock;
    hits = hits | inside(ranges);
  }
  return kernels::LaneBits(hits);
}

// Less than a block is tested as its first and its last kHalf bytes.
template <int32_t kHalf>
VEK_INLINE bool IsFixed(const FastOp& fixed, const uint8_t* at) {
  const int32_t ranges = fixed.fixed.ranges;
  const int32_t length = fixed.fixed.length;
  if constexpr (kHalf < kernels::kBlock) {
    constexpr uint32_t kAll = (1U << 2 * kHalf) - 1;
    return (~InRanges(kernels::LoadEnds<kHalf>(at, length), fixed.ranges, ranges) & kAll) == 0;
  } else {
    const uint8_t* const last = at + length - kernels::kBlock;
    const uint8_t* table = fixed.ranges;
    for (; at < last; at += kernels::kBlock, table += 2 * kernels::kBlock * ranges) {
      if (InRanges(kernels::LoadAny(at), table, ranges) != 0xFFFF) {
        return false;
      }
    }
    return InRanges(kernels::LoadAny(last), table, ranges) == 0xFFFF;
  }
}

template <int32_t kHalf, bool kRemembers>
VEK_INLINE bool Fixed(Machine<kRemembers>& m, Registers& r) {
  const FastOp& fixed = *r.op;
  r.depth += fixed.captures.cost;
  if (r.depth > m.allowance) {
    return m.GiveUp(r);
  }
  if (m.text.limit - r.at < fixed.fixed.length || !IsFixed<kHalf>(fixed, r.at)) {
    return false;
  }
  const FastCapture* capture = fixed.captures.first;
  for (int32_t left = fixed.fixed.captures; left > 0; --left, ++capture) {
    if (!Capture(m, r, capture->slot, capture->isUndone, r.at + capture->begin,
                 r.at + capture->end)) {
      return m.Stop(r, m.whenFull);
    }
  }
  r.at += fixed.fixed.length;
  return m.GoOn(r);
}

}  // namespace vekch::regexp::fast

#endif
