// SPDX-License-Identifier: MIT

// The library's own copy, move and fill: argument checks before the kernels. Callers with a
// piece that may be empty ignore the status that an empty piece gives.

#ifndef VEKCH_STRINGS_BLOCK_ROUTINES_H
#define VEKCH_STRINGS_BLOCK_ROUTINES_H

#include "frame/checks.h"
#include "strings/kernels/block_kernels.h"
#include "vekch/status.h"

namespace vekch {

inline vekStatus CheckedBlock(bool anyNull, int32_t length) {
  return anyNull ? StatusNullPointer : length < 1 ? StatusSizeError : StatusNoError;
}

// The strings must not overlap.
inline vekStatus BlockCopy(const uint8_t* source, uint8_t* destination, int32_t length) {
  const vekStatus status = CheckedBlock(AnyNull(source, destination), length);
  if (status == StatusNoError) {
    kernels::Copy(source, destination, length);
  }
  return status;
}

// The strings may overlap.
inline vekStatus BlockMove(const uint8_t* source, uint8_t* destination, int32_t length) {
  const vekStatus status = CheckedBlock(AnyNull(source, destination), length);
  if (status == StatusNoError) {
    kernels::Move(source, destination, length);
  }
  return status;
}

inline vekStatus BlockFill(uint8_t value, uint8_t* destination, int32_t length) {
  const vekStatus status = CheckedBlock(AnyNull(destination), length);
  if (status == StatusNoError) {
    kernels::Fill(value, destination, length);
  }
  return status;
}

}  // namespace vekch

#endif
