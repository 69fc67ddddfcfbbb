// SPDX-License-Identifier: MIT

// Strings shorter than a block, as blocks: their first and their last bytes side by side, which
// overlap where the length is no power of two.

#ifndef VEKCH_STRINGS_KERNELS_ENDS_H
#define VEKCH_STRINGS_KERNELS_ENDS_H

#include "strings/kernels/block.h"

namespace vekch::kernels {

// A single byte in the lowest lane.
VEK_INLINE Block BlockOf8(uint8_t byte) { return {_mm_cvtsi32_si128(byte)}; }
VEK_INLINE uint8_t Lane8(Block b) { return static_cast<uint8_t>(_mm_cvtsi128_si32(b.lanes)); }

// Four bytes in the lowest lanes.
VEK_INLINE Block LoadFour(const uint8_t* p) { return {_mm_cvtsi32_si128(LoadWord<int32_t>(p))}; }
VEK_INLINE Block BlockOf32(uint32_t bytes) {
  return {_mm_cvtsi32_si128(static_cast<int32_t>(bytes))};
}

// The four bytes at each of four positions.
VEK_INLINE Block FourWords(const uint8_t* p0, const uint8_t* p1, const uint8_t* p2,
                           const uint8_t* p3) {
  const auto word = [](const uint8_t* p) __attribute__((always_inline)) {
    return _mm_cvtsi32_si128(LoadWord<int32_t>(p));
  };
  return {_mm_unpacklo_epi64(_mm_unpacklo_epi32(word(p0), word(p1)),
                             _mm_unpacklo_epi32(word(p2), word(p3)))};
}

// Loads the first and the last kHalf bytes of a string of kHalf to 2 * kHalf bytes into the low
// 2 * kHalf lanes; the other lanes hold anything.
template <int32_t kHalf>
VEK_INLINE Block LoadEnds(const uint8_t* p, int32_t length) {
  const uint8_t* tail = p + length - kHalf;
  if constexpr (kHalf == 8) {
    return {_mm_unpacklo_epi64(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)),
                               _mm_loadl_epi64(reinterpret_cast<const __m128i*>(tail)))};
  } else if constexpr (kHalf == 4) {
    return {_mm_unpacklo_epi32(_mm_cvtsi32_si128(LoadWord<int32_t>(p)),
                               _mm_cvtsi32_si128(LoadWord<int32_t>(tail)))};
  } else if constexpr (kHalf == 2) {
    const uint32_t ends = LoadWord<uint16_t>(p) | (uint32_t{LoadWord<uint16_t>(tail)} << 16);
    return {_mm_cvtsi32_si128(static_cast<int32_t>(ends))};
  } else {
    static_assert(kHalf == 1);
    return {_mm_cvtsi32_si128(*p | (*tail << 8))};
  }
}

// Stores the low 2 * kHalf lanes as the first and the last kHalf bytes of such a string.
template <int32_t kHalf>
VEK_INLINE void StoreEnds(uint8_t* p, int32_t length, Block b) {
  uint8_t* tail = p + length - kHalf;
  if constexpr (kHalf == 8) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(p), b.lanes);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(tail), _mm_unpackhi_epi64(b.lanes, b.lanes));
  } else if constexpr (kHalf == 4) {
    const auto ends = static_cast<uint64_t>(_mm_cvtsi128_si64(b.lanes));
    StoreWord(p, static_cast<uint32_t>(ends));
    StoreWord(tail, static_cast<uint32_t>(ends >> 32));
  } else {
    static_assert(kHalf == 2);
    const auto ends = static_cast<uint32_t>(_mm_cvtsi128_si32(b.lanes));
    StoreWord(p, static_cast<uint16_t>(ends));
    StoreWord(tail, static_cast<uint16_t>(ends >> 16));
  }
}

}  // namespace vekch::kernels

#endif
