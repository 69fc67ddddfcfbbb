// The comparisons: argument checks in front of the kernels.

#include "vekch/compare.h"

#include "frame/checks.h"
#include "strings/kernels/compare_kernels.h"

namespace vekch {
namespace {

template <class Kernel>
inline vekStatus CheckedCompare(const uint8_t* first, const uint8_t* second, int32_t length,
                                int32_t* result, int32_t resultForEmpty, Kernel kernel) {
  if (AnyNull(first, second, result)) {
    return StatusNullPointer;
  }
  if (length < 0) {
    return StatusLengthError;
  }
  *result = length == 0 ? resultForEmpty : kernel();
  return StatusNoError;
}

}  // namespace
}  // namespace vekch

vekStatus veksCompare_8u(const uint8_t* first, const uint8_t* second, int32_t length,
                         int32_t* result) noexcept {
  return vekch::CheckedCompare(first, second, length, result, 0,
                               [=] { return vekch::kernels::Compare(first, second, length); });
}

vekStatus veksCompareIgnoreCaseLatin_8u(const uint8_t* first, const uint8_t* second, int32_t length,
                                        int32_t* result) noexcept {
  return vekch::CheckedCompare(first, second, length, result, 0, [=] {
    return vekch::kernels::CompareFolded(first, second, length, 'A', 'Z', 'a' - 'A');
  });
}

vekStatus veksEqual_8u(const uint8_t* first, const uint8_t* second, int32_t length,
                       int32_t* result) noexcept {
  return vekch::CheckedCompare(first, second, length, result, 1, [=] {
    return static_cast<int32_t>(vekch::kernels::Equal(first, second, length));
  });
}
