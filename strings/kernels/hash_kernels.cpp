// SPDX-License-Identifier: MIT

// The multiply-31 hash of long strings, in blocks, and of strings that the hash overlaps.

#include "strings/kernels/hash_kernels.h"

#include "strings/kernels/lanes.h"

namespace vekch::kernels {
namespace {

// The hashes of the four quarters of a block, in its quads.
template <class Element>
VEK_INLINE Quads HashQuarters(Block b) {
  const Units units = As<Units>(b);
  if constexpr (sizeof(Element) == 1) {
    const Units pairs = (units & SplatUnit(0xFF)) * SplatUnit(31) + (units >> 8);
    return MultiplyAdd(pairs, 31 * 31, 1);
  } else {
    // The multiplication takes its lanes as signed: they are moved down by 2^15, the sums back up.
    return MultiplyAdd(units ^ SplatUnit(0x8000), 31, 1) + SplatQuad(32U << 15);
  }
}

// The hashes of the two halves of a block, in their low quads; the high quads hold anything, here
// and below.
template <class Element>
VEK_INLINE Halves HashHalves(Block b) {
  const Quads quarters = HashQuarters<Element>(b);
  constexpr int32_t kPerQuarter = 4 / sizeof(Element);
  return MultiplyEven(quarters, SplatQuad(Power(31, kPerQuarter))) + (As<Halves>(quarters) >> 32);
}

// Two blocks a step: each lane sums one half of every block, as a polynomial in the power of 31 for
// a whole block, and at the end the lanes are joined as the halves of one block. Before the first
// step the string's front, what the steps leave over, is the lower half of an earlier block.
template <class Element>
VEK_INLINE uint32_t HashBlocks(const uint8_t* p, int32_t count) {
  constexpr int32_t kPerBlock = kBlock / sizeof(Element);
  const uint8_t* end = p + count * static_cast<ptrdiff_t>(sizeof(Element));
  const int32_t front = count % (2 * kPerBlock);
  const uint32_t h = front == 0 ? 0 : HashShortMultiply31<Element>(p, front);
  const Quads oneBlock = SplatQuad(Power(31, kPerBlock));
  const Quads twoBlocks = SplatQuad(Power(31, 2 * kPerBlock));
  Halves sums = LowHalves(SplatHalf(0), SplatHalf(h));
  for (p += front * static_cast<ptrdiff_t>(sizeof(Element)); p < end; p += kMultiply31Step) {
    const Halves first = HashHalves<Element>(LoadAny(p));
    const Halves second = HashHalves<Element>(LoadAny(p + kBlock));
    sums = MultiplyEven(As<Quads>(sums), twoBlocks) + MultiplyEven(As<Quads>(first), oneBlock) +
           second;
  }
  return static_cast<uint32_t>(Multiply31::Join<kPerBlock / 2>(LowHalf(sums), HighHalf(sums)));
}

template <class Element>
VEK_INLINE vekStatus StoreEach(const uint8_t* p, int32_t count, uint8_t* hash) {
  uint32_t h = 0;
  StoreWord(hash, h);
  for (int32_t i = 0; i < count; ++i, p += sizeof(Element)) {
    h = h * 31 + LoadWord<Element>(p);
    StoreWord(hash, h);
  }
  return StatusNoError;
}

}  // namespace

VEK_KERNEL vekStatus Multiply31Bytes(const uint8_t* string, int32_t count, uint8_t* hash) {
  StoreWord(hash, HashBlocks<uint8_t>(string, count));
  return StatusNoError;
}

VEK_KERNEL vekStatus Multiply31Units(const uint8_t* string, int32_t count, uint8_t* hash) {
  StoreWord(hash, HashBlocks<uint16_t>(string, count));
  return StatusNoError;
}

VEK_KERNEL vekStatus StoreEachMultiply31Bytes(const uint8_t* string, int32_t count, uint8_t* hash) {
  return StoreEach<uint8_t>(string, count, hash);
}

VEK_KERNEL vekStatus StoreEachMultiply31Units(const uint8_t* string, int32_t count, uint8_t* hash) {
  return StoreEach<uint16_t>(string, count, hash);
}

}  // namespace vekch::kernels
