// Comparison: a scan for the first position at which the two strings differ. The scan follows the
// block boundaries of the first string.

#include "strings/kernels/compare_kernels.h"

#include "strings/kernels/scan.h"

namespace vekch::kernels {
namespace {

struct Differs {
  static constexpr Hits kHits = Hits::kClearLanes;
  const uint8_t* first;
  const uint8_t* second;

  VEK_INLINE const uint8_t* Anchor() const { return first; }

  template <class Load>
  VEK_INLINE Block operator()(Load load, ptrdiff_t i) const {
    return load(first + i) == Unaligned(load)(second + i);
  }

  // Only the first string lies on block boundaries when the scan does.
  static VEK_INLINE AnyLoad Unaligned(AlignedLoad /*load*/) { return {}; }
  template <class Load>
  static VEK_INLINE Load Unaligned(Load load) {
    return load;
  }
};

struct DiffersFolded {
  static constexpr Hits kHits = Hits::kClearLanes;
  Differs strings;
  Folding folding;

  VEK_INLINE const uint8_t* Anchor() const { return strings.first; }

  template <class Load>
  VEK_INLINE Block operator()(Load load, ptrdiff_t i) const {
    return folding.Fold(load(strings.first + i)) ==
           folding.Fold(Differs::Unaligned(load)(strings.second + i));
  }
};

VEK_INLINE int32_t FoldByte(uint8_t byte, uint8_t lowest, uint8_t highest, uint8_t addend) {
  return byte >= lowest && byte <= highest ? static_cast<uint8_t>(byte + addend) : byte;
}

}  // namespace

VEK_KERNEL int32_t FirstDifference(const uint8_t* first, const uint8_t* second, int32_t length) {
  return FirstHit(Differs{first, second}, length);
}

VEK_KERNEL int32_t Compare(const uint8_t* first, const uint8_t* second, int32_t length) {
  const int32_t i = FirstHit(Differs{first, second}, length);
  return i < 0 ? 0 : first[i] - second[i];
}

VEK_KERNEL int32_t CompareFolded(const uint8_t* first, const uint8_t* second, int32_t length,
                                 uint8_t lowest, uint8_t highest, uint8_t addend) {
  const Folding folding = MakeFolding(lowest, highest, addend);
  const int32_t i = FirstHit(DiffersFolded{{first, second}, folding}, length);
  return i < 0 ? 0
               : FoldByte(first[i], lowest, highest, addend) -
                     FoldByte(second[i], lowest, highest, addend);
}

VEK_KERNEL bool Equal(const uint8_t* first, const uint8_t* second, int32_t length) {
  return FirstHit(Differs{first, second}, length) < 0;
}

}  // namespace vekch::kernels
