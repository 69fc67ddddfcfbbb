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

// The end is unknown, so no load may be unaligned: an aligned block lies in one page with the
// terminator that it holds.
__attribute__((no_sanitize("address"))) VEK_KERNEL int32_t
FindByteOrTerminator(const uint8_t* source, uint8_t value) {
  const Block wanted = Splat(value);
  const Block zero = ZeroBlock();
  const auto bitsAt = [=](const uint8_t* p) __attribute__((always_inline)) {
    const Block b = LoadAligned(p);
    return LaneBits((b == wanted) | (b == zero));
  };
  const ptrdiff_t before = Misalignment(source);
  const uint8_t* p = source - before;
  uint32_t bits = (bitsAt(p) >> before) << before;  // drops the lanes in front of the string
  while (bits == 0) {
    p += kBlock;
    bits = bitsAt(p);
  }
  return static_cast<int32_t>(p - source) + LowestBit(bits);
}

}  // namespace vekch::kernels
