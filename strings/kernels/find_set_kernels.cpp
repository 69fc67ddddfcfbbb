// Search for a byte that belongs to a set. In the order in which they are tried:
//
//   1. A set of one byte is a search for that byte.
//   2. Up to 16 members: each block is compared with every member. A list of members is filled up
//      with repetitions to 2, 4, 8 or 16, so that the compiler sees a fixed count.
//   3. Larger sets with few source bytes: each source byte is compared with the whole set.
//   4. Otherwise a table of 256 entries is filled. If the members form no more than four ranges of
//      byte values and the source is long, the scan tests each block against the ranges; else it
//      looks bytes up in the table.

#include "strings/kernels/find_kernels.h"
#include "strings/kernels/scan.h"

namespace vekch::kernels {
namespace {

constexpr int32_t kMostMembers = 16;    // beyond, comparing costs more than looking up
constexpr int32_t kFewSourceBytes = 4;  // up to here a table costs more than comparing
constexpr int32_t kMostRanges = 4;      // beyond, testing ranges costs more than looking up
constexpr int32_t kLongSource = 128;    // from here on, finding the ranges pays
constexpr int32_t kTableSize = 256;

enum class Direction { kForward, kBackward };

template <Direction kDirection, class Probe>
VEK_INLINE int32_t ScanFor(const Probe& probe, int32_t length) {
  return kDirection == Direction::kForward ? FirstHit(probe, length) : LastHit(probe, length);
}

template <int32_t kCount>
struct EqualsMember {
  static constexpr Hits kHits = Hits::kSetLanes;
  const uint8_t* source;
  Block members[kCount];

  VEK_INLINE EqualsMember(const uint8_t* sourceBytes, const uint8_t* set, int32_t setLength)
      : source(sourceBytes) {
    for (int32_t i = 0; i < kCount; ++i) {
      members[i] = Splat(set[i < setLength ? i : setLength - 1]);
    }
  }

  VEK_INLINE const uint8_t* Anchor() const { return source; }

