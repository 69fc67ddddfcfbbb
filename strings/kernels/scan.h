// The shape that every search and every comparison shares: find the first, or the last, position
// of a string at which something is hit.
//
//   up to 64 bytes   the string's two ends, overlapping where it is not a power of two long
//   beyond           one block at the end where the scan starts; then 64 bytes a step on block
//                    boundaries; then the last 64 bytes, overlapping what was seen already
//
// An overlap is harmless: bytes in it are tested twice, and a byte hit the second time would have
// been reported the first time. No byte outside the string is read.
//
// What is looked for is a Probe:
//
//   static constexpr Hits kHits       whether its result's set or clear lanes are the hits
//   const uint8_t* Anchor() const     the string whose block boundaries the scan follows
//   Block operator()(load, i) const   the result for the bytes from position i on; every string
//                                     that the probe looks at is read as load(string + i)

#ifndef VEKCH_STRINGS_KERNELS_SCAN_H
#define VEKCH_STRINGS_KERNELS_SCAN_H

#include "strings/kernels/block.h"

namespace vekch::kernels {

enum class Hits { kSetLanes, kClearLanes };

struct AnyLoad {
  VEK_INLINE Block operator()(const uint8_t* p) const { return LoadAny(p); }
};

struct AlignedLoad {
  VEK_INLINE Block operator()(const uint8_t* p) const { return LoadAligned(p); }
};

// The two ends of a string together, see LoadEnds.
template <int32_t kHalf>
struct EndsLoad {
  int32_t length;

  VEK_INLINE Block operator()(const uint8_t* p) const { return LoadEnds<kHalf>(p, length); }
};

// Position in the string of a lane of its two ends.
VEK_INLINE int32_t EndsPosition(int32_t lane, int32_t half, int32_t length) {
  const int32_t position = lane < half ? lane : lane + length - 2 * half;
  if (position < 0) {
    __builtin_unreachable();  // lets a caller that asks only "is there one?" drop the arithmetic
  }
  return position;
}

template <class Probe>
VEK_INLINE uint32_t HitBits(Block result) {
  return Probe::kHits == Hits::kSetLanes ? LaneBits(result) : LaneBits(result) ^ 0xFFFFU;
}

// A block whose hits are those of both blocks together.
template <class Probe>
VEK_INLINE Block Merge(Block a, Block b) {
  return Probe::kHits == Hits::kSetLanes ? a | b : a & b;
}

// Hits among the 64 bytes from position i on.
template <class Probe, class Load>
VEK_INLINE uint64_t GroupBits(const Probe& probe, Load load, ptrdiff_t i) {
  const Block r0 = probe(load, i);
  const Block r1 = probe(load, i + kBlock);
  const Block r2 = probe(load, i + 2 * kBlock);
  const Block r3 = probe(load, i + 3 * kBlock);
  const Block any = Merge<Probe>(Merge<Probe>(r0, r1), Merge<Probe>(r2, r3));
  if (__builtin_expect(HitBits<Probe>(any) == 0, 1)) {
    return 0;
  }
  return HitBits<Probe>(r0) | (uint64_t{HitBits<Probe>(r1)} << 16) |
         (uint64_t{HitBits<Probe>(r2)} << 32) | (uint64_t{HitBits<Probe>(r3)} << 48);
}

// Hits among the ends of a string of up to 64 bytes, for each size of an end.
template <int32_t kHalf, class Probe>
VEK_INLINE uint64_t EndsBits(const Probe& probe, int32_t length) {
  if constexpr (kHalf == 32) {
    const ptrdiff_t tail = length - kHalf;
    return HitBits<Probe>(probe(AnyLoad{}, 0)) |
           (uint64_t{HitBits<Probe>(probe(AnyLoad{}, kBlock))} << 16) |
           (uint64_t{HitBits<Probe>(probe(AnyLoad{}, tail))} << 32) |
           (uint64_t{HitBits<Probe>(probe(AnyLoad{}, tail + kBlock))} << 48);
  } else if constexpr (kHalf == kBlock) {
    return HitBits<Probe>(probe(AnyLoad{}, 0)) |
           (uint64_t{HitBits<Probe>(probe(AnyLoad{}, length - kBlock))} << 16);
  } else {
    return HitBits<Probe>(probe(EndsLoad<kHalf>{length}, 0)) & ((1U << (2 * kHalf)) - 1);
  }
}

// Applies `locate`, LowestBit or HighestBit, to the hits of a string of 1 to 64 bytes.
template <class Probe, class Locate>
VEK_INLINE int32_t HitInShort(const Probe& probe, int32_t length, Locate locate) {
  uint64_t bits;
  int32_t half;
  if (length >= kBlock) {
    half = length <= 2 * kBlock ? 16 : 32;
    bits = half == 16 ? EndsBits<16>(probe, length) : EndsBits<32>(probe, length);
  } else if (length >= 4) {
    half = length >= 8 ? 8 : 4;
    bits = half == 8 ? EndsBits<8>(probe, length) : EndsBits<4>(probe, length);
  } else {
    half = length >= 2 ? 2 : 1;
    bits = half == 2 ? EndsBits<2>(probe, length) : EndsBits<1>(probe, length);
  }
  return bits == 0 ? -1 : EndsPosition(locate(bits), half, length);
}

// Lowest position that is hit in a string of `length` bytes, at least one; -1 if there is none.
template <class Probe>
VEK_INLINE int32_t FirstHit(const Probe& probe, int32_t length) {
  const auto lowest = [](uint64_t bits) { return LowestBit(bits); };
  if (length <= 4 * kBlock) {
    return HitInShort(probe, length, lowest);
  }
  if (const uint32_t bits = HitBits<Probe>(probe(AnyLoad{}, 0)); bits != 0) {
    return LowestBit(bits);
  }
  const ptrdiff_t tail = length - 4 * kBlock;
  for (ptrdiff_t i = kBlock - Misalignment(probe.Anchor()); i < tail; i += 4 * kBlock) {
    if (const uint64_t bits = GroupBits(probe, AlignedLoad{}, i); bits != 0) {
      return static_cast<int32_t>(i) + LowestBit(bits);
    }
  }
  const uint64_t bits = GroupBits(probe, AnyLoad{}, tail);
  return bits == 0 ? -1 : static_cast<int32_t>(tail) + LowestBit(bits);
}

// Highest position that is hit, the mirror image of FirstHit.
template <class Probe>
VEK_INLINE int32_t LastHit(const Probe& probe, int32_t length) {
  const auto highest = [](uint64_t bits) { return HighestBit(bits); };
  if (length <= 4 * kBlock) {
    return HitInShort(probe, length, highest);
  }
  if (const uint32_t bits = HitBits<Probe>(probe(AnyLoad{}, length - kBlock)); bits != 0) {
    return length - kBlock + HighestBit(bits);
  }
  ptrdiff_t i = length - Misalignment(probe.Anchor() + length);
  for (i -= 4 * kBlock; i > 0; i -= 4 * kBlock) {
    if (const uint64_t bits = GroupBits(probe, AlignedLoad{}, i); bits != 0) {
      return static_cast<int32_t>(i) + HighestBit(bits);
    }
  }
  const uint64_t bits = GroupBits(probe, AnyLoad{}, 0);
  return bits == 0 ? -1 : HighestBit(bits);
}

enum class Direction { kForward, kBackward };

template <Direction kDirection, class Probe>
VEK_INLINE int32_t ScanFor(const Probe& probe, int32_t length) {
  return kDirection == Direction::kForward ? FirstHit(probe, length) : LastHit(probe, length);
}

}  // namespace vekch::kernels

#endif
