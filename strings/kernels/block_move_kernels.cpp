// Block move, for strings that may overlap: in the direction in which no store reaches a byte that
// is still to be loaded. A string that moves down is transformed by a map that changes nothing;
// one that moves up needs the mirror image of that.

#include "strings/kernels/block_kernels.h"
#include "strings/kernels/transform.h"

namespace vekch::kernels {
namespace {

// From the end to the start. What the steps leave open at the ends is loaded before the first of
// them and stored, overlapping, after the last.
VEK_INLINE void MoveFromEnd(const uint8_t* source, uint8_t* destination, ptrdiff_t length) {
  const FourBlocks first = MapFour(source, 2 * kBlock, Same{});
  const Block last = LoadAny(source + length - kBlock);
  ptrdiff_t i = length - Misalignment(destination + length) - kGroup;
  for (; i > 0; i -= kGroup) {
    StoreFourAligned(destination + i, MapFour(source + i, 2 * kBlock, Same{}));
  }
  StoreAny(destination + length - kBlock, last);
  StoreFour(destination, 2 * kBlock, first);
}

}  // namespace

VEK_KERNEL void Move(const uint8_t* source, uint8_t* destination, int32_t length) {
  if (length <= 0 || source == destination) {
    return;
  }
  // Up to two groups everything is loaded before anything is stored.
  if (source > destination || length <= 2 * kGroup) {
    Transform(source, destination, length, Same{});
  } else {
    MoveFromEnd(source, destination, length);
  }
}

}  // namespace vekch::kernels
