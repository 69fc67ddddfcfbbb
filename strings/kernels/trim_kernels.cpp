// SPDX-License-Identifier: MIT

// The second stages of trimming, and the kernels for sets.

#include "strings/kernels/trim_kernels.h"

#include "strings/kernels/byte_set.h"
#include "strings/kernels/scan.h"

namespace vekch::kernels {
namespace {

// A probe for what the given probe does not hit.
template <class Probe>
struct Misses : Probe {
  static_assert(Probe::kHits == Hits::kSetLanes, "misses are its clear lanes");
  static constexpr Hits kHits = Hits::kClearLanes;
};

// Second stages: each takes the range that is left, at least one byte, and returns where the kept
// bytes start, or end, in it.
struct ByScan {
  const uint8_t* source;
  Block value;

  VEK_INLINE int32_t Start(int32_t from, int32_t to) const {
    const int32_t stays = FirstHit(Misses<EqualsByte>{{source + from, value}}, to - from);
    return stays < 0 ? to : from + stays;
  }

  VEK_INLINE int32_t End(int32_t from, int32_t to) const {
    return from + LastHit(Misses<EqualsByte>{{source + from, value}}, to - from) + 1;
  }
};

// The members of a set, for bytes that are tested one by one.
template <int32_t kCount>
struct MemberLanes {
  Block members;

  VEK_INLINE bool operator()(uint8_t byte) const {
    constexpr uint32_t kLanes = (1U << kCount) - 1;
    return (LaneBits(Splat(byte) == members) & kLanes) != 0;
  }
};

template <int32_t kCount>
struct ByBlocks {
  using Probe = Misses<EqualsMember<kCount>>;

  Probe probe;
  MemberLanes<kCount> belongs;

  VEK_INLINE int32_t Start(int32_t from, int32_t to) const {
    for (; to - from >= kBlock; from += kBlock) {
      if (const uint32_t stays = HitBits<Probe>(probe(AnyLoad{}, from)); stays != 0) {
        return from + LowestBit(stays);
      }
    }
    while (from < to && belongs(probe.source[from])) {
      ++from;
    }
    return from;
  }

  VEK_INLINE int32_t End(int32_t from, int32_t to) const {
    for (; to - from >= kBlock; to -= kBlock) {
      if (const uint32_t stays = HitBits<Probe>(probe(AnyLoad{}, to - kBlock)); stays != 0) {
        return to - kBlock + HighestBit(stays) + 1;
      }
    }
    while (from < to && belongs(probe.source[to - 1])) {
      --to;
    }
    return to;
  }
};

// The same for a list of 16 members or more, block by block.
struct ListedBytes {
  const uint8_t* set;
  int32_t length;

  VEK_INLINE bool operator()(uint8_t byte) const {
    const Block value = Splat(byte);
    Block hits = LoadAny(set + length - kBlock) == value;
    for (int32_t i = 0; i < length - kBlock; i += kBlock) {
      hits = hits | (LoadAny(set + i) == value);
    }
    return LaneBits(hits) != 0;
  }
};

struct ByTable {
  const uint8_t* source;
  Table table;

  VEK_INLINE int32_t Start(int32_t from, int32_t to) const {
    const uint8_t* entries = table.entries;
    for (; to - from >= 4; from += 4) {
      const uint8_t* p = source + from;
      if ((entries[p[0]] & entries[p[1]] & entries[p[2]] & entries[p[3]]) == 0) {
        break;
      }
    }
    while (from < to && entries[source[from]] != 0) {
      ++from;
    }
    return from;
  }

  VEK_INLINE int32_t End(int32_t from, int32_t to) const {
    const uint8_t* entries = table.entries;
    for (; to - from >= 4; to -= 4) {
      const uint8_t* p = source + to;
      if ((entries[p[-1]] & entries[p[-2]] & entries[p[-3]] & entries[p[-4]]) == 0) {
        break;
      }
    }
    while (from < to && entries[source[to - 1]] != 0) {
      --to;
    }
    return to;
  }
};

// A second stage as Trim calls it: made when it is needed, of what `plan` keeps. (A lambda that
// makes it may be left out of line, and then lies outside of VEKCODE.)
template <class Plan>
struct DropRest {
  Plan plan;

  VEK_INLINE Kept operator()(int32_t start, int32_t end, bool startOpen, bool endOpen) const {
    const auto stage = plan.Make();
    start = startOpen ? stage.Start(start, end) : start;
    end = endOpen && start < end ? stage.End(start, end) : end;
    return {start, end};
  }
};

template <class Plan>
DropRest(Plan) -> DropRest<Plan>;

struct ScanPlan {
  const uint8_t* source;
  uint8_t value;

