// SPDX-License-Identifier: MIT

// The steps by which the copy and the fill store a string, without storing a byte twice. What they
// store is a Supply:
//
//   Block BlockAt(i) const         the 16 bytes from position i on
//   Word WordAt<Word>(i) const     the 8, 4, 2 or 1 bytes from position i on

#ifndef VEKCH_STRINGS_KERNELS_STORE_STEPS_H
#define VEKCH_STRINGS_KERNELS_STORE_STEPS_H

#include "strings/kernels/block.h"

namespace vekch::kernels {

// Stores past the cache; p is aligned. StoreFence orders such stores before later ones.
VEK_INLINE void StoreStreaming(uint8_t* p, Block b) {
  _mm_stream_si128(reinterpret_cast<__m128i*>(p), b.lanes);
}

VEK_INLINE void StoreFence() { _mm_sfence(); }

template <class Word, class Supply>
VEK_INLINE void StoreStep(const Supply& supply, uint8_t* destination, ptrdiff_t* at) {
  StoreWord(destination + *at, supply.template WordAt<Word>(*at));
  *at += static_cast<ptrdiff_t>(sizeof(Word));
}

// The last bytes of a string from position `at` on, fewer than 64. A bit of the length decides on
// each step. A jump table is slower where lengths vary, selecting the addresses without branches
// where they don't.
template <class Supply>
VEK_INLINE void StoreRest(const Supply& supply, uint8_t* destination, ptrdiff_t at,
                          ptrdiff_t length) {
  const ptrdiff_t rest = length - at;
  if ((rest & 32) != 0) {
    const Block b0 = supply.BlockAt(at);
    const Block b1 = supply.BlockAt(at + kBlock);
    StoreAny(destination + at, b0);
    StoreAny(destination + at + kBlock, b1);
    at += 2 * kBlock;
  }
  if ((rest & 16) != 0) {
    StoreAny(destination + at, supply.BlockAt(at));
    at += kBlock;
  }
  if (__builtin_expect((rest & 15) == 0, 0)) {
    return;
  }
  if ((rest & 8) != 0) {
    StoreStep<uint64_t>(supply, destination, &at);
  }
  if ((rest & 4) != 0) {
    StoreStep<uint32_t>(supply, destination, &at);
  }
  if ((rest & 2) != 0) {
    StoreStep<uint16_t>(supply, destination, &at);
  }
  if ((rest & 1) != 0) {
    StoreStep<uint8_t>(supply, destination, &at);
  }
}

using StoreBlock = void (*)(uint8_t*, Block);

// Whole groups of 64 bytes from position `at` on; returns the position after them.
template <StoreBlock kStore, class Supply>
VEK_INLINE ptrdiff_t StoreGroups(const Supply& supply, uint8_t* destination, ptrdiff_t at,
                                 ptrdiff_t length) {
  for (; at + kGroup <= length; at += kGroup) {
    const Block b0 = supply.BlockAt(at);
    const Block b1 = supply.BlockAt(at + kBlock);
    const Block b2 = supply.BlockAt(at + 2 * kBlock);
    const Block b3 = supply.BlockAt(at + 3 * kBlock);
    kStore(destination + at, b0);
    kStore(destination + at + kBlock, b1);
    kStore(destination + at + 2 * kBlock, b2);
    kStore(destination + at + 3 * kBlock, b3);
  }
  return at;
}

// Whole blocks past the cache; returns the position after them.
template <class Supply>
VEK_INLINE ptrdiff_t StreamBlocks(const Supply& supply, uint8_t* destination, ptrdiff_t at,
                                  ptrdiff_t length) {
  at = StoreGroups<StoreStreaming>(supply, destination, at, length);
  for (; at + kBlock <= length; at += kBlock) {
    StoreStreaming(destination + at, supply.BlockAt(at));
  }
  return at;
}

// Stores the first block of a string where it lies unaligned; returns the position from which on
// stores are aligned.
template <class Supply>
VEK_INLINE ptrdiff_t StoreHead(const Supply& supply, uint8_t* destination) {
  const ptrdiff_t misalignment = Misalignment(destination);
  if (misalignment == 0) {
    return 0;
  }
  StoreAny(destination, supply.BlockAt(0));
  return kBlock - misalignment;
}

}  // namespace vekch::kernels

#endif
