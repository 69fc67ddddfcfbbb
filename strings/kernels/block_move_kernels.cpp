// SPDX-License-Identifier: MIT

// Block move, for strings that may overlap: in the direction in which no store reaches a byte that
// is still to be loaded.

#include "strings/kernels/block_kernels.h"
#include "strings/kernels/piece.h"

namespace vekch::kernels {
namespace {

// From the start to the end. What the steps leave open at the ends is loaded before the first of
// them and stored, overlapping, after the last. Two pointers: with a common index the stores took
// a third longer.
VEK_INLINE void MoveFromStart(const uint8_t* source, uint8_t* destination, ptrdiff_t length) {
  const Block first = LoadAny(source);
  const FourBlocks last = MapFour(source + length - kGroup, 2 * kBlock, Same{});
  uint8_t* const tail = destination + length - kGroup;
  const ptrdiff_t head = kBlock - Misalignment(destination);
  const uint8_t* from = source + head;
  uint8_t* to = destination + head;
  do {
    StoreFourAligned(to, MapFour(from, 2 * kBlock, Same{}));
    from += kGroup;
    to += kGroup;
  } while (to < tail);
  StoreAny(destination, first);
  StoreFour(tail, 2 * kBlock, last);
}

// The mirror image of that.
VEK_INLINE void MoveFromEnd(const uint8_t* source, uint8_t* destination, ptrdiff_t length) {
  const FourBlocks first = MapFour(source, 2 * kBlock, Same{});
  const Block last = LoadAny(source + length - kBlock);
  const ptrdiff_t body = length - Misalignment(destination + length);
  const uint8_t* from = source + body;
  uint8_t* to = destination + body;
  do {
    from -= kGroup;
    to -= kGroup;
    StoreFourDownwards(to, MapFour(from, 2 * kBlock, Same{}));
  } while (to > destination + kGroup);
  StoreAny(destination + length - kBlock, last);
  StoreFour(destination, 2 * kBlock, first);
}

}  // namespace

VEK_KERNEL void Move(const uint8_t* source, uint8_t* destination, int32_t length) {
  if (length <= 0 || source == destination) {
    return;
  }
  if (length <= kShortPiece) {
    MoveShort(source, destination, length);
  } else if (source > destination) {
    MoveFromStart(source, destination, length);
  } else {
    MoveFromEnd(source, destination, length);
  }
}

}  // namespace vekch::kernels
