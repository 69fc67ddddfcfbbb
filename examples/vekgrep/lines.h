// SPDX-License-Identifier: MIT

// Counting lines, which the library doesn't do.

#ifndef VEKGREP_LINES_H
#define VEKGREP_LINES_H

#include <algorithm>
#include <cstdint>
#include <numeric>

#include "common/bytes.h"

namespace examples::vekgrep {

// How often a byte is in a range. The library finds bytes, and a call for every line would take
// longer than all the searching. The lanes make this a loop that compilers turn into vector code; a
// lane holds at most 255 before it must be added up.
inline int64_t CountByte(const uint8_t* text, Range range, uint8_t value) {
  constexpr int32_t kLanes = 64;
  constexpr int32_t kMostRows = 255;
  int64_t count = 0;
  int32_t at = range.begin;
  while (range.end - at >= kLanes) {
    const int32_t rows = std::min((range.end - at) / kLanes, kMostRows);
    uint8_t lanes[kLanes] = {};
    for (int32_t row = 0; row < rows; ++row, at += kLanes) {
      for (int32_t i = 0; i < kLanes; ++i) {
        lanes[i] = static_cast<uint8_t>(lanes[i] + (text[at + i] == value ? 1 : 0));
      }
    }
    count = std::accumulate(lanes, lanes + kLanes, count);
  }
  return count + std::count(text + at, text + range.end, value);
}

}  // namespace examples::vekgrep

#endif
