// SPDX-License-Identifier: MIT

// The bytes with which something can go on, and whether it can at the end of the text.

#ifndef VEKCH_REGEXP_FAST_NEXT_BYTES_H
#define VEKCH_REGEXP_FAST_NEXT_BYTES_H

#include <stdint.h>

#include "strings/kernels/lanes.h"

namespace vekch::regexp {

struct ByteBounds {
  uint8_t lowest;
  uint8_t highest;
};

struct alignas(kernels::kBlock) NextBytes {
  static constexpr int32_t kTable = 256;  // bytes of a table that has one for each

  uint8_t bits[kTable / 8];
  bool atEnd;

  static NextBytes None() { return Of(0, false); }
  static NextBytes All(bool atEnd) { return Of(0xFF, atEnd); }

  void Add(const NextBytes& other) {
    SetLow(Low() | other.Low());
    SetHigh(High() | other.High());
    atEnd = atEnd || other.atEnd;
  }

  void Keep(const NextBytes& other) {
    SetLow(Low() & other.Low());
    SetHigh(High() & other.High());
    atEnd = atEnd && other.atEnd;
  }

  void AddByte(uint8_t value) { bits[value / 8] |= static_cast<uint8_t>(1U << value % 8); }

  // Those above 0x7F.
  void AddHigh() { SetHigh(kernels::Splat(0xFF)); }
  bool HasHigh() const { return kernels::LaneBits(High() == kernels::ZeroBlock()) != 0xFFFF; }

  // Those that a table has 0xFF for.
  void AddMembers(const uint8_t* member) {
    for (int32_t i = 0; i < kTable; i += kernels::kBlock) {
      const uint32_t lanes = kernels::LaneBits(kernels::LoadAny(member + i));
      bits[i / 8] |= static_cast<uint8_t>(lanes);
      bits[i / 8 + 1] |= static_cast<uint8_t>(lanes >> 8);
    }
  }

  bool Meets(const NextBytes& other) const {
    const kernels::Block both = (Low() & other.Low()) | (High() & other.High());
    return kernels::LaneBits(both == kernels::ZeroBlock()) != 0xFFFF;
  }

  // The ranges that they make up, none of all 256 bytes; how many, or 0 for more than `most`.
  int32_t RangesOf(ByteBounds* ranges, int32_t most) const {
    int32_t count = 0;
    uint64_t inside = 0;  // all ones in a range
    for (int32_t base = 0; base < kTable; base += 64) {
      const auto word = kernels::LoadWord<uint64_t>(bits + base / 8);
      for (int32_t from = 0;;) {
        const uint64_t changes = (word ^ inside) >> from;
        if (changes == 0) {
          break;
        }
        from += kernels::LowestBit(changes);
        const int32_t value = base + from;
        if (inside != 0) {
          ranges[count++].highest = static_cast<uint8_t>(value - 1);
        } else if (count == most) {
          return 0;
        } else {
          ranges[count].lowest = static_cast<uint8_t>(value);
        }
        inside = ~inside;
      }
    }
    if (inside == 0) {
      return count;
    }
    ranges[count++].highest = kTable - 1;
    if (ranges[0].lowest == 0 && count == 1) {
      ranges[0] = {0, 0x7F};
      ranges[count++] = {0x80, kTable - 1};
    }
    return count;
  }

  bool IsAll() const {
    return kernels::LaneBits((Low() & High()) == kernels::Splat(0xFF)) == 0xFFFF && atEnd;
  }

  friend bool operator==(const NextBytes& a, const NextBytes& b) {
    const kernels::Block differ = (a.Low() ^ b.Low()) | (a.High() ^ b.High());
    return kernels::LaneBits(differ == kernels::ZeroBlock()) == 0xFFFF && a.atEnd == b.atEnd;
  }

  // Sets bits of a table's entries for the bytes.
  void Mark(uint8_t* table, uint8_t marks) const {
    const auto lanes = kernels::As<kernels::Block>(kernels::SplatHalf(0x8040201008040201U));
    const kernels::Block mark = kernels::Splat(marks);
    for (int32_t i = 0; i < kTable; i += kernels::kBlock) {
      const kernels::Block member =
          kernels::LowHalves(kernels::Splat(bits[i / 8]), kernels::Splat(bits[i / 8 + 1]));
      const kernels::Block hits = (member & lanes) == lanes;
      kernels::StoreAny(table + i, kernels::LoadAny(table + i) | (hits & mark));
    }
  }

 private:
  static NextBytes Of(uint8_t each, bool end) {
    NextBytes next;
    next.SetLow(kernels::Splat(each));
    next.SetHigh(kernels::Splat(each));
    next.atEnd = end;
    return next;
  }

  kernels::Block Low() const { return kernels::LoadAny(bits); }
  kernels::Block High() const { return kernels::LoadAny(bits + kernels::kBlock); }
  void SetLow(kernels::Block block) { kernels::StoreAny(bits, block); }
  void SetHigh(kernels::Block block) { kernels::StoreAny(bits + kernels::kBlock, block); }
};

}  // namespace vekch::regexp

#endif
