// SPDX-License-Identifier: MIT

// Case mapping: argument checks before the kernels. The copying and the in-place forms differ
// in nothing else.

#include "vekch/case.h"

#include "frame/checks.h"
#include "strings/kernels/case_kernels.h"

namespace vekch {
namespace {

template <class Map>
VEK_INLINE vekStatus CheckedMap(const uint8_t* source, uint8_t* destination, int32_t length) {
  if (AnyNull(source, destination)) {
    return StatusNullPointer;
  }
  if (length <= 0) {
    return length < 0 ? StatusLengthError : StatusNoError;
  }
  kernels::Transform(source, destination, length, Map{});
  return StatusNoError;
}

}  // namespace
}  // namespace vekch

VEK_KERNEL vekStatus veksLowercaseLatin_8u(const uint8_t* source, uint8_t* destination,
                                           int32_t length) noexcept {
  return vekch::CheckedMap<vekch::kernels::ToLower>(source, destination, length);
}

VEK_KERNEL vekStatus veksLowercaseLatin_8u_I(uint8_t* buffer, int32_t length) noexcept {
  return vekch::CheckedMap<vekch::kernels::ToLower>(buffer, buffer, length);
}

VEK_KERNEL vekStatus veksUppercaseLatin_8u(const uint8_t* source, uint8_t* destination,
                                           int32_t length) noexcept {
  return vekch::CheckedMap<vekch::kernels::ToUpper>(source, destination, length);
}

VEK_KERNEL vekStatus veksUppercaseLatin_8u_I(uint8_t* buffer, int32_t length) noexcept {
  return vekch::CheckedMap<vekch::kernels::ToUpper>(buffer, buffer, length);
}
