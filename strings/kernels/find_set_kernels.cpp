// SPDX-License-Identifier: MIT

// Search for a byte that belongs to a set:
//
//   one member       a search for that byte
//   up to 4          each block is compared with every member
//   more             first the 16 bytes where the scan starts are compared with one member after
//                    the other, so that a hit nearby costs no preparation; with up to 8 members,
//                    then 64 bytes. Short haystacks are compared so as a whole. Exceptions are sets
//                    of more than 32 members, and of more than 16 in up to 8 bytes, each of which
//                    is then searched for in the set
//   further on       up to 8 members are compared with 64 bytes a step; for more, a table of 256
//                    entries is filled and bytes are looked up
//   in long ones     ranges that cover the set are tested instead, and hits looked up, until the
//                    haystack has had too many bytes that are in a range but not in the set
//
// Tried and not kept: members kept splatted, in registers or on the stack, instead of splatting
// them anew for every 64 bytes (as fast in long haystacks, but twice the time for the first 16
// bytes); 64 bytes compared with 9 and more members before the table is filled (as much time as it
// takes to fill it and to look these bytes up); ranges from 256 bytes on (finding those of 20
// scattered members takes as long as looking 300 bytes up).

#include "strings/kernels/byte_set.h"
#include "strings/kernels/ends.h"
#include "strings/kernels/find_kernels.h"
#include "strings/kernels/scan.h"
#include "strings/kernels/taken.h"

