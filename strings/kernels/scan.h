// SPDX-License-Identifier: MIT

// The shape that every search and every comparison shares: find the first, or the last, position
// of a string at which something is hit.
//
//   up to 64 bytes   the string's two ends, overlapping where it is not a power of two long
//   beyond           the 64 bytes where the scan starts; then 64 bytes a step, in long strings on
//                    boundaries of 64; then the 64 bytes where it ends, overlapping what was seen
//
// An overlap is harmless: bytes in it are tested twice, and a byte hit the second time would have
// been reported the first time. No byte outside the string is read.
//
// What is looked for is a Probe:
//
//   static constexpr Hits kHits       whether its result's set or clear lanes are the hits
//   const uint8_t* Anchor() const     the string whose boundaries the scan follows
//   Block operator()(load, i) const   the result for the bytes from position i on; every string
//                                     that the probe looks at is read as load(string + i)

#ifndef VEKCH_STRINGS_KERNELS_SCAN_H
#define VEKCH_STRINGS_KERNELS_SCAN_H

#include "strings/kernels/ends.h"

namespace vekch::kernels {

// Strings longer than this pay for a further step with loads that cross no boundary of 64.
constexpr int32_t kAlignFrom = 4 * kGroup;

enum class Hits { kSetLanes, kClearLanes };

struct AnyLoad {
  VEK_INLINE Block operator()(const uint8_t* p) const { return LoadAny(p); }
};

// The two ends of a string together, see LoadEnds.
template <int32_t kHalf>
struct EndsLoad {
  int32_t length;

  VEK_INLINE Block operator()(const uint8_t* p) const { return LoadEnds<kHalf>(p, length); }
};

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
template <class Probe>
VEK_INLINE uint64_t GroupBits(const Probe& probe, ptrdiff_t i) {
  const Block r0 = probe(AnyLoad{}, i);
  const Block r1 = probe(AnyLoad{}, i + kBlock);
  const Block r2 = probe(AnyLoad{}, i + 2 * kBlock);
  const Block r3 = probe(AnyLoad{}, i + 3 * kBlock);
  const Block any = Merge<Probe>(Merge<Probe>(r0, r1), Merge<Probe>(r2, r3));
  if (__builtin_expect(HitBits<Probe>(any) == 0, 1)) {
    return 0;
  }
  return HitBits<Probe>(r0) | (uint64_t{HitBits<Probe>(r1)} << 16) |
         (uint64_t{HitBits<Probe>(r2)} << 32) | (uint64_t{HitBits<Probe>(r3)} << 48);
}

// Hits in a string of kHalf to 2 * kHalf bytes, below 16 of one byte less: those of its last kHalf
// bytes are shifted to their positions after those of the first.
template <int32_t kHalf, class Probe>
VEK_INLINE uint64_t EndsBits(const Probe& probe, int32_t length) {
  const int32_t tail = length - kHalf;
  if constexpr (kHalf == 32) {
    const auto pair = [&](ptrdiff_t i) __attribute__((always_inline)) {
      return HitBits<Probe>(probe(AnyLoad{}, i)) |
             (uint64_t{HitBits<Probe>(probe(AnyLoad{}, i + kBlock))} << 16);
    };
    return pair(0) | (pair(tail) << tail);
  } else if constexpr (kHalf == kBlock) {
    return HitBits<Probe>(probe(AnyLoad{}, 0)) |
           (uint64_t{HitBits<Probe>(probe(AnyLoad{}, tail))} << tail);
  } else {
    constexpr uint32_t kLanes = (1U << kHalf) - 1;
    const uint32_t bits = HitBits<Probe>(probe(EndsLoad<kHalf>{length}, 0));
    return (bits & kLanes) | (((bits >> kHalf) & kLanes) << tail);
  }
}

// Calls `use` with the hits in a string of 1 to 15 bytes. Each size has its own way out: with a
// common one, much of the time would go into jumps.
template <class Probe, class Use>
VEK_INLINE auto UseBitsOfFew(const Probe& probe, int32_t length, Use use) {
  if (length >= 8) {
    return use(EndsBits<8>(probe, length));
  }
  if (length >= 4) {
    return use(EndsBits<4>(probe, length));
  }
  if (length >= 2) {
    return use(EndsBits<2>(probe, length));
  }
  return use(EndsBits<1>(probe, length));
}

// The same for a string of 1 to 64 bytes.
template <class Probe, class Use>
VEK_INLINE auto UseBitsOfShort(const Probe& probe, int32_t length, Use use) {
  if (length < kBlock) {
    return UseBitsOfFew(probe, length, use);
  }
  if (length <= 2 * kBlock) {
    return use(EndsBits<16>(probe, length));
  }
  return use(EndsBits<32>(probe, length));
}

struct LowestHit {
  VEK_INLINE int32_t operator()(uint64_t bits) const { return bits == 0 ? -1 : LowestBit(bits); }
};

struct HighestHit {
  VEK_INLINE int32_t operator()(uint64_t bits) const { return bits == 0 ? -1 : HighestBit(bits); }
};

// Lowest position that is hit in a string of `length` bytes, at least one; -1 if there is none.
template <class Probe>
VEK_INLINE int32_t FirstHit(const Probe& probe, int32_t length) {
  if (length <= kGroup) {
    return UseBitsOfShort(probe, length, LowestHit{});
  }
  if (const uint64_t bits = GroupBits(probe, 0); bits != 0) {
    return LowestBit(bits);
  }
  const ptrdiff_t tail = length - kGroup;
  ptrdiff_t i = kGroup;
  if (length > kAlignFrom) {
    i -= Misalignment<kGroup>(probe.Anchor());
  }
  for (; i < tail; i += kGroup) {
    if (const uint64_t bits = GroupBits(probe, i); bits != 0) {
      return static_cast<int32_t>(i) + LowestBit(bits);
    }
  }
  const uint64_t bits = GroupBits(probe, tail);
  return bits == 0 ? -1 : static_cast<int32_t>(tail) + LowestBit(bits);
}

// Highest position that is hit, the mirror image of FirstHit.
template <class Probe>
VEK_INLINE int32_t LastHit(const Probe& probe, int32_t length) {
  if (length <= kGroup) {
    return UseBitsOfShort(probe, length, HighestHit{});
  }
  if (const uint64_t bits = GroupBits(probe, length - kGroup); bits != 0) {
    return length - kGroup + HighestBit(bits);
  }
  ptrdiff_t i = length - 2 * kGroup;
  if (length > kAlignFrom) {
    i += kGroup - 1 - Misalignment<kGroup>(probe.Anchor() + length - 1);
  }
  for (; i > 0; i -= kGroup) {
    if (const uint64_t bits = GroupBits(probe, i); bits != 0) {
      return static_cast<int32_t>(i) + HighestBit(bits);
    }
  }
  return HighestHit{}(GroupBits(probe, 0));
}

enum class Direction { kForward, kBackward };

template <Direction kDirection, class Probe>
VEK_INLINE int32_t ScanFor(const Probe& probe, int32_t length) {
  return kDirection == Direction::kForward ? FirstHit(probe, length) : LastHit(probe, length);
}

}  // namespace vekch::kernels

#endif
