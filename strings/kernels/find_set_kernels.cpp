// Search for a byte that belongs to a set:
//
//   one member          a search for that byte
//   up to 4             each block is compared with every member
//   up to 16            the same, unless the source is long
//   more                in few source bytes: each of them is searched for in the set
//   otherwise           a table of 256 entries is filled. In a long source, members that form no
//                       more than four ranges of byte values are tested as ranges; else up to 16
//                       members are compared with each block, and for more, bytes are looked up
//
// A list of members stands for 2, 4, 8 or 16 of them, so that the compiler sees a fixed count.

#include "strings/kernels/byte_set.h"
#include "strings/kernels/find_kernels.h"
#include "strings/kernels/scan.h"

namespace vekch::kernels {
namespace {

constexpr int32_t kFewSourceBytes = 12;  // up to here a table costs more than comparing
constexpr int32_t kLongSource = 256;     // from here on, finding the ranges pays

// ---- The methods, for either direction.

template <Direction kDirection, int32_t kCount>
VEK_INLINE int32_t FindMember(const uint8_t* source, int32_t length, const uint8_t* set,
                              int32_t setLength) {
  return ScanFor<kDirection>(EqualsMember<kCount>(source, set, setLength), length);
}

template <Direction kDirection>
VEK_INLINE int32_t FindByteByByte(const uint8_t* source, int32_t length, const uint8_t* set,
                                  int32_t setLength) {
  for (int32_t step = 0; step < length; ++step) {
    const int32_t i = kDirection == Direction::kForward ? step : length - 1 - step;
    if (FirstHit(EqualsByte{set, Splat(source[i])}, setLength) >= 0) {
      return i;
    }
  }
  return -1;
}

// The entries of four bytes, united. Four bytes of a word cost fewer loads than four bytes.
VEK_INLINE uint32_t EntriesOf(uint32_t word, const uint8_t* entries) {
  const uint32_t low = entries[word & 0xFF] | entries[(word >> 8) & 0xFF];
  word >>= 16;
  return low | entries[word & 0xFF] | entries[word >> 8];
}

template <Direction kDirection>
VEK_INLINE int32_t FindInTable(const uint8_t* source, int32_t length, const Table& table) {
  constexpr int32_t kStep = 8;
  const uint8_t* entries = table.entries;
  const auto noneAt = [=](const uint8_t* p) __attribute__((always_inline)) {
    return (EntriesOf(LoadWord<uint32_t>(p), entries) |
            EntriesOf(LoadWord<uint32_t>(p + 4), entries)) == 0;
  };
  if constexpr (kDirection == Direction::kForward) {
    int32_t i = 0;
    while (length - i >= kStep && noneAt(source + i)) {
      i += kStep;
    }
    while (i < length && entries[source[i]] == 0) {
      ++i;
    }
    return i < length ? i : -1;
  } else {
    int32_t end = length;
    while (end >= kStep && noneAt(source + end - kStep)) {
      end -= kStep;
    }
    while (end > 0 && entries[source[end - 1]] == 0) {
      --end;
    }
    return end - 1;
  }
}

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

// ---- The kernels: one function for each method, size and direction, so that none pays for the
// registers and the stack of another. They are no templates: g++ places instances of a template in
// the ordinary code section whatever the template says.

#define VEK_SET_KERNEL(name, method)                                                         \
  VEK_KERNEL __attribute__((noinline)) int32_t name(const uint8_t* source, int32_t length,   \
                                                    const uint8_t* set, int32_t setLength) { \
    return method(source, length, set, setLength);                                           \
  }
#define VEK_SHAPE_KERNEL(name, Shape, method)                                              \
  VEK_KERNEL __attribute__((noinline)) int32_t name(const uint8_t* source, int32_t length, \
                                                    const Shape& shape) {                  \
    return method(source, length, shape);                                                  \
  }
#define VEK_SET_KERNELS(suffix, direction)                                                   \
  VEK_SET_KERNEL(Of2##suffix, (FindMember<direction, 2>))                                    \
  VEK_SET_KERNEL(Of4##suffix, (FindMember<direction, 4>))                                    \
  VEK_SET_KERNEL(Of8##suffix, (FindMember<direction, 8>))                                    \
  VEK_SET_KERNEL(Of16##suffix, (FindMember<direction, 16>))                                  \
  VEK_SET_KERNEL(OfFew##suffix, FindByteByByte<direction>)                                   \
  VEK_SHAPE_KERNEL(InTable##suffix, Table, FindInTable<direction>)                           \
  VEK_SHAPE_KERNEL(In1Range##suffix, RangeList, (FindInRanges<direction, 1>))                \
  VEK_SHAPE_KERNEL(In2Ranges##suffix, RangeList, (FindInRanges<direction, 2>))               \
  VEK_SHAPE_KERNEL(In4Ranges##suffix, RangeList, (FindInRanges<direction, kMostRanges>))     \
  constexpr SetKernels k##suffix##Kernels = {                                                \
      Of2##suffix,     Of4##suffix,      Of8##suffix,       Of16##suffix,     OfFew##suffix, \
      InTable##suffix, In1Range##suffix, In2Ranges##suffix, In4Ranges##suffix};

struct SetKernels {
  using OfList = int32_t (*)(const uint8_t*, int32_t, const uint8_t*, int32_t);
  OfList of2, of4, of8, of16, ofFew;
  int32_t (*inTable)(const uint8_t*, int32_t, const Table&);
  int32_t (*in1Range)(const uint8_t*, int32_t, const RangeList&);
  int32_t (*in2Ranges)(const uint8_t*, int32_t, const RangeList&);
  int32_t (*in4Ranges)(const uint8_t*, int32_t, const RangeList&);
};

VEK_SET_KERNELS(Forward, Direction::kForward)
VEK_SET_KERNELS(Backward, Direction::kBackward)

// ---- The choice between the kernels of one direction.

VEK_INLINE int32_t FindOfSmallSet(const SetKernels& kernels, const uint8_t* source, int32_t length,
                                  const uint8_t* set, int32_t setLength) {
  return (setLength <= 2   ? kernels.of2
          : setLength <= 4 ? kernels.of4
          : setLength <= 8 ? kernels.of8
                           : kernels.of16)(source, length, set, setLength);
}

VEK_INLINE int32_t FindWithTable(const SetKernels& kernels, const uint8_t* source, int32_t length,
                                 const uint8_t* set, int32_t setLength) {
  const Table table(set, setLength);
  RangeList list;
  if (length < kLongSource || !list.Fill(table)) {
    return setLength <= kMostMembers ? FindOfSmallSet(kernels, source, length, set, setLength)
                                     : kernels.inTable(source, length, table);
  }
  return (list.count == 1   ? kernels.in1Range
          : list.count == 2 ? kernels.in2Ranges
                            : kernels.in4Ranges)(source, length, list);
}

VEK_KERNEL __attribute__((noinline)) int32_t FindFirstWithTable(const uint8_t* source,
                                                                int32_t length, const uint8_t* set,
                                                                int32_t setLength) {
  return FindWithTable(kForwardKernels, source, length, set, setLength);
}

VEK_KERNEL __attribute__((noinline)) int32_t FindLastWithTable(const uint8_t* source,
                                                               int32_t length, const uint8_t* set,
                                                               int32_t setLength) {
  return FindWithTable(kBackwardKernels, source, length, set, setLength);
}

// Whether no table is needed, nor worth its while for the sake of ranges.
VEK_INLINE bool NeedsNoTable(int32_t length, int32_t setLength) {
  return setLength <= 4 || (setLength <= kMostMembers && length < kLongSource);
}

}  // namespace

VEK_KERNEL int32_t FindAnyOf(const uint8_t* source, int32_t length, const uint8_t* set,
                             int32_t setLength) {
  if (setLength == 1) {
    return FindByte(source, length, set[0]);
  }
  return NeedsNoTable(length, setLength)
             ? FindOfSmallSet(kForwardKernels, source, length, set, setLength)
         : length <= kFewSourceBytes ? OfFewForward(source, length, set, setLength)
                                     : FindFirstWithTable(source, length, set, setLength);
}

VEK_KERNEL int32_t FindLastOf(const uint8_t* source, int32_t length, const uint8_t* set,
                              int32_t setLength) {
  if (setLength == 1) {
    return FindLastByte(source, length, set[0]);
  }
  return NeedsNoTable(length, setLength)
             ? FindOfSmallSet(kBackwardKernels, source, length, set, setLength)
         : length <= kFewSourceBytes ? OfFewBackward(source, length, set, setLength)
                                     : FindLastWithTable(source, length, set, setLength);
}

}  // namespace vekch::kernels
