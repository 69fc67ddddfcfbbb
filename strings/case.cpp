// Case mapping: argument checks in front of the kernels.

#include "vekch/case.h"

#include "frame/checks.h"
#include "strings/kernels/case_kernels.h"

namespace vekch {
namespace {

template <class Kernel>
inline vekStatus CheckedMap(const uint8_t* source, uint8_t* destination, int32_t length,
                            Kernel kernel) {
  if (AnyNull(source, destination)) {
    return StatusNullPointer;
  }
  if (length < 0) {
    return StatusLengthError;
  }
  if (length > 0) {
    kernel(source, destination, length);
  }
  return StatusNoError;
}

}  // namespace
}  // namespace vekch

vekStatus veksLowercaseLatin_8u(const uint8_t* source, uint8_t* destination,
                                int32_t length) noexcept {
  return vekch::CheckedMap(source, destination, length, vekch::kernels::LowercaseLatin);
}

vekStatus veksLowercaseLatin_8u_I(uint8_t* buffer, int32_t length) noexcept {
  return vekch::CheckedMap(buffer, buffer, length, vekch::kernels::LowercaseLatin);
}

vekStatus veksUppercaseLatin_8u(const uint8_t* source, uint8_t* destination,
                                int32_t length) noexcept {
  return vekch::CheckedMap(source, destination, length, vekch::kernels::UppercaseLatin);
}

vekStatus veksUppercaseLatin_8u_I(uint8_t* buffer, int32_t length) noexcept {
  return vekch::CheckedMap(buffer, buffer, length, vekch::kernels::UppercaseLatin);
}
