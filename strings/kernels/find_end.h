// SPDX-License-Identifier: MIT

// Search in a string that ends with a zero byte, where nobody knows how far that is. What may be
// read are groups of 64 bytes, aligned to 64, that hold a byte of the string or its terminator:
// such a group is a cache line, so that reading it touches no line, and no page, that the string
// itself does not lie in.
//
//   the first 16 bytes, or what the group of the first byte has of them
//   the rest of that group
//   group after group, until one holds the end
//
// Tried and not kept: the bits of the second group at once instead of by the loop (64 to 127 bytes
// a twentieth faster, all longer strings slower); a first load moved back to where it ends with its
// group, without a branch (a third slower for strings that leave room for it, as most do).
//
// What ends the search is a Stop: the byte at which a lane of its result is zero.

#ifndef VEKCH_STRINGS_KERNELS_FIND_END_H
#define VEKCH_STRINGS_KERNELS_FIND_END_H

#include "strings/kernels/block.h"

// Tools that watch single bytes must not watch the groups that strings are read in.
#define VEK_READS_GROUPS __attribute__((no_sanitize("address")))

namespace vekch::kernels {

struct AtTerminator {
  VEK_INLINE Block operator()(Block b) const { return b; }
};

// Two operations to a block instead of three for comparing with both and uniting the results.
struct AtTerminatorOr {
  Block value;

  VEK_INLINE Block operator()(Block b) const { return Lower(b, b ^ value); }
};

VEK_INLINE uint32_t ZeroBits(Block b) { return LaneBits(b == ZeroBlock()); }

// Where the stop holds in the group.
template <class Stop>
VEK_INLINE uint64_t StopBits(const uint8_t* group, Stop stop) {
  return ZeroBits(stop(LoadAligned(group))) |
         (uint64_t{ZeroBits(stop(LoadAligned(group + kBlock)))} << 16) |
         (uint64_t{ZeroBits(stop(LoadAligned(group + 2 * kBlock)))} << 32) |
         (uint64_t{ZeroBits(stop(LoadAligned(group + 3 * kBlock)))} << 48);
}

template <class Stop>
VEK_INLINE bool StopsIn(const uint8_t* group, Stop stop) {
  const Block lowest =
      Lower(Lower(stop(LoadAligned(group)), stop(LoadAligned(group + kBlock))),
            Lower(stop(LoadAligned(group + 2 * kBlock)), stop(LoadAligned(group + 3 * kBlock))));
  return ZeroBits(lowest) != 0;
}

template <class Stop>
VEK_INLINE int32_t FindEnd(const uint8_t* haystack, Stop stop) {
  const ptrdiff_t offset = Misalignment<kGroup>(haystack);
  const uint8_t* group = haystack - offset;
  const ptrdiff_t last = kGroup - kBlock;
  if (__builtin_expect(offset <= last, 1)) {
    if (const uint32_t bits = ZeroBits(stop(LoadAny(haystack))); __builtin_expect(bits != 0, 1)) {
      return LowestBit(bits);
    }
    if (const uint64_t bits = StopBits(group, stop) >> offset; bits != 0) {
      return LowestBit(bits);
    }
  } else if (const uint32_t bits = ZeroBits(stop(LoadAligned(group + last))) >> (offset - last);
             bits != 0) {
    return LowestBit(bits);
  }
  do {
    group += kGroup;
  } while (!StopsIn(group, stop));
  return static_cast<int32_t>(group - haystack) + LowestBit(StopBits(group, stop));
}

}  // namespace vekch::kernels

#endif
