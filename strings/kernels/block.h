// The 16-byte block and the few operations on it that the kernels are written in. Everything that
// names an instruction stands in this file; nothing here needs more than SSE3.

#ifndef VEKCH_STRINGS_KERNELS_BLOCK_H
#define VEKCH_STRINGS_KERNELS_BLOCK_H

#include <emmintrin.h>
#include <stddef.h>
#include <stdint.h>

// Kernels have a code section of their own, so that they lie together in memory. What they are
// made of is always inlined: it would otherwise be placed in the ordinary code section.
#define VEK_KERNEL __attribute__((section("VEKCODE")))
#define VEK_INLINE inline __attribute__((always_inline))

namespace vekch::kernels {

constexpr int32_t kBlock = 16;
constexpr int32_t kGroup = 4 * kBlock;  // what the kernels' main loops take in one step

struct Block {
  __m128i lanes;
};

// A lane of a comparison's result is 0xFF where it holds and 0 where it does not.
VEK_INLINE Block operator==(Block a, Block b) { return {_mm_cmpeq_epi8(a.lanes, b.lanes)}; }
VEK_INLINE Block operator&(Block a, Block b) { return {_mm_and_si128(a.lanes, b.lanes)}; }
VEK_INLINE Block operator|(Block a, Block b) { return {_mm_or_si128(a.lanes, b.lanes)}; }
VEK_INLINE Block operator^(Block a, Block b) { return {_mm_xor_si128(a.lanes, b.lanes)}; }
VEK_INLINE Block operator+(Block a, Block b) { return {_mm_add_epi8(a.lanes, b.lanes)}; }

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

// One bit per lane, the lowest for the lane at the lowest address.
VEK_INLINE uint32_t LaneBits(Block b) { return static_cast<uint32_t>(_mm_movemask_epi8(b.lanes)); }

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

// Bytes compared as signed ones, for which 0x80 is the lowest.
VEK_INLINE Block SignedBelow(Block a, Block b) { return {_mm_cmplt_epi8(a.lanes, b.lanes)}; }

// The lanes of a where the mask is set, those of b where it is clear.
VEK_INLINE Block Select(Block mask, Block a, Block b) { return ((a ^ b) & mask) ^ b; }

// Every byte's bits moved, zeros moved in.
template <int kCount>
VEK_INLINE Block BitsUp(Block b) {
  return Block{_mm_slli_epi16(b.lanes, kCount)} & Splat(static_cast<uint8_t>(0xFF << kCount));
}

template <int kCount>
VEK_INLINE Block BitsDown(Block b) {
  return Block{_mm_srli_epi16(b.lanes, kCount)} & Splat(0xFF >> kCount);
}

// The lanes moved to higher or to lower addresses, zeros moved in.
template <int kCount>
VEK_INLINE Block LanesUp(Block b) {
  return {_mm_slli_si128(b.lanes, kCount)};
}

template <int kCount>
VEK_INLINE Block LanesDown(Block b) {
  return {_mm_srli_si128(b.lanes, kCount)};
}

// Lanes of a and b in turn, from the low or the high halves of both.
VEK_INLINE Block InterleaveLow(Block a, Block b) { return {_mm_unpacklo_epi8(a.lanes, b.lanes)}; }
VEK_INLINE Block InterleaveHigh(Block a, Block b) { return {_mm_unpackhi_epi8(a.lanes, b.lanes)}; }

// A block seen as two halves of eight bytes.
VEK_INLINE Block LowHalves(Block a, Block b) { return {_mm_unpacklo_epi64(a.lanes, b.lanes)}; }
VEK_INLINE Block HighHalves(Block a, Block b) { return {_mm_unpackhi_epi64(a.lanes, b.lanes)}; }

template <int kBits>
VEK_INLINE Block HalvesDown(Block b) {
  return {_mm_srli_epi64(b.lanes, kBits)};
}

template <int kBits>
VEK_INLINE Block HalvesUp(Block b) {
  return {_mm_slli_epi64(b.lanes, kBits)};
}

VEK_INLINE Block SplatHalf(uint64_t half) { return {_mm_set1_epi64x(static_cast<int64_t>(half))}; }

VEK_INLINE uint64_t LowHalf(Block b) { return static_cast<uint64_t>(_mm_cvtsi128_si64(b.lanes)); }
VEK_INLINE uint64_t HighHalf(Block b) { return LowHalf(HighHalves(b, b)); }

VEK_INLINE Block LoadHalf(const uint8_t* p) {
  return {_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p))};
}