  template <class Load>
  VEK_INLINE Block operator()(Load load, ptrdiff_t i) const {
    const Block b = load(source + i);
    Block hits = b == members[0];
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

template <Direction kDirection, int32_t kCount>
VEK_INLINE int32_t FindInRanges(const uint8_t* source, int32_t length, const RangeList& list) {
  InRanges<kCount> probe;
  probe.source = source;
  for (int32_t i = 0; i < kCount; ++i) {
    const int32_t r = i < list.count ? i : 0;
    probe.ranges[i] = MakeRange(list.lowest[r], list.highest[r]);
  }
  return ScanFor<kDirection>(probe, length);
}

template <Direction kDirection>
VEK_INLINE int32_t FindInTable(const uint8_t* source, int32_t length, const Table& table) {
  const uint8_t* entries = table.entries;
  if constexpr (kDirection == Direction::kForward) {
    int32_t i = 0;
    for (; i + 4 <= length; i += 4) {
      const uint8_t* p = source + i;
      if ((entries[p[0]] | entries[p[1]] | entries[p[2]] | entries[p[3]]) != 0) {
        break;
      }
    }
    while (i < length && entries[source[i]] == 0) {
      ++i;
    }
    return i < length ? i : -1;
  } else {
    int32_t i = length;
    for (; i >= 4; i -= 4) {
      const uint8_t* p = source + i;
      if ((entries[p[-1]] | entries[p[-2]] | entries[p[-3]] | entries[p[-4]]) != 0) {
        break;
      }
    }
    while (i > 0 && entries[source[i - 1]] == 0) {
      --i;
    }
    return i - 1;
  }
}

template <Direction kDirection>
VEK_INLINE int32_t FindWithTable(const uint8_t* source, int32_t length, const uint8_t* set,
                                 int32_t setLength) {
  const Table table(set, setLength);
  RangeList list;
  if (length >= kLongSource && list.Fill(table)) {
    return list.count == 1   ? FindInRanges<kDirection, 1>(source, length, list)
           : list.count == 2 ? FindInRanges<kDirection, 2>(source, length, list)
                             : FindInRanges<kDirection, kMostRanges>(source, length, list);
  }
  return FindInTable<kDirection>(source, length, table);
}

// One function for each method, size and direction, so that none pays for the registers and the
// stack of another. They are no templates: g++ places instances of a template in the ordinary code
// section whatever the template says.
#define VEK_SET_KERNEL(name, direction, method)                                              \
  VEK_KERNEL __attribute__((noinline)) int32_t name(const uint8_t* source, int32_t length,   \
                                                    const uint8_t* set, int32_t setLength) { \
    return method;                                                                           \
  }
#define VEK_MEMBER_KERNEL(name, direction, count) \
  VEK_SET_KERNEL(name, direction,                 \
                 ScanFor<direction>(EqualsMember<count>(source, set, setLength), length))
#define VEK_TABLE_KERNEL(name, direction) \
  VEK_SET_KERNEL(name, direction, FindWithTable<direction>(source, length, set, setLength))

VEK_MEMBER_KERNEL(FindFirstOf2, Direction::kForward, 2)
VEK_MEMBER_KERNEL(FindFirstOf4, Direction::kForward, 4)
VEK_MEMBER_KERNEL(FindFirstOf8, Direction::kForward, 8)
VEK_MEMBER_KERNEL(FindFirstOf16, Direction::kForward, 16)
VEK_TABLE_KERNEL(FindFirstOfTable, Direction::kForward)
VEK_MEMBER_KERNEL(FindLastOf2, Direction::kBackward, 2)
VEK_MEMBER_KERNEL(FindLastOf4, Direction::kBackward, 4)
VEK_MEMBER_KERNEL(FindLastOf8, Direction::kBackward, 8)
VEK_MEMBER_KERNEL(FindLastOf16, Direction::kBackward, 16)
VEK_TABLE_KERNEL(FindLastOfTable, Direction::kBackward)

template <Direction kDirection>
VEK_INLINE int32_t FindByteByByte(const uint8_t* source, int32_t length, const uint8_t* set,
                                  int32_t setLength) {
  for (int32_t step = 0; step < length; ++step) {
    const int32_t i = kDirection == Direction::kForward ? step : length - 1 - step;
    if (FindByte(set, setLength, source[i]) >= 0) {
      return i;
    }
  }
  return -1;
}

}  // namespace

VEK_KERNEL int32_t FindAnyOf(const uint8_t* source, int32_t length, const uint8_t* set,
                             int32_t setLength) {
  if (setLength <= 4) {
    return setLength == 1   ? FindByte(source, length, set[0])
           : setLength == 2 ? FindFirstOf2(source, length, set, setLength)
                            : FindFirstOf4(source, length, set, setLength);
  }
  if (setLength <= kMostMembers) {
    return setLength <= 8 ? FindFirstOf8(source, length, set, setLength)
                          : FindFirstOf16(source, length, set, setLength);
  }
  return length <= kFewSourceBytes
             ? FindByteByByte<Direction::kForward>(source, length, set, setLength)
             : FindFirstOfTable(source, length, set, setLength);
}

VEK_KERNEL int32_t FindLastOf(const uint8_t* source, int32_t length, const uint8_t* set,
                              int32_t setLength) {
  if (setLength <= 4) {
    return setLength == 1   ? FindLastByte(source, length, set[0])
           : setLength == 2 ? FindLastOf2(source, length, set, setLength)
                            : FindLastOf4(source, length, set, setLength);
  }
  if (setLength <= kMostMembers) {
    return setLength <= 8 ? FindLastOf8(source, length, set, setLength)
                          : FindLastOf16(source, length, set, setLength);
  }
  return length <= kFewSourceBytes
             ? FindByteByByte<Direction::kBackward>(source, length, set, setLength)
             : FindLastOfTable(source, length, set, setLength);
}

}  // namespace vekch::kernels
