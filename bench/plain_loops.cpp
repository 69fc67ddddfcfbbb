// SPDX-License-Identifier: MIT
#include "bench/plain_loops.h"

#include <ctype.h>

namespace vekch_bench {
namespace {

template <class Map>
inline __attribute__((always_inline)) void MapEach(const uint8_t* source, uint8_t* destination,
                                                   int32_t length, Map map) {
  for (int32_t i = 0; i < length; ++i) {
    destination[i] = static_cast<uint8_t>(map(source[i]));
  }
}

struct Lower {
  inline __attribute__((always_inline)) uint8_t operator()(uint8_t byte) const {
    return static_cast<uint8_t>(byte >= 'A' && byte <= 'Z' ? byte + 32 : byte);
  }
};

struct Upper {
  inline __attribute__((always_inline)) uint8_t operator()(uint8_t byte) const {
    return static_cast<uint8_t>(byte >= 'a' && byte <= 'z' ? byte - 32 : byte);
  }
};

template <class Element>
inline uint32_t ShiftXor(const Element* string, int32_t length) {
  uint32_t h = 0;
  for (int32_t i = 0; i < length; ++i) {
    h = (h << 1) ^ string[i];
  }
  return h;
}

template <class Element>
inline uint32_t Multiply31(const Element* string, int32_t length) {
  uint32_t h = 0;
  for (int32_t i = 0; i < length; ++i) {
    h = h * 31 + string[i];
  }
  return h;
}

template <class Element>
inline uint32_t Multiply33(const Element* string, int32_t length) {
  uint32_t h = 5381;
  for (int32_t i = 0; i < length && string[i] != 0; ++i) {
    h = (h * 33) ^ string[i];
  }
  return h;
}

}  // namespace

void PlainLowercase(const uint8_t* source, uint8_t* destination, int32_t length) {
  MapEach(source, destination, length, Lower{});
}

void PlainUppercase(const uint8_t* source, uint8_t* destination, int32_t length) {
  MapEach(source, destination, length, Upper{});
}

__attribute__((optimize("O3"))) void VectorisedLowercase(const uint8_t* source,
                                                         uint8_t* destination, int32_t length) {
  MapEach(source, destination, length, Lower{});
}

__attribute__((optimize("O3"))) void VectorisedUppercase(const uint8_t* source,
                                                         uint8_t* destination, int32_t length) {
  MapEach(source, destination, length, Upper{});
}

void ToLowerEach(const uint8_t* source, uint8_t* destination, int32_t length) {
  MapEach(source, destination, length, tolower);
}

void ToUpperEach(const uint8_t* source, uint8_t* destination, int32_t length) {
  MapEach(source, destination, length, toupper);
}

uint32_t PlainShiftXor8(const uint8_t* string, int32_t length) { return ShiftXor(string, length); }

uint32_t PlainShiftXor16(const uint16_t* string, int32_t length) {
  return ShiftXor(string, length);
}

uint32_t PlainMultiply31For8(const uint8_t* string, int32_t length) {
  return Multiply31(string, length);
}

uint32_t PlainMultiply31For16(const uint16_t* string, int32_t length) {
  return Multiply31(string, length);
}

uint32_t PlainMultiply33For8(const uint8_t* string, int32_t length) {
  return Multiply33(string, length);
}

uint32_t PlainMultiply33For16(const uint16_t* string, int32_t length) {
  return Multiply33(string, length);
}

}  // namespace vekch_bench
