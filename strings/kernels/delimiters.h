// SPDX-License-Identifier: MIT

// The delimiters of a string, found 64 bytes at a time and handed out one by one: a field costs no
// search of its own.

#ifndef VEKCH_STRINGS_KERNELS_DELIMITERS_H
#define VEKCH_STRINGS_KERNELS_DELIMITERS_H

#include "strings/kernels/scan.h"

namespace vekch::kernels {

class Delimiters {
 public:
  VEK_INLINE Delimiters(const uint8_t* source, int32_t length, uint8_t delimiter)
      : source_(source), length_(length), delimiter_(Splat(delimiter)) {
    bits_ = BitsAt(0);
  }

  // Position of the next one, the string's length behind the last.
  VEK_INLINE int32_t Next() {
    while (bits_ == 0) {
      if (length_ - group_ <= kGroup) {
        return length_;
      }
      group_ += kGroup;
      bits_ = BitsAt(group_);
    }
    const int32_t position = group_ + LowestBit(bits_);
    bits_ &= bits_ - 1;
    return position;
  }

 private:
  struct Probe {
    static constexpr Hits kHits = Hits::kSetLanes;
    const uint8_t* source;
    Block value;

    template <class Load>
    VEK_INLINE Block operator()(Load load, ptrdiff_t i) const {
      return load(source + i) == value;
    }
  };

  VEK_INLINE uint64_t BitsAt(int32_t group) const {
    const Probe probe = {source_, delimiter_};
    const int32_t rest = length_ - group;
    if (rest >= kGroup) {
      return GroupBits(probe, group);
    }
    if (length_ >= kGroup) {
      return GroupBits(probe, length_ - kGroup) >> (kGroup - rest);
    }
    uint64_t bits = 0;
    UseBitsOfShort(probe, rest, [&bits](uint64_t found) {
      bits = found;
      return 0;
    });
    return bits;
  }

  const uint8_t* source_;
  int32_t length_;
  int32_t group_ = 0;
  Block delimiter_;
  uint64_t bits_;
};

}  // namespace vekch::kernels

#endif
