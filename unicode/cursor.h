// SPDX-License-Identifier: MIT

// How far a conversion has come: the rest of the source and the rest of the destination's room, in
// bytes on both sides.

#ifndef VEKCH_UNICODE_CURSOR_H
#define VEKCH_UNICODE_CURSOR_H

#include "strings/kernels/block.h"

namespace vekch::kernels {

struct Cursor {
  const uint8_t* from;
  const uint8_t* fromEnd;
  uint8_t* to;
  uint8_t* toEnd;

  VEK_INLINE ptrdiff_t Left() const { return fromEnd - from; }
  VEK_INLINE ptrdiff_t Room() const { return toEnd - to; }

  VEK_INLINE void Advance(ptrdiff_t read, ptrdiff_t written) {
    from += read;
    to += written;
  }
};

constexpr ptrdiff_t kUnit = 2;  // bytes

template <bool kSwapped>
VEK_INLINE uint32_t LoadUnit(const uint8_t* p) {
  const auto unit = LoadWord<uint16_t>(p);
  return kSwapped ? __builtin_bswap16(unit) : unit;
}

template <bool kSwapped>
VEK_INLINE void StoreUnit(uint8_t* p, uint32_t value) {
  const auto unit = static_cast<uint16_t>(value);
  StoreWord<uint16_t>(p, kSwapped ? __builtin_bswap16(unit) : unit);
}

}  // namespace vekch::kernels

#endif
