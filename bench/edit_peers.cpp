// SPDX-License-Identifier: MIT
#include "bench/edit_peers.h"

#include <string.h>

namespace vekch_bench {
namespace {

template <class Drops>
inline int32_t Trim(const uint8_t* source, int32_t length, uint8_t* destination, bool start,
                    bool end, Drops drops) {
  int32_t from = 0;
  int32_t to = length;
  while (start && from < to && drops(source[from])) {
    ++from;
  }
  while (end && from < to && drops(source[to - 1])) {
    --to;
  }
  memcpy(destination, source + from, static_cast<size_t>(to - from));
  return to - from;
}

inline int32_t TrimAny(const uint8_t* source, int32_t length, const uint8_t* set, int32_t setLength,
                       uint8_t* destination, bool start, bool end) {
  bool table[256] = {};
  for (int32_t i = 0; i < setLength; ++i) {
    table[set[i]] = true;
  }
  return Trim(source, length, destination, start, end, [&](uint8_t byte) { return table[byte]; });
}

}  // namespace

void PlainReplace(const uint8_t* source, uint8_t* destination, int32_t length, uint8_t oldValue,
                  uint8_t newValue) {
  for (int32_t i = 0; i < length; ++i) {
    destination[i] = source[i] == oldValue ? newValue : source[i];
  }
}

int32_t MemchrSplit(const uint8_t* source, int32_t length, uint8_t delimiter,
                    uint8_t* const* destinations, int32_t* lengths) {
  const uint8_t* const end = source + length;
  int32_t count = 0;
  while (source < end) {
    const auto* found =
        static_cast<const uint8_t*>(memchr(source, delimiter, static_cast<size_t>(end - source)));
    const uint8_t* const pieceEnd = found == nullptr ? end : found;
    memcpy(destinations[count], source, static_cast<size_t>(pieceEnd - source));
    lengths[count++] = static_cast<int32_t>(pieceEnd - source);
    source = pieceEnd + 1;
  }
  return count;
}

int32_t PlainTrim(const uint8_t* source, int32_t length, uint8_t value, uint8_t* destination) {
  return Trim(source, length, destination, true, true, [=](uint8_t byte) { return byte == value; });
}

int32_t PlainTrimAny(const uint8_t* source, int32_t length, const uint8_t* set, int32_t setLength,
                     uint8_t* destination) {
  return TrimAny(source, length, set, setLength, destination, true, true);
}

int32_t PlainTrimStartAny(const uint8_t* source, int32_t length, const uint8_t* set,
                          int32_t setLength, uint8_t* destination) {
  return TrimAny(source, length, set, setLength, destination, true, false);
}

int32_t PlainTrimEndAny(const uint8_t* source, int32_t length, const uint8_t* set,
                        int32_t setLength, uint8_t* destination) {
  return TrimAny(source, length, set, setLength, destination, false, true);
}

}  // namespace vekch_bench
