// SPDX-License-Identifier: MIT

// Membership in a set of byte values that is given as a list, in the three forms in which kernels
// test it: probes for the scan that compare a block with every member or with ranges of members,
// and a table with an entry for each byte value.

#ifndef VEKCH_STRINGS_KERNELS_BYTE_SET_H
#define VEKCH_STRINGS_KERNELS_BYTE_SET_H

#include "strings/kernels/byte_range.h"
#include "strings/kernels/scan.h"

namespace vekch::kernels {

constexpr int32_t kMostMembers = 16;  // beyond, comparing costs more than looking up
constexpr int32_t kTableSize = 256;

struct EqualsByte {
  static constexpr Hits kHits = Hits::kSetLanes;
  const uint8_t* source;
  Block value;

  VEK_INLINE const uint8_t* Anchor() const { return source; }

  template <class Load>
  VEK_INLINE Block operator()(Load load, ptrdiff_t i) const {
    return load(source + i) == value;
  }
};

// Equals any of a list of more than kCount / 2 and up to kCount members, for kCount from 2 to 16.
template <int32_t kCount>
struct EqualsMember {
  static constexpr Hits kHits = Hits::kSetLanes;
  const uint8_t* source;
  Block members[kCount];

  VEK_INLINE EqualsMember(const uint8_t* sourceBytes, const uint8_t* set, int32_t setLength)
      : source(sourceBytes) {
    SplatLanes<kCount>(LoadEnds<kCount / 2>(set, setLength), members);
  }

  VEK_INLINE const uint8_t* Anchor() const { return source; }

  template <class Load>
  VEK_INLINE Block operator()(Load load, ptrdiff_t i) const {
    const Block b = load(source + i);
    Block hits = b == members[0];
#pragma GCC unroll 16
    for (int32_t m = 1; m < kCount; ++m) {
      hits = hits | (b == members[m]);
    }
    return hits;
  }
};

template <int32_t kCount>
struct InRanges {
  static constexpr Hits kHits = Hits::kSetLanes;
  const uint8_t* haystack;
  ByteRange ranges[kCount];

  VEK_INLINE const uint8_t* Anchor() const { return haystack; }

  template <class Load>
  VEK_INLINE Block operator()(Load load, ptrdiff_t i) const {
    return InAny<kCount>(load(haystack + i), ranges);
  }
};

// 0xFF at the value of every member, 0 elsewhere.
struct Table {
  alignas(kBlock) uint8_t entries[kTableSize];

  VEK_INLINE Table(const uint8_t* set, int32_t setLength) {
    for (int32_t i = 0; i < kTableSize; i += kBlock) {
      StoreAligned(entries + i, ZeroBlock());
    }
#pragma GCC unroll 4
    for (int32_t i = 0; i < setLength; ++i) {
      entries[set[i]] = 0xFF;
    }
  }

  // A bit for each of the 64 byte values from `lowest` on.
  VEK_INLINE uint64_t MemberBits(int32_t lowest) const {
    const auto bits = [&](int32_t i) __attribute__((always_inline)) {
      return uint64_t{LaneBits(LoadAligned(entries + lowest + i))} << i;
    };
    return bits(0) | bits(16) | bits(32) | bits(48);
  }

  VEK_INLINE bool Has(uint8_t byte) const { return entries[byte] != 0; }
};

// Ranges of byte values in ascending order that cover a set: its maximal runs of members, but that
// runs are merged over narrow gaps and, as long as there are more than kMostRanges, over the
// narrowest ones. No gap with a letter or another of the most common bytes is merged over. Where a
// RangeSet is exact, and some sets have none, these only make candidates.
class RangeList {
 public:
  int32_t count = 0;
  uint8_t lowest[kMostRanges + 1];
  uint8_t highest[kMostRanges + 1];

  // Returns whether there are such ranges. The set holds some bytes, and not all.
  VEK_INLINE bool Fill(const Table& table) {
    constexpr int32_t kWord = 64;
    uint64_t previous = 0;  // whether the byte below the current 64 is a member
    bool open = false;
    for (int32_t base = 0; base < kTableSize; base += kWord) {
      const uint64_t members = table.MemberBits(base);
      // A bit where membership changes from one byte value to the next.
      for (uint64_t changes = members ^ (members << 1 | previous); changes != 0;
           changes &= changes - 1) {
        const int32_t value = base + LowestBit(changes);
        if (open) {
          highest[count++] = static_cast<uint8_t>(value - 1);
        } else if (!Begin(value)) {
          return false;
        }
        open = !open;
      }
      previous = members >> (kWord - 1);
    }
    if (open) {
      highest[count++] = 255;
    }
    return true;
  }

 private:
  static constexpr int32_t kNarrow = 3;

  // Begins a range, or goes on with the one before it. Returns whether there is room for it.
  VEK_INLINE bool Begin(int32_t value) {
    lowest[count] = static_cast<uint8_t>(value);
    if (count == 0) {
      return true;
    }
    gaps[count - 1] = WidthOfGap(highest[count - 1] + 1, value);
    if (gaps[count - 1] <= kNarrow) {
      --count;
    } else if (count == kMostRanges) {
      return MergeOne();
    }
    return true;
  }

  // Beyond any width if common bytes lie in the gap.
  static VEK_INLINE int32_t WidthOfGap(int32_t from, int32_t end) {
    const auto holds = [=](int32_t low, int32_t high) __attribute__((always_inline)) {
      return from <= high && end > low;
    };
    const bool common = holds('a', 'z') || holds(' ', ' ') || holds('\n', '\n');
    return end - from + (common ? kTableSize : 0);
  }

  VEK_INLINE bool MergeOne() {
    int32_t narrowest = 0;
    for (int32_t i = 1; i < kMostRanges; ++i) {
      if (gaps[i] < gaps[narrowest]) {
        narrowest = i;
      }
    }
    if (gaps[narrowest] >= kTableSize) {
      return false;
    }
    --count;
    for (int32_t i = narrowest; i < count; ++i) {
      highest[i] = highest[i + 1];
      lowest[i + 1] = lowest[i + 2];
      gaps[i] = gaps[i + 1];
    }
    return true;
  }

  int32_t gaps[kMostRanges];  // after each range
};

}  // namespace vekch::kernels

#endif
