// SPDX-License-Identifier: MIT

// Copies and moves for pieces of a result, which are mostly short: inline, so that a short piece
// costs no call, and by two ends that overlap where the length is no power of two. That takes fewer
// branches than the steps of the block copy, which stores every byte once; pieces for which the
// steps no longer matter are left to that.

#ifndef VEKCH_STRINGS_KERNELS_PIECE_H
#define VEKCH_STRINGS_KERNELS_PIECE_H

#include "strings/kernels/block_kernels.h"
#include "strings/kernels/transform.h"

namespace vekch::kernels {

// A function whose pieces are all short does everything itself and has no frame. Their lengths are
// asked for together, by the bits that any of them has, so that the limit is a power of two.
constexpr int32_t kShortPiece = 4 * kGroup - 1;

template <class... Lengths>
VEK_INLINE bool AreShort(Lengths... lengths) {
  return static_cast<uint64_t>((... | int64_t{lengths})) <= kShortPiece;
}

template <class Word>
VEK_INLINE void MoveEnds(const uint8_t* source, uint8_t* destination, ptrdiff_t length) {
  const ptrdiff_t tail = length - ptrdiff_t{sizeof(Word)};
  const Word first = LoadWord<Word>(source);
  const Word last = LoadWord<Word>(source + tail);
  StoreWord(destination, first);
  StoreWord(destination + tail, last);
}

// A piece of less than 16 bytes; of 1 to 3 bytes the middle one may be the first or the last.
VEK_INLINE void MoveFew(const uint8_t* source, uint8_t* destination, ptrdiff_t length) {
  if (length >= 8) {
    return MoveEnds<uint64_t>(source, destination, length);
  }
  if (length >= 4) {
    return MoveEnds<uint32_t>(source, destination, length);
  }
  if (length > 0) {
    const ptrdiff_t middle = length >> 1;
    const uint8_t first = source[0];
    const uint8_t between = source[middle];
    const uint8_t last = source[length - 1];
    destination[0] = first;
    destination[middle] = between;
    destination[length - 1] = last;
  }
}

// The same for pieces whose lengths vary, as in lists: four words that meet or overlap serve 4 to
// 15 bytes alike, where a branch for each size would be guessed wrong.
VEK_INLINE void MoveFewVaried(const uint8_t* source, uint8_t* destination, ptrdiff_t length) {
  if (length < 4) {
    return MoveFew(source, destination, length);
  }
  const ptrdiff_t inner = (length & 8) >> 1;
  const ptrdiff_t tail = length - 4;
  const auto w0 = LoadWord<uint32_t>(source);
  const auto w1 = LoadWord<uint32_t>(source + inner);
  const auto w2 = LoadWord<uint32_t>(source + tail - inner);
  const auto w3 = LoadWord<uint32_t>(source + tail);
  StoreWord(destination, w0);
  StoreWord(destination + inner, w1);
  StoreWord(destination + tail - inner, w2);
  StoreWord(destination + tail, w3);
}

// From 129 to 256 bytes, in all 16 registers.
VEK_INLINE void MoveGroups(const uint8_t* source, uint8_t* destination, ptrdiff_t length) {
  const ptrdiff_t tail = length - 2 * kGroup;
  const FourBlocks b0 = MapFour(source, 2 * kBlock, Same{});
  const FourBlocks b1 = MapFour(source + kGroup, 2 * kBlock, Same{});
  const FourBlocks b2 = MapFour(source + tail, 2 * kBlock, Same{});
  const FourBlocks b3 = MapFour(source + tail + kGroup, 2 * kBlock, Same{});
  StoreFour(destination, 2 * kBlock, b0);
  StoreFour(destination + kGroup, 2 * kBlock, b1);
  StoreFour(destination + tail, 2 * kBlock, b2);
  StoreFour(destination + tail + kGroup, 2 * kBlock, b3);
}

// A short piece. The strings may overlap, as everything is loaded before anything is stored.
VEK_INLINE void MoveShort(const uint8_t* source, uint8_t* destination, int32_t length) {
  if (length < kBlock) {
    MoveFew(source, destination, length);
  } else if (length <= kGroup) {
    TransformShort(source, destination, length, Same{});
  } else if (length <= 2 * kGroup) {
    TransformMedium(source, destination, length, Same{});
  } else {
    MoveGroups(source, destination, length);
  }
}

// Any piece. The strings may overlap.
VEK_INLINE void MovePiece(const uint8_t* source, uint8_t* destination, int32_t length) {
  if (length <= kShortPiece) {
    MoveShort(source, destination, length);
  } else {
    Move(source, destination, length);
  }
}

constexpr int32_t kCopyFrom = 1024;

// Any piece. The strings must not overlap. Where nobody asks for the cache, the move is the better
// copy: its last step is one that overlaps.
VEK_INLINE void CopyPiece(const uint8_t* source, uint8_t* destination, int32_t length,
                          CacheAnswer* cache = nullptr) {
  if (length < kCopyFrom) {
    MovePiece(source, destination, length);
  } else {
    Copy(source, destination, length, cache);
  }
}

// Any piece of a list.
VEK_INLINE void CopyVaried(const uint8_t* source, uint8_t* destination, int32_t length,
                           CacheAnswer* cache) {
  if (length < kBlock) {
    MoveFewVaried(source, destination, length);
  } else {
    CopyPiece(source, destination, length, cache);
  }
}

}  // namespace vekch::kernels

#endif