namespace vekch::kernels {
namespace {

constexpr int32_t kFewBytes = 8;        // searched for in a large set one by one
constexpr int32_t kFewMembers = 8;      // comparing with so many is faster than looking up
constexpr int32_t kMostAtOnce = 32;     // members with which the first bytes are compared
constexpr int32_t kLongHaystack = 320;  // from here on, finding the ranges pays
constexpr int32_t kLookedUp = 64;       // bytes looked up before that

// A haystack of which the bytes where the scan starts are known to be no members.
struct Rest {
  const uint8_t* haystack;
  int32_t length;  // of the whole haystack
  int32_t passed;
};

// ---- Member after member

// Where members are in some blocks of bytes. The members come four at a time; where their number
// is no multiple of four, some are compared twice.
template <int32_t kBlocks>
VEK_INLINE uint64_t MemberBits(const Block (&bytes)[kBlocks], const uint8_t* set,
                               int32_t setLength) {
  Block hits[kBlocks] = {};
  for (int32_t m = 0; m < setLength; m += 4) {
    Block members[4];
    SplatLanes<4>(LoadFour(set + (m < setLength - 4 ? m : setLength - 4)), members);
#pragma GCC unroll 4
    for (int32_t i = 0; i < 4; ++i) {
#pragma GCC unroll 4
      for (int32_t b = 0; b < kBlocks; ++b) {
        hits[b] = hits[b] | (bytes[b] == members[i]);
      }
    }
  }
  uint64_t bits = 0;
#pragma GCC unroll 4
  for (int32_t b = 0; b < kBlocks; ++b) {
    bits |= uint64_t{LaneBits(hits[b])} << (b * kBlock);
  }
  return bits;
}

// 64 bytes in two halves: the second may overlap the first.
VEK_INLINE uint64_t MembersInHalves(const uint8_t* first, const uint8_t* second, const uint8_t* set,
                                    int32_t setLength) {
  return MemberBits<4>(
      {LoadAny(first), LoadAny(first + kBlock), LoadAny(second), LoadAny(second + kBlock)}, set,
      setLength);
}

VEK_INLINE uint64_t MembersInGroup(const uint8_t* p, const uint8_t* set, int32_t setLength) {
  return MembersInHalves(p, p + 2 * kBlock, set, setLength);
}

// In 1 to 15 bytes.
VEK_INLINE uint64_t MembersInFew(const uint8_t* p, int32_t length, const uint8_t* set,
                                 int32_t setLength) {
  int32_t half = 1;
  Block bytes;
  if (length >= 8) {
    half = 8;
    bytes = LoadEnds<8>(p, length);
  } else if (length >= 4) {
    half = 4;
    bytes = LoadEnds<4>(p, length);
  } else if (length >= 2) {
    half = 2;
    bytes = LoadEnds<2>(p, length);
  } else {
    bytes = LoadEnds<1>(p, length);
  }
  const uint64_t bits = MemberBits<1>({bytes}, set, setLength);
  const uint64_t lanes = (uint64_t{1} << half) - 1;
  return (bits & lanes) | (((bits >> half) & lanes) << (length - half));
}

template <Direction kDirection>
VEK_INLINE int32_t HitOf(uint64_t bits) {
  return kDirection == Direction::kForward ? LowestHit{}(bits) : HighestHit{}(bits);
}

// Groups of 64, the last of which ends where the scan does and overlaps the one before it. At least
// 64 bytes are passed.
template <Direction kDirection>
VEK_INLINE int32_t FindInGroups(const Rest& rest, const uint8_t* set, int32_t setLength) {
  VEKCH_TAKEN("set in groups");
  const ptrdiff_t last = ptrdiff_t{rest.length} - kGroup;
  for (ptrdiff_t passed = rest.passed; passed < rest.length; passed += kGroup) {
    const ptrdiff_t begin = passed < last ? passed : last;
    const ptrdiff_t start = kDirection == Direction::kForward ? begin : last - begin;
    if (const uint64_t bits = MembersInGroup(rest.haystack + start, set, setLength); bits != 0) {
      return static_cast<int32_t>(start) + HitOf<kDirection>(bits);
    }
  }
  return -1;
}

// ---- By a table

// The entries of four bytes, united. Four bytes of a word cost fewer loads than four bytes.
VEK_INLINE uint32_t EntriesOf(uint32_t word, const uint8_t* entries) {
  const uint32_t low = entries[word & 0xFF] | entries[(word >> 8) & 0xFF];
  word >>= 16;
  return low | entries[word & 0xFF] | entries[word >> 8];
}

template <Direction kDirection>
VEK_INLINE int32_t FindInTable(const uint8_t* haystack, int32_t length, const Table& table) {
  VEKCH_TAKEN("set in a table");
  constexpr int32_t kStep = 8;
  const auto noneAt = [&](const uint8_t* p) __attribute__((always_inline)) {
    return (EntriesOf(LoadWord<uint32_t>(p), table.entries) |
            EntriesOf(LoadWord<uint32_t>(p + 4), table.entries)) == 0;
  };
  if constexpr (kDirection == Direction::kForward) {
    int32_t i = 0;
    while (length - i >= kStep && noneAt(haystack + i)) {
      i += kStep;
    }
    while (i < length && !table.Has(haystack[i])) {
      ++i;
    }
    return i < length ? i : -1;
  } else {
    int32_t end = length;
    while (end >= kStep && noneAt(haystack + end - kStep)) {
      end -= kStep;
    }
    while (end > 0 && !table.Has(haystack[end - 1])) {
      --end;
    }
    return end - 1;
  }
}

// ---- By ranges that cover the set

constexpr int32_t kMisledTooOften = -2;

// Each byte that is in a range but no member costs about as much as 128 others: as long as there
// are no more, ranges are ahead of the table. On giving up, *rest are the bytes that remain.
template <Direction kDirection, int32_t kCount>
VEK_INLINE int32_t FindInRanges(Rest* rest, const RangeList& list, const Table& table) {
  VEKCH_TAKEN(kCount == 1   ? "set in one range"
              : kCount == 2 ? "set in two ranges"
                            : "set in ranges");
  InRanges<kCount> probe;
  for (int32_t i = 0; i < kCount; ++i) {
    const int32_t r = i < list.count ? i : 0;
    probe.ranges[i] = MakeRange(list.lowest[r], list.highest[r]);
  }
  constexpr bool kForward = kDirection == Direction::kForward;
  int32_t allowed = 4 + (rest->length - rest->passed) / 128;
  while (rest->passed < rest->length) {
    const int32_t offset = kForward ? rest->passed : 0;
    probe.haystack = rest->haystack + offset;
    const int32_t hit = ScanFor<kDirection>(probe, rest->length - rest->passed);
    if (hit < 0) {
      return -1;
    }
    const int32_t at = offset + hit;
    if (table.Has(rest->haystack[at])) {
      return at;
    }
    rest->passed = kForward ? at + 1 : rest->length - at;
    if (--allowed == 0) {
      return kMisledTooOften;
    }
  }
  return -1;
}

template <Direction kDirection>
VEK_INLINE int32_t FindRestInTable(const Rest& rest, const Table& table) {
  const int32_t offset = kDirection == Direction::kForward ? rest.passed : 0;
  const int32_t at =
      FindInTable<kDirection>(rest.haystack + offset, rest.length - rest.passed, table);
  return at < 0 ? -1 : offset + at;
}

// ---- The kernels: a function for each way that needs many registers or much of the stack, so that
// the others don't pay for them. They are no templates: g++ places instances of a template in the
// ordinary code section whatever the template says.

#define VEK_OUT_OF_LINE VEK_KERNEL __attribute__((noinline))

VEK_OUT_OF_LINE int32_t In1RangeForward(Rest* rest, const RangeList& list, const Table& table) {
  return FindInRanges<Direction::kForward, 1>(rest, list, table);
}
VEK_OUT_OF_LINE int32_t In2RangesForward(Rest* rest, const RangeList& list, const Table& table) {
  return FindInRanges<Direction::kForward, 2>(rest, list, table);
}
VEK_OUT_OF_LINE int32_t In4RangesForward(Rest* rest, const RangeList& list, const Table& table) {
  return FindInRanges<Direction::kForward, kMostRanges>(rest, list, table);
}
VEK_OUT_OF_LINE int32_t In1RangeBackward(Rest* rest, const RangeList& list, const Table& table) {
  return FindInRanges<Direction::kBackward, 1>(rest, list, table);
}
VEK_OUT_OF_LINE int32_t In2RangesBackward(Rest* rest, const RangeList& list, const Table& table) {
  return FindInRanges<Direction::kBackward, 2>(rest, list, table);
}
VEK_OUT_OF_LINE int32_t In4RangesBackward(Rest* rest, const RangeList& list, const Table& table) {
  return FindInRanges<Direction::kBackward, kMostRanges>(rest, list, table);
}

// In a long haystack.
template <Direction kDirection>
VEK_INLINE int32_t FindByRanges(Rest* rest, const Table& table) {
  RangeList list;
  if (!list.Fill(table)) {
    return kMisledTooOften;
  }
  if constexpr (kDirection == Direction::kForward) {
    return (list.count == 1   ? In1RangeForward
            : list.count == 2 ? In2RangesForward
                              : In4RangesForward)(rest, list, table);
  } else {
    return (list.count == 1   ? In1RangeBackward
            : list.count == 2 ? In2RangesBackward
                              : In4RangesBackward)(rest, list, table);
  }
}

// A set of which 64 bytes were compared with every member.
template <Direction kDirection>
VEK_INLINE int32_t FindOfSmallSet(Rest rest, const uint8_t* set, int32_t setLength) {
  if (rest.length >= kLongHaystack) {
    const Table table(set, setLength);
    if (const int32_t at = FindByRanges<kDirection>(&rest, table); at != kMisledTooOften) {
      return at;
    }
  }
  return FindInGroups<kDirection>(rest, set, setLength);
}

template <Direction kDirection>
VEK_INLINE int32_t FindOfLargeSet(Rest rest, const uint8_t* set, int32_t setLength) {
  const Table table(set, setLength);
  if (rest.length >= kLongHaystack) {
    const Rest near = {kDirection == Direction::kForward
                           ? rest.haystack
                           : rest.haystack + rest.length - rest.passed - kLookedUp,
                       rest.passed + kLookedUp, rest.passed};
    if (const int32_t at = FindRestInTable<kDirection>(near, table); at >= 0) {
      return static_cast<int32_t>(near.haystack - rest.haystack) + at;
    }
    rest.passed += kLookedUp;
    if (const int32_t at = FindByRanges<kDirection>(&rest, table); at != kMisledTooOften) {
      return at;
    }
  }
  return FindRestInTable<kDirection>(rest, table);
}

VEK_OUT_OF_LINE int32_t OfSmallSetForward(const Rest& rest, const uint8_t* set, int32_t setLength) {
  return FindOfSmallSet<Direction::kForward>(rest, set, setLength);
}
VEK_OUT_OF_LINE int32_t OfSmallSetBackward(const Rest& rest, const uint8_t* set,
                                           int32_t setLength) {
  return FindOfSmallSet<Direction::kBackward>(rest, set, setLength);
}
VEK_OUT_OF_LINE int32_t OfLargeSetForward(const Rest& rest, const uint8_t* set, int32_t setLength) {
  return FindOfLargeSet<Direction::kForward>(rest, set, setLength);
}
VEK_OUT_OF_LINE int32_t OfLargeSetBackward(const Rest& rest, const uint8_t* set,
                                           int32_t setLength) {
  return FindOfLargeSet<Direction::kBackward>(rest, set, setLength);
}

// ---- A hit nearby

template <Direction kDirection>
VEK_INLINE int32_t FindByteByByte(const uint8_t* haystack, int32_t length, const uint8_t* set,
                                  int32_t setLength) {
  VEKCH_TAKEN("set byte by byte");
  for (int32_t step = 0; step < length; ++step) {
    const int32_t i = kDirection == Direction::kForward ? step : length - 1 - step;
    if (FirstHit(EqualsByte{set, Splat(haystack[i])}, setLength) >= 0) {
      return i;
    }
  }
  return -1;
}

template <Direction kDirection>
VEK_INLINE int32_t FindOfMany(const uint8_t* haystack, int32_t length, const uint8_t* set,
                              int32_t setLength) {
  constexpr bool kForward = kDirection == Direction::kForward;
  if (length < kBlock) {
    return length <= kFewBytes && setLength > kMostMembers
               ? FindByteByByte<kDirection>(haystack, length, set, setLength)
               : HitOf<kDirection>(MembersInFew(haystack, length, set, setLength));
  }
  int32_t passed = 0;
  if (setLength <= kMostAtOnce) {
    if (length <= 2 * kBlock) {
      const int32_t tail = length - kBlock;
      const uint64_t bits =
          MemberBits<2>({LoadAny(haystack), LoadAny(haystack + tail)}, set, setLength);
      return HitOf<kDirection>((bits & 0xFFFFU) | ((bits >> kBlock) << tail));
    }
    const int32_t block = kForward ? 0 : length - kBlock;
    if (const uint64_t bits = MemberBits<1>({LoadAny(haystack + block)}, set, setLength);
        bits != 0) {
      return block + HitOf<kDirection>(bits);
    }
    passed = kBlock;
  }
  if (length <= kGroup && setLength <= kMostMembers) {
    const int32_t tail = length - 2 * kBlock;
    const uint64_t bits = MembersInHalves(haystack, haystack + tail, set, setLength);
    return HitOf<kDirection>((bits & 0xFFFFFFFFU) | ((bits >> 32) << tail));
  }
  if (setLength <= kFewMembers) {
    const int32_t group = kForward ? 0 : length - kGroup;
    if (const uint64_t bits = MembersInGroup(haystack + group, set, setLength); bits != 0) {
      return group + HitOf<kDirection>(bits);
    }
    passed = kGroup;
  }
  const Rest rest = {haystack, length, passed};
  if constexpr (kForward) {
    return (setLength <= kFewMembers ? OfSmallSetForward : OfLargeSetForward)(rest, set, setLength);
  } else {
    return (setLength <= kFewMembers ? OfSmallSetBackward : OfLargeSetBackward)(rest, set,
                                                                                setLength);
  }
}

template <Direction kDirection, int32_t kCount>
VEK_INLINE int32_t FindMember(const uint8_t* haystack, int32_t length, const uint8_t* set,
                              int32_t setLength) {
  VEKCH_TAKEN("set compared");
  return ScanFor<kDirection>(EqualsMember<kCount>(haystack, set, setLength), length);
}

VEK_OUT_OF_LINE int32_t OfManyForward(const uint8_t* haystack, int32_t length, const uint8_t* set,
                                      int32_t setLength) {
  return FindOfMany<Direction::kForward>(haystack, length, set, setLength);
}
VEK_OUT_OF_LINE int32_t OfManyBackward(const uint8_t* haystack, int32_t length, const uint8_t* set,
                                       int32_t setLength) {
  return FindOfMany<Direction::kBackward>(haystack, length, set, setLength);
}
VEK_OUT_OF_LINE int32_t Of4Forward(const uint8_t* haystack, int32_t length, const uint8_t* set,
                                   int32_t setLength) {
  return FindMember<Direction::kForward, 4>(haystack, length, set, setLength);
}
VEK_OUT_OF_LINE int32_t Of4Backward(const uint8_t* haystack, int32_t length, const uint8_t* set,
                                    int32_t setLength) {
  return FindMember<Direction::kBackward, 4>(haystack, length, set, setLength);
}

}  // namespace

VEK_KERNEL int32_t FindAnyOf(const uint8_t* haystack, int32_t length, const uint8_t* set,
                             int32_t setLength) {
  if (setLength == 1) {
    return FindByte(haystack, length, set[0]);
  }
  if (setLength > 4) {
    return OfManyForward(haystack, length, set, setLength);
  }
  return setLength > 2 ? Of4Forward(haystack, length, set, setLength)
                       : FindMember<Direction::kForward, 2>(haystack, length, set, setLength);
}

VEK_KERNEL int32_t FindLastOf(const uint8_t* haystack, int32_t length, const uint8_t* set,
                              int32_t setLength) {
  if (setLength == 1) {
    return FindLastByte(haystack, length, set[0]);
  }
  if (setLength > 4) {
    return OfManyBackward(haystack, length, set, setLength);
  }
  return setLength > 2 ? Of4Backward(haystack, length, set, setLength)
                       : FindMember<Direction::kBackward, 2>(haystack, length, set, setLength);
}

}  // namespace vekch::kernels
