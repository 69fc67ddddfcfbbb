// SPDX-License-Identifier: MIT

// Bytes and wider elements moved about in a block, and arithmetic on elements of 16, 32 and 64
// bits. Element 0 lies at the lowest address; a result wraps in its element.

#ifndef VEKCH_STRINGS_KERNELS_LANES_H
#define VEKCH_STRINGS_KERNELS_LANES_H

#include "strings/kernels/block.h"

namespace vekch::kernels {

using Units = Lanes<uint16_t>;
using Quads = Lanes<uint32_t>;
using Halves = Lanes<uint64_t>;

// The same bits seen as other elements.
template <class To, class From>
VEK_INLINE To As(From from) {
  return {from.lanes};
}

// ---- Bytes.

// Compared as signed ones, for which 0x80 is the lowest.
VEK_INLINE Block SignedBelow(Block a, Block b) { return {_mm_cmplt_epi8(a.lanes, b.lanes)}; }

// Every byte's bits moved, zeros moved in.
template <int kCount>
VEK_INLINE Block BitsUp(Block b) {
  return Block{_mm_slli_epi16(b.lanes, kCount)} & Splat(static_cast<uint8_t>(0xFF << kCount));
}

template <int kCount>
VEK_INLINE Block BitsDown(Block b) {
  return Block{_mm_srli_epi16(b.lanes, kCount)} & Splat(0xFF >> kCount);
}

// The bytes moved to higher or to lower addresses, zeros moved in.
template <int kCount>
VEK_INLINE Block LanesUp(Block b) {
  return {_mm_slli_si128(b.lanes, kCount)};
}

template <int kCount>
VEK_INLINE Block LanesDown(Block b) {
  return {_mm_srli_si128(b.lanes, kCount)};
}

// Elements of a and b in turn, from the low or the high halves of both.
VEK_INLINE Block InterleaveLow(Block a, Block b) { return {_mm_unpacklo_epi8(a.lanes, b.lanes)}; }
VEK_INLINE Block InterleaveHigh(Block a, Block b) { return {_mm_unpackhi_epi8(a.lanes, b.lanes)}; }
VEK_INLINE Units InterleaveLow(Units a, Units b) { return {_mm_unpacklo_epi16(a.lanes, b.lanes)}; }
VEK_INLINE Units InterleaveHigh(Units a, Units b) { return {_mm_unpackhi_epi16(a.lanes, b.lanes)}; }

// ---- 16 bits.

VEK_INLINE Units SplatUnit(uint16_t value) { return {_mm_set1_epi16(static_cast<int16_t>(value))}; }

VEK_INLINE Units operator==(Units a, Units b) { return {_mm_cmpeq_epi16(a.lanes, b.lanes)}; }
VEK_INLINE Units operator+(Units a, Units b) { return {_mm_add_epi16(a.lanes, b.lanes)}; }
VEK_INLINE Units operator*(Units a, Units b) { return {_mm_mullo_epi16(a.lanes, b.lanes)}; }
VEK_INLINE Units operator<<(Units u, int count) { return {_mm_slli_epi16(u.lanes, count)}; }
VEK_INLINE Units operator>>(Units u, int count) { return {_mm_srli_epi16(u.lanes, count)}; }

VEK_INLINE Units SwapBytes(Units u) { return (u << 8) | (u >> 8); }

// Every unit at an even position, there and at the odd position that follows.
VEK_INLINE Units RepeatEven(Units u) {
  return {_mm_shufflehi_epi16(_mm_shufflelo_epi16(u.lanes, 0xA0), 0xA0)};
}

// The units of a, then those of b, as bytes; a unit must be below 0x100.
VEK_INLINE Block Narrow(Units a, Units b) { return {_mm_packus_epi16(a.lanes, b.lanes)}; }

// ---- 32 bits.

VEK_INLINE Quads SplatQuad(uint32_t value) { return {_mm_set1_epi32(static_cast<int32_t>(value))}; }

VEK_INLINE Quads operator+(Quads a, Quads b) { return {_mm_add_epi32(a.lanes, b.lanes)}; }
VEK_INLINE Quads operator<<(Quads q, int count) { return {_mm_slli_epi32(q.lanes, count)}; }

// Even unit * even + odd unit * odd, of signed units.
VEK_INLINE Quads MultiplyAdd(Units u, int16_t even, int16_t odd) {
  const int32_t both = static_cast<uint16_t>(even) | (odd * 0x10000);
  return {_mm_madd_epi16(u.lanes, _mm_set1_epi32(both))};
}

// The quads at two positions, in the low half.
VEK_INLINE Quads LoadQuads(const uint8_t* p, const uint8_t* q) {
  return {_mm_unpacklo_epi32(_mm_cvtsi32_si128(LoadWord<int32_t>(p)),
                             _mm_cvtsi32_si128(LoadWord<int32_t>(q)))};
}

// The upper 16 bits of the quads of a, then of those of b.
VEK_INLINE Units HighUnits(Quads a, Quads b) {
  return {_mm_packs_epi32(_mm_srai_epi32(a.lanes, 16), _mm_srai_epi32(b.lanes, 16))};
}

// ---- 64 bits.

VEK_INLINE Halves SplatHalf(uint64_t half) { return {_mm_set1_epi64x(static_cast<int64_t>(half))}; }

VEK_INLINE Halves operator+(Halves a, Halves b) { return {_mm_add_epi64(a.lanes, b.lanes)}; }
VEK_INLINE Halves operator<<(Halves h, int count) { return {_mm_slli_epi64(h.lanes, count)}; }
VEK_INLINE Halves operator>>(Halves h, int count) { return {_mm_srli_epi64(h.lanes, count)}; }

// The products of the even quads; the odd ones count for nothing.
VEK_INLINE Halves MultiplyEven(Quads a, Quads b) { return {_mm_mul_epu32(a.lanes, b.lanes)}; }

// ---- Halves of any block.

template <class Element>
VEK_INLINE Lanes<Element> LowHalves(Lanes<Element> a, Lanes<Element> b) {
  return {_mm_unpacklo_epi64(a.lanes, b.lanes)};
}

template <class Element>
VEK_INLINE Lanes<Element> HighHalves(Lanes<Element> a, Lanes<Element> b) {
  return {_mm_unpackhi_epi64(a.lanes, b.lanes)};
}

template <class Element>
VEK_INLINE uint64_t LowHalf(Lanes<Element> b) {
  return static_cast<uint64_t>(_mm_cvtsi128_si64(b.lanes));
}

template <class Element>
VEK_INLINE uint64_t HighHalf(Lanes<Element> b) {
  return LowHalf(HighHalves(b, b));
}

VEK_INLINE Block LoadHalf(const uint8_t* p) {
  return {_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p))};
}

template <class Element>
VEK_INLINE void StoreLowHalf(uint8_t* p, Lanes<Element> b) {
  _mm_storel_epi64(reinterpret_cast<__m128i*>(p), b.lanes);
}

template <class Element>
VEK_INLINE void StoreHighHalf(uint8_t* p, Lanes<Element> b) {
  _mm_storeh_pd(reinterpret_cast<double*>(p), _mm_castsi128_pd(b.lanes));
}

}  // namespace vekch::kernels

#endif
