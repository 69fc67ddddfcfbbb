// The multiply-31 hash of long strings, in blocks, and of strings that the hash overlaps.

#include "strings/kernels/hash_kernels.h"

namespace vekch::kernels {
namespace {

// The hashes of the four quarters of a block, in 32-bit lanes.
template <class Element>
VEK_INLINE Block HashQuarters(Block b) {
  if constexpr (sizeof(Element) == 1) {
    const Block pairs = Add16(Multiply16(EvenOf8(b), Splat16(31)), OddOf8(b));
    return MultiplyAdd16(pairs, 31 * 31, 1);
  } else {
    // The multiplication takes its lanes as signed: they are moved down by 2^15, the sums back up.
    return Add32(MultiplyAdd16(b ^ Splat16(0x8000), 31, 1), Splat32(32U << 15));
  }
}

// The hashes of the two halves of a block, in the low halves of 64-bit lanes; the high halves hold
// anything, here and below.
template <class Element>
VEK_INLINE Block HashHalves(Block b) {
  const Block quarters = HashQuarters<Element>(b);
  constexpr int32_t kPerQuarter = 4 / sizeof(Element);
  return Add64(MultiplyEven32(quarters, Splat32(Power(31, kPerQuarter))), OddOf32(quarters));
}

// Two blocks a step: each lane sums one half of every block, as a polynomial in the power of 31 for
// a whole block, and at the end the lanes are joined as the halves of one block. Before the first
// step the string's front, what the steps leave over, stands as the lower half of an earlier block.
template <class Element>
VEK_INLINE uint32_t HashBlocks(const uint8_t* p, int32_t count) {
  constexpr int32_t kPerBlock = kBlock / sizeof(Element);
  const uint8_t* end = p + count * static_cast<ptrdiff_t>(sizeof(Element));
  const int32_t front = count % (2 * kPerBlock);
  const uint32_t h = front == 0 ? 0 : HashShortMultiply31<Element>(p, front);
  const Block oneBlock = Splat32(Power(31, kPerBlock));
  const Block twoBlocks = Splat32(Power(31, 2 * kPerBlock));
  Block sums = LowHalves(ZeroBlock(), SplatHalf(h));
  for (p += front * static_cast<ptrdiff_t>(sizeof(Element)); p < end; p += kMultiply31Step) {
    const Block first = HashHalves<Element>(LoadAny(p));
    const Block second = HashHalves<Element>(LoadAny(p + kBlock));
    sums = Add64(MultiplyEven32(sums, twoBlocks), Add64(MultiplyEven32(first, oneBlock), second));
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
