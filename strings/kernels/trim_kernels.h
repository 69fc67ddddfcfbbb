// Kernels that find what a trim keeps.

#ifndef VEKCH_STRINGS_KERNELS_TRIM_KERNELS_H
#define VEKCH_STRINGS_KERNELS_TRIM_KERNELS_H

#include <stdint.h>

namespace vekch::kernels {

// The ends from which bytes are dropped.
enum class Ends { kStart, kEnd, kBoth };

// The bytes from position `start` up to `end`; if none is kept, start == end.
struct Kept {
  int32_t start;
  int32_t end;
};

// Drops bytes equal to `value` from both ends of a string of 0 or more bytes.
Kept TrimByte(const uint8_t* source, int32_t length, uint8_t value);

// Drops bytes that belong to the set of the listed byte values; an empty set drops nothing.
Kept TrimSet(const uint8_t* source, int32_t length, const uint8_t* set, int32_t setLength,
             Ends ends);

}  // namespace vekch::kernels

#endif
