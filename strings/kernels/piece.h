// The copy for pieces of a result, which are mostly short: inline, so that a short piece costs no
// call, and by the two ends that overlap where its length is no power of two. That takes fewer
// branches than the block copy, which stores every byte once; long pieces are left to that.

#ifndef VEKCH_STRINGS_KERNELS_PIECE_H
#define VEKCH_STRINGS_KERNELS_PIECE_H

#include "strings/kernels/block_kernels.h"
#include "strings/kernels/transform.h"

namespace vekch::kernels {

// The strings must not overlap; a length of 0 copies nothing.
VEK_INLINE void CopyPiece(const uint8_t* source, uint8_t* destination, int32_t length) {
  if (length > 4 * kBlock) {
    Copy(source, destination, length);
  } else if (length > 0) {
    TransformShort(source, destination, length, Same{});
  }
}

}  // namespace vekch::kernels

#endif
