// SPDX-License-Identifier: MIT

// The conversions as rows of the sweep, with a model that follows the rules word by word. Units are
// pairs of bytes, the lower one first, or the higher one if swapped.

#ifndef VEKCH_TESTS_UTF_MODEL_H
#define VEKCH_TESTS_UTF_MODEL_H

#include <utility>

#include "tests/sweep.h"
#include "vekch/vekch.h"

namespace vekch::test {

inline int ShortestLength(uint32_t value) {
  int length = 1;
  for (const uint32_t limit : {0x80U, 0x800U, 0x10000U, 0x200000U, 0x4000000U}) {
    length += value >= limit ? 1 : 0;
  }
  return length;
}

// The value and the length of the sequence at p, or the first byte and 1.
inline std::pair<uint32_t, int> ModelCharacter(const uint8_t* p, size_t left) {
  int length = 0;
  while (length < 8 && (*p << length & 0x80) != 0) {
    ++length;
  }
  uint32_t value = *p & ((1U << (7 - length % 7)) - 1);
  bool valid = length >= 2 && length <= 6 && static_cast<size_t>(length) <= left;
  for (int i = 1; valid && i < length; ++i) {
    valid = p[i] / 64 == 2;
    value = value * 64 + p[i] % 64;
  }
  valid = valid && ShortestLength(value) == length;
  return valid ? std::make_pair(value, length) : std::make_pair(uint32_t{*p}, 1);
}

inline void AppendUtf8(Bytes* text, uint32_t value, int length) {
  const uint32_t mark = length == 1 ? 0 : 0xFF00U >> length;
  for (int i = length - 1; i >= 0; --i) {
    const uint32_t bits = value >> (6 * i);
    text->push_back(static_cast<uint8_t>(i == length - 1 ? mark | bits : 0x80 | (bits & 0x3F)));
  }
}

inline void AppendUnit(Bytes* text, uint32_t unit, bool swap) {
  text->push_back(static_cast<uint8_t>(swap ? unit >> 8 : unit));
  text->push_back(static_cast<uint8_t>(swap ? unit : unit >> 8));
}

inline uint32_t UnitAt(const Bytes& text, size_t i, bool swap) {
  return i + 1 < text.size() ? text[i + (swap ? 1 : 0)] + text[i + (swap ? 0 : 1)] * 256U : 0;
}

// What was read and what was written, in one number.
inline int32_t Both(int32_t read, int32_t written) { return read * 100000 + written; }
inline std::pair<int32_t, int32_t> Parts(int32_t both) { return {both / 100000, both % 100000}; }

inline Output ToUnits(const Input& in) {
  const bool swap = in.x != 0;
  Output out;
  size_t read = 0;
  while (read < in.text.size() && Size(out.stored) < 2 * in.y) {
    const auto [value, length] = ModelCharacter(&in.text[read], in.text.size() - read);
    read += static_cast<size_t>(length);
    if (value <= 0xFFFF) {
      AppendUnit(&out.stored, value, swap);
      continue;
    }
    // A pair is written whole even where one unit is left; in swapped order it comes low first, and
    // its bytes are not swapped.
    const uint32_t high = 0xD800 + (((value - 0x10000) >> 10) & 0x3FF);
    const uint32_t low = 0xDC00 + (value & 0x3FF);
    AppendUnit(&out.stored, swap ? low : high, false);
    AppendUnit(&out.stored, swap ? high : low, false);
  }
  out.number = Both(static_cast<int32_t>(read), Size(out.stored) / 2);
  return out;
}

inline Output ToBytes(const Input& in) {
  Output out;
  size_t read = 0;
  while (read < in.text.size()) {
    uint32_t value = UnitAt(in.text, read, in.x != 0);
    const uint32_t next = UnitAt(in.text, read + 2, in.x != 0);
    const bool pair = value / 0x400 == 0x36 && next / 0x400 == 0x37;
    value = pair ? 0x10000 + value % 0x400 * 0x400 + next % 0x400 : value;
    if (Size(out.stored) + ShortestLength(value) > in.y) {
      break;
    }
    AppendUtf8(&out.stored, value, ShortestLength(value));
    read += pair ? 4 : 2;
  }
  out.number = Both(static_cast<int32_t>(read / 2), Size(out.stored));
  return out;
}

// `x` says whether units are swapped, `y` is the capacity.
inline vekStatus ConvertToUnits(Call& c) {
  int32_t written = c.y;
  const vekStatus status =
      veksConvertUTF_8u16u(c.text, &c.length, reinterpret_cast<uint16_t*>(c.to), &written, c.x);
  c.number = Both(c.length, written);
  return status;
}

inline vekStatus ConvertToBytes(Call& c) {
  const auto* units = reinterpret_cast<const uint16_t*>(c.text);
  int32_t read = c.length / 2;
  int32_t written = c.y;
  const vekStatus status = veksConvertUTF_16u8u(units, &read, c.to, &written, c.x);
  c.number = Both(read, written);
  return status;
}

inline constexpr Function kToUnits = {"ToUnits", ConvertToUnits, ToUnits};
inline constexpr Function kToBytes = {"ToBytes", ConvertToBytes, ToBytes};

}  // namespace vekch::test

#endif
