// SPDX-License-Identifier: MIT

// The conversions: argument checks and empty texts, before the kernels.

#include "frame/checks.h"
#include "strings/kernels/block.h"
#include "unicode/utf_kernels.h"
#include "vekch/utf.h"

namespace vekch {
namespace {

template <class From, class To, class Kernel>
VEK_INLINE vekStatus CheckedConvert(const From* source, int32_t* sourceLength, To* destination,
                                    int32_t* destinationLength, Kernel kernel) {
  if (AnyNull(source, sourceLength, destination, destinationLength)) {
    return StatusNullPointer;
  }
  if (*sourceLength <= 0 || *destinationLength <= 0) {
    *sourceLength = 0;
    *destinationLength = 0;
    return StatusNoError;
  }
  return kernel(reinterpret_cast<const uint8_t*>(source), sourceLength,
                reinterpret_cast<uint8_t*>(destination), destinationLength);
}

}  // namespace
}  // namespace vekch

vekStatus veksConvertUTF_16u8u(const uint16_t* source, int32_t* sourceLength, uint8_t* destination,
                               int32_t* destinationLength, int32_t swapped) noexcept {
  return vekch::CheckedConvert(
      source, sourceLength, destination, destinationLength,
      swapped != 0 ? vekch::kernels::Utf16SwappedToUtf8 : vekch::kernels::Utf16ToUtf8);
}

vekStatus veksConvertUTF_8u16u(const uint8_t* source, int32_t* sourceLength, uint16_t* destination,
                               int32_t* destinationLength, int32_t swapped) noexcept {
  return vekch::CheckedConvert(
      source, sourceLength, destination, destinationLength,
      swapped != 0 ? vekch::kernels::Utf8ToUtf16Swapped : vekch::kernels::Utf8ToUtf16);
}
