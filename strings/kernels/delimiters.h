// SPDX-License-Identifier: MIT

// The delimiters of a string, found 64 bytes at a time and handed out one by one: a field costs no
// search of its own.

#ifndef VEKCH_STRINGS_KERNELS_DELIMITERS_H
#define VEKCH_STRINGS_KERNELS_DELIMITERS_H

#include "strings/kernels/scan.h"

namespace vekch::kernels {

struct IsDelimiter {
  static constexpr Hits kHits = Hits::kSetLanes;
  const uint8_t* source;
  Block value;

  template <class Load>
  VEK_INLINE Block operator()(Load load, ptrdiff_t i) const {
    return load(source + i) == value;
  }
};

struct Delimiters {
  IsDelimiter probe;
  int32_t length;
  int32_t group;  // where the 64 bytes begin whose delimiters are at hand
  uint64_t bits;  // those that are still to be handed out

  // Position of the next one, the string's length after the last.
  VEK_INLINE int32_t Next() {
    while (bits == 0) {
      if (length - group <= kGroup) {
        return length;
      }
      LookAt(group + kGroup);
    }
    const int32_t position = group + LowestBit(bits);
    bits &= bits - 1;
    return position;
  }

  VEK_INLINE void LookAt(int32_t from) {
    group = from;
    const int32_t rest = length - from;
    if (rest >= kGroup) {
      bits = GroupBits(probe, from);
    } else if (length >= kGroup) {
      bits = GroupBits(probe, length - kGroup) >> (kGroup - rest);
    } else {
      uint64_t all = 0;  // not the record itself, which stays in registers so
      UseBitsOfShort(probe, rest, [&all](uint64_t found) {
        all = found;
        return 0;
      });
      bits = all;
    }
  }
};

// The delimiters of a string of at least one byte.
VEK_INLINE Delimiters DelimitersOf(const uint8_t* source, int32_t length, uint8_t delimiter) {
  Delimiters delimiters = {{source, Splat(delimiter)}, length, 0, 0};
  delimiters.LookAt(0);
  return delimiters;
}

}  // namespace vekch::kernels

#endif
