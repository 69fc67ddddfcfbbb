// SPDX-License-Identifier: MIT

// The 16-byte block and the few operations on it that every kernel is written in. What only some of
// them need lies beside it (ends.h, byte_range.h, lanes.h, store_steps.h), and no other file names
// an instruction; nothing here needs more than SSE3.

#ifndef VEKCH_STRINGS_KERNELS_BLOCK_H
#define VEKCH_STRINGS_KERNELS_BLOCK_H

#include <emmintrin.h>
#include <stddef.h>
#include <stdint.h>

#include "strings/kernels/attributes.h"

namespace vekch::kernels {

constexpr int32_t kBlock = 16;
constexpr int32_t kGroup = 4 * kBlock;  // what the kernels' main loops take in one step

// 16 bytes seen as elements of one size. What does not depend on the size serves them all.
template <class Element>
struct Lanes {
  __m128i lanes;
};

using Block = Lanes<uint8_t>;

template <class Element>
VEK_INLINE Lanes<Element> operator&(Lanes<Element> a, Lanes<Element> b) {
  return {_mm_and_si128(a.lanes, b.lanes)};
}

template <class Element>
VEK_INLINE Lanes<Element> operator|(Lanes<Element> a, Lanes<Element> b) {
  return {_mm_or_si128(a.lanes, b.lanes)};
}

template <class Element>
VEK_INLINE Lanes<Element> operator^(Lanes<Element> a, Lanes<Element> b) {
  return {_mm_xor_si128(a.lanes, b.lanes)};
}

// The bits of a where the mask's are clear.
template <class Element>
VEK_INLINE Lanes<Element> Without(Lanes<Element> a, Lanes<Element> mask) {
  return {_mm_andnot_si128(mask.lanes, a.lanes)};
}

// The bits of a where the mask's are set, those of b where they are clear.
template <class Element>
VEK_INLINE Lanes<Element> Select(Lanes<Element> mask, Lanes<Element> a, Lanes<Element> b) {
  return ((a ^ b) & mask) ^ b;
}

// A lane of a comparison's result has all its bits set where it holds and clear where it does not.
VEK_INLINE Block operator==(Block a, Block b) { return {_mm_cmpeq_epi8(a.lanes, b.lanes)}; }
VEK_INLINE Block operator+(Block a, Block b) { return {_mm_add_epi8(a.lanes, b.lanes)}; }

VEK_INLINE Block operator-(Block a, Block b) { return {_mm_sub_epi8(a.lanes, b.lanes)}; }

// The lower of two bytes, as unsigned ones.
VEK_INLINE Block Lower(Block a, Block b) { return {_mm_min_epu8(a.lanes, b.lanes)}; }

VEK_INLINE Block Splat(uint8_t value) { return {_mm_set1_epi8(static_cast<char>(value))}; }

// Splats each of the low kCount lanes of a block. Each unpacking repeats what the one before it
// gave, so that four bytes of a kind are left to be spread over a block:
//
//   abcd efgh ijkl mnop -> aabb ccdd eeff gghh -> aaaa bbbb cccc dddd -> aaaa aaaa aaaa aaaa
template <int32_t kCount>
VEK_INLINE void SplatLanes(Block b, Block* splats) {
  const __m128i twice[2] = {_mm_unpacklo_epi8(b.lanes, b.lanes),
                            _mm_unpackhi_epi8(b.lanes, b.lanes)};
  for (int32_t i = 0; i < kCount; i += 4) {
    const __m128i pairs = twice[i / 8];
    const __m128i four =
        i % 8 == 0 ? _mm_unpacklo_epi16(pairs, pairs) : _mm_unpackhi_epi16(pairs, pairs);
    splats[i].lanes = _mm_shuffle_epi32(four, 0x00);
    splats[i + 1].lanes = _mm_shuffle_epi32(four, 0x55);
    if (kCount > 2) {
      splats[i + 2].lanes = _mm_shuffle_epi32(four, 0xAA);
      splats[i + 3].lanes = _mm_shuffle_epi32(four, 0xFF);
    }
  }
}

VEK_INLINE Block ZeroBlock() { return {_mm_setzero_si128()}; }

VEK_INLINE uint32_t SumOfBytes(Block b) {
  const __m128i halves = _mm_sad_epu8(b.lanes, _mm_setzero_si128());
  return static_cast<uint32_t>(
      _mm_cvtsi128_si32(_mm_add_epi64(halves, _mm_unpackhi_epi64(halves, halves))));
}

// One bit per byte, the lowest for the byte at the lowest address.
template <class Element>
VEK_INLINE uint32_t LaneBits(Lanes<Element> b) {
  return static_cast<uint32_t>(_mm_movemask_epi8(b.lanes));
}

VEK_INLINE int32_t LowestBit(uint64_t bits) { return __builtin_ctzll(bits); }
VEK_INLINE int32_t HighestBit(uint64_t bits) { return 63 - __builtin_clzll(bits); }

VEK_INLINE Block LoadAny(const uint8_t* p) {
  return {_mm_loadu_si128(reinterpret_cast<const __m128i*>(p))};
}

VEK_INLINE Block LoadAligned(const uint8_t* p) {
  return {_mm_load_si128(reinterpret_cast<const __m128i*>(p))};
}

VEK_INLINE void StoreAny(uint8_t* p, Block b) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(p), b.lanes);
}

VEK_INLINE void StoreAligned(uint8_t* p, Block b) {
  _mm_store_si128(reinterpret_cast<__m128i*>(p), b.lanes);
}

// What is stored before and after it is stored in this order.
VEK_INLINE void KeepOrder() { __asm__ volatile("" ::: "memory"); }

// Number of bytes by which p lies above the boundary of kBoundary bytes at or below it.
template <int32_t kBoundary = kBlock>
VEK_INLINE ptrdiff_t Misalignment(const void* p) {
  return static_cast<ptrdiff_t>(reinterpret_cast<uintptr_t>(p) % kBoundary);
}

template <class Word>
VEK_INLINE Word LoadWord(const uint8_t* p) {
  Word word;
  __builtin_memcpy(&word, p, sizeof word);
  return word;
}

template <class Word>
VEK_INLINE void StoreWord(uint8_t* p, Word word) {
  __builtin_memcpy(p, &word, sizeof word);
}

}  // namespace vekch::kernels

#endif
