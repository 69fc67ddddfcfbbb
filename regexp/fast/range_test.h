// SPDX-License-Identifier: MIT

// A block of bytes tested against ranges, of which each lane may have its own.

#ifndef VEKCH_REGEXP_FAST_RANGE_TEST_H
#define VEKCH_REGEXP_FAST_RANGE_TEST_H

#include <stdint.h>

#include "strings/kernels/byte_range.h"

namespace vekch::regexp::fast {

// The lanes of a block whose bytes lie in the ranges of their positions.
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

}  // namespace vekch::regexp::fast

#endif
