// SPDX-License-Identifier: MIT

// Search for one byte value: a scan that compares each block with the value in every lane.

#include "strings/kernels/byte_set.h"
#include "strings/kernels/find_kernels.h"

namespace vekch::kernels {

VEK_KERNEL int32_t FindByte(const uint8_t* haystack, int32_t length, uint8_t value) {
  return FirstHit(EqualsByte{haystack, Splat(value)}, length);
}

VEK_KERNEL int32_t FindLastByte(const uint8_t* haystack, int32_t length, uint8_t value) {
  return LastHit(EqualsByte{haystack, Splat(value)}, length);
}

}  // namespace vekch::kernels
