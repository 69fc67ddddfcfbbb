// Membership in a set of byte values that is given as a list, in the three forms in which kernels
// test it: probes for the scan that compare a block with every member or with ranges of members,
// and a table with an entry for each byte value.

#ifndef VEKCH_STRINGS_KERNELS_BYTE_SET_H
#define VEKCH_STRINGS_KERNELS_BYTE_SET_H

#include "strings/kernels/byte_range.h"
#include "strings/kernels/scan.h"

namespace vekch::kernels {

constexpr int32_t kMostMembers = 16;  // beyond, comparing costs more than looking up
constexpr int32_t kMostRanges = 4;    // beyond, testing ranges costs more than looking up
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
  const uint8_t* source;
  ByteRange ranges[kCount];

  VEK_INLINE const uint8_t* Anchor() const { return source; }

  template <class Load>
  VEK_INLINE Block operator()(Load load, ptrdiff_t i) const {
    const Block b = load(source + i);
    Block hits = InRange(b, ranges[0]);
#pragma GCC unroll 4
    for (int32_t r = 1; r < kCount; ++r) {
      hits = hits | InRange(b, ranges[r]);
    }
    return hits;
  }
};

// 0xFF at the value of every member, 0 elsewhere.
struct Table {
  alignas(kBlock) uint8_t entries[kTableSize];

  VEK_INLINE Table(const uint8_t* set, int32_t setLength) {
    for (int32_t i = 0; i < kTableSize; i += kBlock) {
      StoreAligned(entries + i, ZeroBlock());
    }
    for (int32_t i = 0; i < setLength; ++i) {
      entries[set[i]] = 0xFF;
    }
  }
};

// The maximal runs of members in ascending order, as long as there are no more than kMostRanges.
struct RangeList {
  int32_t count = 0;
  uint8_t lowest[kMostRanges];
  uint8_t highest[kMostRanges];

  // Returns whether the table's members are these ranges. A set of all bytes has no such list.
  VEK_INLINE bool Fill(const Table& table) {
    uint32_t previous = 0;  // whether the byte below the current 16 is a member
    bool open = false;
    for (int32_t base = 0; base < kTableSize; base += kBlock) {
      const uint32_t members = LaneBits(LoadAligned(table.entries + base));
      // A bit where membership changes from one byte value to the next.
      for (uint32_t changes = members ^ ((members << 1 | previous) & 0xFFFFU); changes != 0;
           changes &= changes - 1) {
        const int32_t value = base + LowestBit(changes);
        if (open) {
          highest[count++] = static_cast<uint8_t>(value - 1);
        } else if (count == kMostRanges) {
          return false;
        } else {
          lowest[count] = static_cast<uint8_t>(value);
        }
        open = !open;
      }
      previous = members >> 15;
    }
    if (open) {
      highest[count++] = 255;
    }
    return !(lowest[0] == 0 && highest[0] == 255);
  }
};

}  // namespace vekch::kernels

#endif
