// The comparisons: argument checks in front of the kernels, both in one function each.

#include "vekch/compare.h"

#include "frame/checks.h"
#include "strings/kernels/compare_kernels.h"

namespace vekch {
namespace {

template <class Kernel>
VEK_INLINE vekStatus CheckedCompare(const uint8_t* first, const uint8_t* second, int32_t length,
                                    int32_t* result, int32_t resultForEmpty, Kernel kernel) {
  if (AnyNull(first, second, result)) {
    return StatusNullPointer;
  }
  if (length <= 0) {
    if (length < 0) {
      return StatusLengthError;
    }
    *result = resultForEmpty;
    return StatusNoError;
  }
  *result = kernel(first, second, length);
  return StatusNoError;
}

struct CompareKernel {
  VEK_INLINE int32_t operator()(const uint8_t* first, const uint8_t* second, int32_t length) const {
    return kernels::Compare(first, second, length);
  }
};

struct CompareIgnoreCaseKernel {
  VEK_INLINE int32_t operator()(const uint8_t* first, const uint8_t* second, int32_t length) const {
    return kernels::CompareFolded(first, second, length, 'A', 'Z', 'a' - 'A');
  }
};

struct EqualKernel {
  VEK_INLINE int32_t operator()(const uint8_t* first, const uint8_t* second, int32_t length) const {
    return static_cast<int32_t>(kernels::Equal(first, second, length));
  }
};

}  // namespace
}  // namespace vekch

VEK_KERNEL vekStatus veksCompare_8u(const uint8_t* first, const uint8_t* second, int32_t length,
                                    int32_t* result) noexcept {
  return vekch::CheckedCompare(first, second, length, result, 0, vekch::CompareKernel{});
}

VEK_KERNEL vekStatus veksCompareIgnoreCaseLatin_8u(const uint8_t* first, const uint8_t* second,
                                                   int32_t length, int32_t* result) noexcept {
  return vekch::CheckedCompare(first, second, length, result, 0, vekch::CompareIgnoreCaseKernel{});
}

VEK_KERNEL vekStatus veksEqual_8u(const uint8_t* first, const uint8_t* second, int32_t length,
                                  int32_t* result) noexcept {
  return vekch::CheckedCompare(first, second, length, result, 1, vekch::EqualKernel{});
}
