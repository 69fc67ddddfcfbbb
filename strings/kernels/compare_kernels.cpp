// SPDX-License-Identifier: MIT

// The comparison of long strings that ignores case: a scan for bytes that differ by more.

#include "strings/kernels/compare_kernels.h"

namespace vekch::kernels {
namespace {

VEK_INLINE uint64_t NonZeroBits(Block b) { return LaneBits(b == ZeroBlock()) ^ 0xFFFFU; }
VEK_INLINE bool AllZero(Block b) { return LaneBits(b == ZeroBlock()) == 0xFFFF; }

struct DiffersIgnoringCase {
  static constexpr Hits kHits = Hits::kClearLanes;
  Differs strings;

  VEK_INLINE const uint8_t* Anchor() const { return strings.first; }

  template <class Load>
  VEK_INLINE Block operator()(Load load, ptrdiff_t i) const {
    const Block a = load(strings.first + i);
    return WithoutCase(a ^ load(strings.second + i), a) == ZeroBlock();
  }
};

// The hits of four blocks at once. Most are the same to the bit, which is seen before any case is
// looked at.
VEK_INLINE uint64_t GroupBits(const DiffersIgnoringCase& probe, ptrdiff_t i) {
  const uint8_t* const first = probe.strings.first + i;
  const uint8_t* const second = probe.strings.second + i;
  const Block a0 = LoadAny(first);
  const Block a1 = LoadAny(first + kBlock);
  const Block a2 = LoadAny(first + 2 * kBlock);
  const Block a3 = LoadAny(first + 3 * kBlock);
  Block d0 = a0 ^ LoadAny(second);
  Block d1 = a1 ^ LoadAny(second + kBlock);
  Block d2 = a2 ^ LoadAny(second + 2 * kBlock);
  Block d3 = a3 ^ LoadAny(second + 3 * kBlock);
  if (AllZero((d0 | d1) | (d2 | d3))) {
    return 0;
  }
  d0 = WithoutCase(d0, a0);
  d1 = WithoutCase(d1, a1);
  d2 = WithoutCase(d2, a2);
  d3 = WithoutCase(d3, a3);
  if (__builtin_expect(AllZero((d0 | d1) | (d2 | d3)), 1)) {
    return 0;
  }
  return NonZeroBits(d0) | (NonZeroBits(d1) << 16) | (NonZeroBits(d2) << 32) |
         (NonZeroBits(d3) << 48);
}

}  // namespace

// Many strings differ at once, so the first 16 bytes are looked at by themselves.
VEK_KERNEL vekStatus CompareLongIgnoringCase(const uint8_t* first, const uint8_t* second,
                                             int32_t length, int32_t* result) {
  const DiffersIgnoringCase probe = {{first, second}};
  const uint32_t bits = HitBits<DiffersIgnoringCase>(probe(AnyLoad{}, 0));
  const int32_t i = bits != 0 ? LowestBit(bits) : FirstHit(probe, length);
  *result = i < 0 ? 0 : DifferenceOfFolded(first[i], second[i]);
  return StatusNoError;
}

}  // namespace vekch::kernels
