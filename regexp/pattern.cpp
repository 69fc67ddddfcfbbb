// SPDX-License-Identifier: MIT

// The entry points of a pattern's life before the searches: its size, its compilation with what is
// found out about the program right away, its settings.

#include "frame/checks.h"
#include "regexp/analyse/analyse.h"
#include "regexp/compile/compiler.h"
#include "regexp/object/object_layout.h"
#include "strings/kernels/clear_words.h"
#include "vekch/regexp.h"

vekStatus veksRegExpGetSize(const uint8_t* pattern, int32_t* size) noexcept {
  if (vekch::AnyNull(pattern, size)) {
    return StatusNullPointer;
  }
  // The size wraps for a pattern that no 32-bit size can hold: it is not checked for.
  *size = static_cast<int32_t>(vekch::regexp::ObjectSize(vekch::regexp::LengthOf(pattern)));
  return StatusNoError;
}

vekStatus veksRegExpInit(const uint8_t* pattern, const uint8_t* options, RegExpState* state,
                         int32_t* errorOffset) noexcept {
  if (vekch::AnyNull(pattern, state, errorOffset)) {
    return StatusNullPointer;
  }
  const uint32_t length = vekch::regexp::LengthOf(pattern);
  static_assert(RegExpFixedSize % 8 == 0 && RegExpSizePerByte % 8 == 0, "whole words");
  vekch::kernels::ClearWords(state, vekch::regexp::ObjectSize(length) / 8);
  const vekch::regexp::Fault fault = vekch::regexp::Compile(pattern, length, options, state);
  if (vekch::regexp::Failed(fault)) {
    *errorOffset = static_cast<int32_t>(fault.position - pattern);
    return fault.status;
  }
  vekch::regexp::Analyse(state);
  return StatusNoError;
}

vekStatus veksRegExpSetFormat(int32_t format, RegExpState* state) noexcept {
  if (vekch::AnyNull(state)) {
    return StatusNullPointer;
  }
  if (format != 0 && format != 1) {
    return StatusRangeError;
  }
  state->characterFormat = format;
  return StatusNoError;
}

vekStatus veksRegExpSetMatchLimit(int32_t limit, RegExpState* state) noexcept {
  if (vekch::AnyNull(state)) {
    return StatusNullPointer;
  }
  if (vekch::AnyNegative(limit)) {
    return StatusLengthError;
  }
  state->matchLimit = limit;
  return StatusNoError;
}
