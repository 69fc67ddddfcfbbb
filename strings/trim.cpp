// SPDX-License-Identifier: MIT

// Trimming: argument checks, a kernel that finds what is kept, and its copy.

#include "vekch/trim.h"

#include "frame/checks.h"
#include "strings/kernels/piece.h"
#include "strings/kernels/trim_kernels.h"

namespace vekch {
namespace {

using kernels::Ends;
using kernels::Kept;

// The kept range to the start of the destination, which may be the source: it moves down then.
VEK_INLINE void Store(Kept kept, const uint8_t* source, uint8_t* destination,
                      int32_t* destinationLength) {
  const int32_t length = kept.end - kept.start;
  *destinationLength = length;
  if (destination != source) {
    kernels::CopyPiece(source + kept.start, destination, length);
  } else if (kept.start > 0) {
    kernels::MovePiece(source + kept.start, destination, length);
  }
}

VEK_INLINE vekStatus TrimAny(const uint8_t* source, int32_t sourceLength, const uint8_t* set,
                             int32_t setLength, uint8_t* destination, int32_t* destinationLength,
                             Ends ends) {
  if (AnyNull(source, destination, set, destinationLength)) {
    return StatusNullPointer;
  }
  if (AnyNegative(sourceLength, setLength)) {
    return StatusLengthError;
  }
  Store(kernels::TrimSet(source, sourceLength, set, setLength, ends), source, destination,
        destinationLength);
  return StatusNoError;
}

}  // namespace
}  // namespace vekch

VEK_KERNEL vekStatus veksTrimC_8u(const uint8_t* source, int32_t sourceLength, uint8_t value,
                                  uint8_t* destination, int32_t* destinationLength) noexcept {
  if (vekch::AnyNull(source, destination, destinationLength)) {
    return StatusNullPointer;
  }
  if (sourceLength < 0) {
    return StatusLengthError;
  }
  vekch::Store(vekch::kernels::TrimByte(source, sourceLength, value, vekch::Ends::kBoth), source,
               destination, destinationLength);
  return StatusNoError;
}

VEK_KERNEL vekStatus veksTrimC_8u_I(uint8_t* buffer, int32_t* length, uint8_t value) noexcept {
  if (vekch::AnyNull(buffer, length)) {
    return StatusNullPointer;
  }
  if (*length < 0) {
    return StatusLengthError;
  }
  vekch::Store(vekch::kernels::TrimByte(buffer, *length, value, vekch::Ends::kBoth), buffer, buffer,
               length);
  return StatusNoError;
}

VEK_KERNEL vekStatus veksTrimCAny_8u(const uint8_t* source, int32_t sourceLength,
                                     const uint8_t* set, int32_t setLength, uint8_t* destination,
                                     int32_t* destinationLength) noexcept {
  return vekch::TrimAny(source, sourceLength, set, setLength, destination, destinationLength,
                        vekch::Ends::kBoth);
}

VEK_KERNEL vekStatus veksTrimStartCAny_8u(const uint8_t* source, int32_t sourceLength,
                                          const uint8_t* set, int32_t setLength,
                                          uint8_t* destination,
                                          int32_t* destinationLength) noexcept {
  return vekch::TrimAny(source, sourceLength, set, setLength, destination, destinationLength,
                        vekch::Ends::kStart);
}

VEK_KERNEL vekStatus veksTrimEndCAny_8u(const uint8_t* source, int32_t sourceLength,
                                        const uint8_t* set, int32_t setLength, uint8_t* destination,
                                        int32_t* destinationLength) noexcept {
  return vekch::TrimAny(source, sourceLength, set, setLength, destination, destinationLength,
                        vekch::Ends::kEnd);
}
