// Search for one byte value: a scan that compares each block with the value in every lane.

#include "strings/kernels/byte_set.h"
#include "strings/kernels/find_kernels.h"

namespace vekch::kernels {
VEK_KERNEL int32_t FindByte(const uint8_t* source, int32_t length, uint8_t value) {
  return FirstHit(EqualsByte{source, Splat(value)}, length);
}

VEK_KERNEL int32_t FindLastByte(const uint8_t* source, int32_t length, uint8_t value) {
  return LastHit(EqualsByte{source, Splat(value)}, length);
}

namespace {

// A block whose set lanes are those that end the search.
struct IsZero {
  VEK_INLINE Block operator()(Block b) const { return b == ZeroBlock(); }
};

struct IsZeroOr {
  Block value;

  VEK_INLINE Block operator()(Block b) const { return (b == value) | (b == ZeroBlock()); }
};

// The end is unknown, so no load may be unaligned: an aligned block lies in one page with the
// terminator that it holds. Blocks are tested one by one, since a group of them would be read
// beyond the block with the terminator.
template <class Ends>
VEK_INLINE int32_t FindEnd(const uint8_t* source, Ends ends) {
  const ptrdiff_t before = Misalignment(source);
  const uint8_t* p = source - before;
  const uint32_t bits = LaneBits(ends(LoadAligned(p))) >> before;  // without the lanes in front
  if (bits != 0) {
    return LowestBit(bits);
  }
  for (p += kBlock;; p += kGroup) {
#pragma GCC unroll 4
    for (int32_t i = 0; i < kGroup; i += kBlock) {
      const uint32_t lanes = LaneBits(ends(LoadAligned(p + i)));
      if (lanes != 0) {
        return static_cast<int32_t>(p - source) + i + LowestBit(lanes);
      }
    }
  }
}

}  // namespace

__attribute__((no_sanitize("address"))) VEK_KERNEL int32_t
FindByteOrTerminator(const uint8_t* source, uint8_t value) {
  return FindEnd(source, IsZeroOr{Splat(value)});
}

__attribute__((no_sanitize("address"))) VEK_KERNEL int32_t FindTerminator(const uint8_t* source) {
  return FindEnd(source, IsZero{});
}

}  // namespace vekch::kernels
