// Copies and moves for pieces of a result, which are mostly short: inline, so that a short piece
// costs no call, and by two ends that overlap where the length is no power of two. That takes fewer
// branches than the steps of the block copy, which stores every byte once; pieces for which the
// steps no longer matter are left to that.

#ifndef VEKCH_STRINGS_KERNELS_PIECE_H
#define VEKCH_STRINGS_KERNELS_PIECE_H

#include "strings/kernels/block_kernels.h"
#include "strings/kernels/transform.h"

namespace vekch::kernels {

constexpr int32_t kLongPiece = 512;

// The strings may overlap, as up to 128 bytes are loaded before one is stored; a length of 0 moves
// nothing.
VEK_INLINE void MovePiece(const uint8_t* source, uint8_t* destination, int32_t length) {
  if (length > 2 * kGroup) {
    Move(source, destination, length);
  } else if (length > kGroup) {
    TransformMedium(source, destination, length, Same{});
  } else if (length > 0) {
    TransformShort(source, destination, length, Same{});
  }
}

// The strings must not overlap; a length of 0 copies nothing.
VEK_INLINE void CopyPiece(const uint8_t* source, uint8_t* destination, int32_t length) {
  if (length >= kLongPiece) {
    Copy(source, destination, length);
  } else {
    MovePiece(source, destination, length);
  }
}

}  // namespace vekch::kernels

#endif
