// Case mapping: a transform that adds a value to the bytes of a range. The copying and the in-place
// form share a kernel. Each direction has its own, so that range and value are constants in memory:
// spreading arguments over the lanes costs more than mapping a short string.

#include "strings/kernels/case_kernels.h"

#include "strings/kernels/transform.h"

namespace vekch::kernels {
namespace {

VEK_INLINE void FoldAll(const uint8_t* source, uint8_t* destination, int32_t length,
                        const Folding& folding) {
  const auto fold = [&](Block b) __attribute__((always_inline)) { return folding.Fold(b); };
  Transform(source, destination, length, fold);
}

}  // namespace

VEK_KERNEL void LowercaseLatin(const uint8_t* source, uint8_t* destination, int32_t length) {
  FoldAll(source, destination, length, MakeFolding('A', 'Z', 'a' - 'A'));
}

VEK_KERNEL void UppercaseLatin(const uint8_t* source, uint8_t* destination, int32_t length) {
  FoldAll(source, destination, length, MakeFolding('a', 'z', static_cast<uint8_t>('A' - 'a')));
}

}  // namespace vekch::kernels
