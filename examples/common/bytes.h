// SPDX-License-Identifier: MIT

// Texts as the library takes them, and searches of it as functions that return what they find. The
// arguments are valid, so there is no status to look at.

#ifndef EXAMPLES_COMMON_BYTES_H
#define EXAMPLES_COMMON_BYTES_H

#include <cstdint>
#include <string>

#include "vekch/vekch.h"

namespace examples {

// A part of a text: from begin up to, but not including, end.
struct Range {
  int32_t begin;
  int32_t end;
};

inline const uint8_t* Bytes(const std::string& text) {
  return reinterpret_cast<const uint8_t*>(text.c_str());
}

// Position of the first or last `value` in the range; -1 if there is none.
inline int32_t FindByte(const uint8_t* text, Range range, uint8_t value) {
  int32_t index = -1;
  veksFindC_8u(text + range.begin, range.end - range.begin, value, &index);
  return index < 0 ? -1 : range.begin + index;
}

inline int32_t FindLastByte(const uint8_t* text, Range range, uint8_t value) {
  int32_t index = -1;
  veksFindRevC_8u(text + range.begin, range.end - range.begin, value, &index);
  return index < 0 ? -1 : range.begin + index;
}

// Position after the line that `from` lies in: after the byte that ends it, or the end of the
// text.
inline int32_t LineEnd(const uint8_t* text, int32_t from, int32_t length, uint8_t lineEnd = '\n') {
  const int32_t position = FindByte(text, {from, length}, lineEnd);
  return position < 0 ? length : position + 1;
}

// Where the line starts that `position` lies in, not before `from`, the start of a line.
inline int32_t LineStart(const uint8_t* text, int32_t from, int32_t position,
                         uint8_t lineEnd = '\n') {
  const int32_t before = FindLastByte(text, {from, position}, lineEnd);
  return before < 0 ? from : before + 1;
}

}  // namespace examples

#endif
