// Copies and moves for pieces of a result, which are mostly short: inline, so that a short piece
// costs no call, and by two ends that overlap where the length is no power of two. That takes fewer
// branches than the steps of the block copy, which stores every byte once; pieces for which the
// steps no longer matter are left to that.

#ifndef VEKCH_STRINGS_KERNELS_PIECE_H
#define VEKCH_STRINGS_KERNELS_PIECE_H

#include "strings/kernels/block_kernels.h"
#include "strings/kernels/transform.h"

namespace vekch::kernels {

// The strings may overlap, as up to 128 bytes are loaded before one is stored; a length of 0 moves
// nothing. Longer pieces are left to `moveLong`.
template <class MoveLong>
VEK_INLINE void MovePieceOr(const uint8_t* source, uint8_t* destination, int32_t length,
                            MoveLong moveLong) {
  if (length <= kGroup) {
    if (length > 0) {
      TransformShort(source, destination, length, Same{});
    }
  } else if (length <= 2 * kGroup) {
    TransformMedium(source, destination, length, Same{});
  } else {
    moveLong(source, destination, length);
  }
}

VEK_INLINE void MovePiece(const uint8_t* source, uint8_t* destination, int32_t length) {
  MovePieceOr(source, destination, length, Move);
}

// Up to where the steps of the block copy no longer matter, its move is the better copy.
constexpr int32_t kCopyFrom = 512;

struct CopyLong {
  VEK_INLINE void operator()(const uint8_t* source, uint8_t* destination, int32_t length) const {
    if (length < kCopyFrom) {
      Move(source, destination, length);
    } else {
      Copy(source, destination, length);
    }
  }
};

// The strings must not overlap.
VEK_INLINE void CopyPiece(const uint8_t* source, uint8_t* destination, int32_t length) {
  MovePieceOr(source, destination, length, CopyLong{});
}

}  // namespace vekch::kernels

#endif
