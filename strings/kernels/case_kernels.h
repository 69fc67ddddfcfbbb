// SPDX-License-Identifier: MIT

// Kernels of the case mapping: a transform that adds a value to the bytes of a range. They are
// inline for the fronts, which lie in the kernels' section with them.

#ifndef VEKCH_STRINGS_KERNELS_CASE_KERNELS_H
#define VEKCH_STRINGS_KERNELS_CASE_KERNELS_H

#include "strings/kernels/byte_range.h"
#include "strings/kernels/transform.h"

namespace vekch::kernels {

// A direction: the bytes from kLowest to kHighest have kAddend added to them. As constants they lie
// in memory ready for all lanes: spreading arguments over them costs more than a short string.
template <uint8_t kLowest, uint8_t kHighest, uint8_t kAddend>
struct MapLetters {
  VEK_INLINE Block operator()(Block b) const {
    return b + (InRange(b, MakeRange(kLowest, kHighest)) & Splat(kAddend));
  }
};

using ToLower = MapLetters<'A', 'Z', 'a' - 'A'>;
using ToUpper = MapLetters<'a', 'z', static_cast<uint8_t>('A' - 'a')>;

}  // namespace vekch::kernels

#endif