  VEK_INLINE ByScan Make() const { return {source, Splat(value)}; }
};

template <int32_t kCount>
struct BlocksPlan {
  const uint8_t* source;
  const uint8_t* set;
  int32_t setLength;
  MemberLanes<kCount> belongs;

  VEK_INLINE ByBlocks<kCount> Make() const { return {{{source, set, setLength}}, belongs}; }
};

struct TablePlan {
  const uint8_t* source;
  const uint8_t* set;
  int32_t setLength;

  VEK_INLINE ByTable Make() const { return {source, Table(set, setLength)}; }
};

// For a list of more than kCount / 2 and up to kCount members.
template <int32_t kCount>
VEK_INLINE Kept TrimMembers(const uint8_t* source, int32_t length, const uint8_t* set,
                            int32_t setLength, Ends ends) {
  const MemberLanes<kCount> belongs = {LoadEnds<kCount / 2>(set, setLength)};
  return Trim<kFewForMembers>(source, length, ends, belongs,
                              DropRest{BlocksPlan<kCount>{source, set, setLength, belongs}});
}

VEK_INLINE Kept TrimEqual(const uint8_t* source, int32_t length, const uint8_t* set,
                          int32_t /*setLength*/, Ends ends) {
  return TrimByte(source, length, set[0], ends);
}

VEK_INLINE Kept TrimLarge(const uint8_t* source, int32_t length, const uint8_t* set,
                          int32_t setLength, Ends ends) {
  const ListedBytes belongs = {set, setLength};
  return Trim<kFewForLargeSet>(source, length, ends, belongs,
                               DropRest{TablePlan{source, set, setLength}});
}

// One function for each size of a set, so that none pays for the registers and the stack of
// another. They are no instances of one template: g++ places those in the ordinary code section
// whatever the template says.

VEK_KERNEL __attribute__((noinline)) Kept TrimSetOf1(const uint8_t* source, int32_t length,
                                                     const uint8_t* set, int32_t setLength,
                                                     Ends ends) {
  return TrimEqual(source, length, set, setLength, ends);
}

VEK_KERNEL __attribute__((noinline)) Kept TrimSetOf2(const uint8_t* source, int32_t length,
                                                     const uint8_t* set, int32_t setLength,
                                                     Ends ends) {
  return TrimMembers<2>(source, length, set, setLength, ends);
}

VEK_KERNEL __attribute__((noinline)) Kept TrimSetOf4(const uint8_t* source, int32_t length,
                                                     const uint8_t* set, int32_t setLength,
                                                     Ends ends) {
  return TrimMembers<4>(source, length, set, setLength, ends);
}

VEK_KERNEL __attribute__((noinline)) Kept TrimSetOf8(const uint8_t* source, int32_t length,
                                                     const uint8_t* set, int32_t setLength,
                                                     Ends ends) {
  return TrimMembers<8>(source, length, set, setLength, ends);
}

VEK_KERNEL __attribute__((noinline)) Kept TrimSetOf16(const uint8_t* source, int32_t length,
                                                      const uint8_t* set, int32_t setLength,
                                                      Ends ends) {
  return TrimMembers<16>(source, length, set, setLength, ends);
}

VEK_KERNEL __attribute__((noinline)) Kept TrimLargeSet(const uint8_t* source, int32_t length,
                                                       const uint8_t* set, int32_t setLength,
                                                       Ends ends) {
  return TrimLarge(source, length, set, setLength, ends);
}

}  // namespace

VEK_KERNEL Kept DropByScan(const uint8_t* source, int32_t start, int32_t end, bool startOpen,
                           bool endOpen, uint8_t value) {
  return DropRest{ScanPlan{source, value}}(start, end, startOpen, endOpen);
}

VEK_KERNEL Kept TrimSet(const uint8_t* source, int32_t length, const uint8_t* set,
                        int32_t setLength, Ends ends) {
  if (setLength <= 2) {
    return setLength == 2   ? TrimSetOf2(source, length, set, setLength, ends)
           : setLength == 1 ? TrimSetOf1(source, length, set, setLength, ends)
                            : Kept{0, length};
  }
  if (setLength <= kMostMembers) {
    return setLength <= 4   ? TrimSetOf4(source, length, set, setLength, ends)
           : setLength <= 8 ? TrimSetOf8(source, length, set, setLength, ends)
                            : TrimSetOf16(source, length, set, setLength, ends);
  }
  return TrimLargeSet(source, length, set, setLength, ends);
}

}  // namespace vekch::kernels
