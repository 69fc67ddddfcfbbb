// SPDX-License-Identifier: MIT

// The argument checks that the public functions share, in their fixed order: every pointer, then
// lengths, then counts.

#ifndef VEKCH_FRAME_CHECKS_H
#define VEKCH_FRAME_CHECKS_H

#include <stdint.h>

namespace vekch {

template <class... Pointers>
constexpr bool AnyNull(const Pointers*... pointers) {
  return ((pointers == nullptr) || ...);
}

template <class... Lengths>
constexpr bool AnyNegative(Lengths... lengths) {
  // One test of the sign bit for all of them.
  return (lengths | ...) < 0;
}

}  // namespace vekch

#endif
