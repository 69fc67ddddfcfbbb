// SPDX-License-Identifier: MIT

// The shape that the transforms of single bytes share: each byte of a source is mapped by itself
// and stored at the same position of a destination.
//
//   up to 128 bytes  the two ends, overlapping where the length is not a power of two
//   beyond           64 bytes a step on the destination's block boundaries; what lies before the
//                    first boundary and after the last step is part of an overlapping first block
//                    and of overlapping last 64 bytes
//
// The destination may be the source: whatever overlaps is read before anything is stored over it,
// so that no byte is mapped twice. Other overlaps are not supported. No byte outside the source is
// read, and none outside the destination's `length` bytes is written.
//
// A Map is called as Block map(Block) and treats all lanes alike.

#ifndef VEKCH_STRINGS_KERNELS_TRANSFORM_H
#define VEKCH_STRINGS_KERNELS_TRANSFORM_H

#include "strings/kernels/ends.h"

namespace vekch::kernels {

struct FourBlocks {
  Block b0, b1, b2, b3;
};

// The map that changes nothing.
struct Same {
  VEK_INLINE Block operator()(Block b) const { return b; }
};

// Maps the 32 bytes at p and the 32 bytes that start `gap` bytes after p.
template <class Map>
VEK_INLINE FourBlocks MapFour(const uint8_t* p, ptrdiff_t gap, const Map& map) {
  const Block b0 = LoadAny(p);
  const Block b1 = LoadAny(p + kBlock);
  const Block b2 = LoadAny(p + gap);
  const Block b3 = LoadAny(p + gap + kBlock);
  return {map(b0), map(b1), map(b2), map(b3)};
}

VEK_INLINE void StoreFour(uint8_t* p, ptrdiff_t gap, const FourBlocks& blocks) {
  StoreAny(p, blocks.b0);
  StoreAny(p + kBlock, blocks.b1);
  StoreAny(p + gap, blocks.b2);
  StoreAny(p + gap + kBlock, blocks.b3);
}

VEK_INLINE void StoreFourAligned(uint8_t* p, const FourBlocks& blocks) {
  StoreAligned(p, blocks.b0);
  StoreAligned(p + kBlock, blocks.b1);
  StoreAligned(p + 2 * kBlock, blocks.b2);
  StoreAligned(p + 3 * kBlock, blocks.b3);
}

// The same from the last to the first, for a walk from the end: a walk that goes back to a cache
// line it has left, as it would where the four lie in two of them, takes twice as long.
VEK_INLINE void StoreFourDownwards(uint8_t* p, const FourBlocks& blocks) {
  StoreAligned(p + 3 * kBlock, blocks.b3);
  KeepOrder();
  StoreAligned(p + 2 * kBlock, blocks.b2);
  KeepOrder();
  StoreAligned(p + kBlock, blocks.b1);
  KeepOrder();
  StoreAligned(p, blocks.b0);
}

template <int32_t kHalf, class Map>
VEK_INLINE void TransformEnds(const uint8_t* source, uint8_t* destination, int32_t length,
                              const Map& map) {
  StoreEnds<kHalf>(destination, length, map(LoadEnds<kHalf>(source, length)));
}

// The sizes are asked for in this order, and leave by ways of their own, for the sake of the
// shortest strings.
template <class Map>
VEK_INLINE void TransformShort(const uint8_t* source, uint8_t* destination, int32_t length,
                               const Map& map) {
  if (length < kBlock) {
    if (length >= 8) {
      return TransformEnds<8>(source, destination, length, map);
    }
    if (length >= 4) {
      return TransformEnds<4>(source, destination, length, map);
    }
    if (length >= 2) {
      return TransformEnds<2>(source, destination, length, map);
    }
    *destination = Lane8(map(BlockOf8(*source)));
    return;
  }
  if (length <= 2 * kBlock) {
    const Block first = map(LoadAny(source));
    const Block last = map(LoadAny(source + length - kBlock));
    StoreAny(destination, first);
    StoreAny(destination + length - kBlock, last);
    return;
  }
  const ptrdiff_t gap = length - 2 * kBlock;
  StoreFour(destination, gap, MapFour(source, gap, map));
}

// From 65 to 128 bytes.
template <class Map>
VEK_INLINE void TransformMedium(const uint8_t* source, uint8_t* destination, int32_t length,
                                const Map& map) {
  const ptrdiff_t tail = length - kGroup;
  const FourBlocks last = MapFour(source + tail, 2 * kBlock, map);
  StoreFour(destination, 2 * kBlock, MapFour(source, 2 * kBlock, map));
  StoreFour(destination + tail, 2 * kBlock, last);
}

// Maps `length` bytes, at least one.
template <class Map>
VEK_INLINE void Transform(const uint8_t* source, uint8_t* destination, int32_t length,
                          const Map& map) {
  if (length <= kGroup) {
    TransformShort(source, destination, length, map);
    return;
  }
  if (length <= 2 * kGroup) {
    TransformMedium(source, destination, length, map);
    return;
  }
  const ptrdiff_t tail = length - kGroup;
  const Block first = map(LoadAny(source));
  const FourBlocks last = MapFour(source + tail, 2 * kBlock, map);
  for (ptrdiff_t i = kBlock - Misalignment(destination); i < tail; i += kGroup) {
    StoreFourAligned(destination + i, MapFour(source + i, 2 * kBlock, map));
  }
  StoreAny(destination, first);
  StoreFour(destination + tail, 2 * kBlock, last);
}

}  // namespace vekch::kernels

#endif