VEK_INLINE void StoreLowHalf(uint8_t* p, Block b) {
  _mm_storel_epi64(reinterpret_cast<__m128i*>(p), b.lanes);
}

VEK_INLINE void StoreHighHalf(uint8_t* p, Block b) {
  _mm_storeh_pd(reinterpret_cast<double*>(p), _mm_castsi128_pd(b.lanes));
}

// Stores past the cache; p is aligned. StoreFence orders such stores before later ones.
VEK_INLINE void StoreStreaming(uint8_t* p, Block b) {
  _mm_stream_si128(reinterpret_cast<__m128i*>(p), b.lanes);
}

VEK_INLINE void StoreFence() { _mm_sfence(); }

// Stores zero to words of 8 bytes by the processor's own loop. It takes long to begin, but then
// stores more in a cycle than a loop over blocks can: from 4 KiB on it was the faster one.
VEK_INLINE void ClearWords(void* first, uint64_t count) {
  __asm__ volatile("rep stosq" : "+D"(first), "+c"(count) : "a"(uint64_t{0}) : "memory");
}

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

// A single byte in the lowest lane.
VEK_INLINE Block BlockOf8(uint8_t byte) { return {_mm_cvtsi32_si128(byte)}; }
VEK_INLINE uint8_t Lane8(Block b) { return static_cast<uint8_t>(_mm_cvtsi128_si32(b.lanes)); }

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

// Arithmetic on wider lanes. Lane 0 lies at the lowest address; a result wraps in its lane.
VEK_INLINE Block Splat16(uint16_t value) { return {_mm_set1_epi16(static_cast<int16_t>(value))}; }
VEK_INLINE Block Splat32(uint32_t value) { return {_mm_set1_epi32(static_cast<int32_t>(value))}; }
VEK_INLINE Block Add16(Block a, Block b) { return {_mm_add_epi16(a.lanes, b.lanes)}; }
VEK_INLINE Block Add32(Block a, Block b) { return {_mm_add_epi32(a.lanes, b.lanes)}; }
VEK_INLINE Block Add64(Block a, Block b) { return {_mm_add_epi64(a.lanes, b.lanes)}; }
VEK_INLINE Block Multiply16(Block a, Block b) { return {_mm_mullo_epi16(a.lanes, b.lanes)}; }

// The even lanes, or the odd ones, moved to the low half of lanes of twice the width.
VEK_INLINE Block EvenOf8(Block b) { return b & Splat16(0xFF); }
VEK_INLINE Block OddOf8(Block b) { return {_mm_srli_epi16(b.lanes, 8)}; }
VEK_INLINE Block OddOf32(Block b) { return HalvesDown<32>(b); }

// Even lane * even + odd lane * odd, of signed 16-bit lanes, in 32-bit lanes.
VEK_INLINE Block MultiplyAdd16(Block b, int16_t even, int16_t odd) {
  const int32_t both = static_cast<uint16_t>(even) | (odd * 0x10000);
  return {_mm_madd_epi16(b.lanes, _mm_set1_epi32(both))};
}

// The 64-bit products of the even lanes of 32 bits; the odd ones count for nothing.
VEK_INLINE Block MultiplyEven32(Block a, Block b) { return {_mm_mul_epu32(a.lanes, b.lanes)}; }

// The bytes from a lowest to a highest value, tested with one addition and one comparison: the
// addition moves the range to the top of the signed bytes, so that a member is whatever is then
// greater than the byte below the moved range. The range of all 256 bytes has no byte below it and
// can't be tested so.
struct ByteRange {
  Block shift;
  Block below;
};

