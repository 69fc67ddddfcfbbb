// Kernels of the comparisons. The strings have a common length of at least 1; only they are read.

#ifndef VEKCH_STRINGS_KERNELS_COMPARE_KERNELS_H
#define VEKCH_STRINGS_KERNELS_COMPARE_KERNELS_H

#include <stdint.h>

namespace vekch::kernels {

// Lowest position at which the strings differ, -1 if there is none.
int32_t FirstDifference(const uint8_t* first, const uint8_t* second, int32_t length);

// Difference of the bytes at the first position at which the strings differ, 0 if there is none.
int32_t Compare(const uint8_t* first, const uint8_t* second, int32_t length);

// The same after folding: a byte from `lowest` to `highest` has `addend` added to it.
int32_t CompareFolded(const uint8_t* first, const uint8_t* second, int32_t length, uint8_t lowest,
                      uint8_t highest, uint8_t addend);

// Whether the strings are equal.
bool Equal(const uint8_t* first, const uint8_t* second, int32_t length);

}  // namespace vekch::kernels

#endif
