// Search for a byte that belongs to a set. In the order in which they are tried:
//
//   1. A set of one byte is a search for that byte.
//   2. Up to 16 members: each block is compared with every member. A list of members is filled up
//      with repetitions to 2, 4, 8 or 16, so that the compiler sees a fixed count.
//   3. Larger sets with few source bytes: each source byte is compared with the whole set.
//   4. Otherwise a table of 256 entries is filled. If the members form no more than four ranges of
//      byte values and the source is long, the scan tests each block against the ranges; else it
//      looks bytes up in the table.

#include "strings/kernels/byte_set.h"
#include "strings/kernels/find_kernels.h"
#include "strings/kernels/scan.h"

namespace vekch::kernels {
namespace {

constexpr int32_t kFewSourceBytes = 4;  // up to here a table costs more than comparing
constexpr int32_t kLongSource = 128;    // from here on, finding the ranges pays

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