VEK_INLINE ByteRange MakeRange(uint8_t lowest, uint8_t highest) {
  return {Splat(static_cast<uint8_t>(127 - highest)),
          Splat(static_cast<uint8_t>(126 - (highest - lowest)))};
}

VEK_INLINE Block InRange(Block b, const ByteRange& range) {
  return {_mm_cmpgt_epi8((b + range.shift).lanes, range.below.lanes)};
}

// Adds a value to the bytes of a range and leaves the others.
struct Folding {
  ByteRange range;
  Block addend;

  VEK_INLINE Block Fold(Block b) const { return b + (InRange(b, range) & addend); }
};

VEK_INLINE Folding MakeFolding(uint8_t lowest, uint8_t highest, uint8_t addend) {
  return {MakeRange(lowest, highest), Splat(addend)};
}

// A block seen as eight units of 16 bits.
struct Units {
  __m128i lanes;
};

VEK_INLINE Units AsUnits(Block b) { return {b.lanes}; }
VEK_INLINE Block AsBlock(Units u) { return {u.lanes}; }

VEK_INLINE Units operator==(Units a, Units b) { return {_mm_cmpeq_epi16(a.lanes, b.lanes)}; }
VEK_INLINE Units operator&(Units a, Units b) { return {_mm_and_si128(a.lanes, b.lanes)}; }
VEK_INLINE Units operator|(Units a, Units b) { return {_mm_or_si128(a.lanes, b.lanes)}; }
VEK_INLINE Units operator+(Units a, Units b) { return {_mm_add_epi16(a.lanes, b.lanes)}; }
VEK_INLINE Units operator<<(Units u, int count) { return {_mm_slli_epi16(u.lanes, count)}; }
VEK_INLINE Units operator>>(Units u, int count) { return {_mm_srli_epi16(u.lanes, count)}; }

VEK_INLINE Units SplatUnit(uint16_t value) { return {_mm_set1_epi16(static_cast<int16_t>(value))}; }

VEK_INLINE Units Select(Units mask, Units a, Units b) {
  return AsUnits(Select(AsBlock(mask), AsBlock(a), AsBlock(b)));
}

// Two bits per unit of a comparison's result.
VEK_INLINE uint32_t UnitBits(Units u) { return LaneBits(AsBlock(u)); }

VEK_INLINE Units SwapBytes(Units u) { return (u << 8) | (u >> 8); }

// Every unit at an even place, there and at the odd place that follows.
VEK_INLINE Units RepeatEven(Units u) {
  return {_mm_shufflehi_epi16(_mm_shufflelo_epi16(u.lanes, 0xA0), 0xA0)};
}

// The units of a, then those of b, as bytes; a unit must be below 0x100.
VEK_INLINE Block Narrow(Units a, Units b) { return {_mm_packus_epi16(a.lanes, b.lanes)}; }

VEK_INLINE Block InterleaveLow(Units a, Units b) { return {_mm_unpacklo_epi16(a.lanes, b.lanes)}; }
VEK_INLINE Block InterleaveHigh(Units a, Units b) { return {_mm_unpackhi_epi16(a.lanes, b.lanes)}; }

// A block seen as four quads of 32 bits.
struct Quads {
  __m128i lanes;
};

VEK_INLINE Quads AsQuads(Block b) { return {b.lanes}; }

VEK_INLINE Quads operator&(Quads a, Quads b) { return {_mm_and_si128(a.lanes, b.lanes)}; }
VEK_INLINE Quads operator|(Quads a, Quads b) { return {_mm_or_si128(a.lanes, b.lanes)}; }
VEK_INLINE Quads operator<<(Quads q, int count) { return {_mm_slli_epi32(q.lanes, count)}; }

VEK_INLINE Quads SplatQuad(uint32_t value) { return {_mm_set1_epi32(static_cast<int32_t>(value))}; }

// The upper 16 bits of the quads of a, then of those of b.
VEK_INLINE Units HighUnits(Quads a, Quads b) {
  return {_mm_packs_epi32(_mm_srai_epi32(a.lanes, 16), _mm_srai_epi32(b.lanes, 16))};
}

}  // namespace vekch::kernels

#endif
