// SPDX-License-Identifier: MIT

// The comparisons: argument checks before the kernels, both in one function each.

#include "vekch/compare.h"

#include "frame/checks.h"
#include "strings/kernels/compare_kernels.h"

namespace vekch {
namespace {

VEK_INLINE vekStatus ResultForEmpty(int32_t length, int32_t* result, int32_t resultForEmpty) {
  if (length < 0) {
    return StatusLengthError;
  }
  *result = resultForEmpty;
  return StatusNoError;
}

template <class Kernel>
VEK_INLINE vekStatus CheckedCompare(const uint8_t* first, const uint8_t* second, int32_t length,
                                    int32_t* result, int32_t resultForEmpty, Kernel kernel) {
  if (AnyNull(first, second, result)) {
    return StatusNullPointer;
  }
  if (length <= 0) {
    return ResultForEmpty(length, result, resultForEmpty);
  }
  *result = kernel(first, second, length);
  return StatusNoError;
}

struct CompareKernel {
  VEK_INLINE int32_t operator()(const uint8_t* first, const uint8_t* second, int32_t length) const {
    return kernels::Compare(first, second, length);
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
  using namespace vekch;
  if (AnyNull(first, second, result)) {
    return StatusNullPointer;
  }
  if (length > 0 && length < kernels::kBlock) {
    *result = kernels::CompareShortIgnoringCase(first, second, length);
    return StatusNoError;
  }
  return length > 0 ? kernels::CompareLongIgnoringCase(first, second, length, result)
                    : ResultForEmpty(length, result, 0);
}

VEK_KERNEL vekStatus veksEqual_8u(const uint8_t* first, const uint8_t* second, int32_t length,
                                  int32_t* result) noexcept {
  return vekch::CheckedCompare(first, second, length, result, 1, vekch::EqualKernel{});
}
