// Trimming: from each end, the search for the first byte that stays. Most trims drop a byte or two,
// so an end goes through two stages:
//
//   1. up to two bytes one by one, with next to nothing prepared
//   2. if it is still open then:
//        one byte value        the scan for a byte that differs
//        up to 16 members      blocks that are compared with every member, then the last bytes one
//                              by one
//        more members          bytes looked up in a table of 256 entries that serves both ends
//
// So the cost follows the number of bytes dropped, not the length of the string.

#include "strings/kernels/trim_kernels.h"

#include "strings/kernels/byte_set.h"
#include "strings/kernels/find_kernels.h"
#include "strings/kernels/scan.h"

namespace vekch::kernels {
namespace {

constexpr int32_t kFew = 2;

// A probe for what the given probe does not hit.
template <class Probe>
struct Misses : Probe {
  static_assert(Probe::kHits == Hits::kSetLanes, "misses are its clear lanes");
  static constexpr Hits kHits = Hits::kClearLanes;
};

// What is left of a string, and whether bytes may still be dropped from its ends.
struct Trim {
  const uint8_t* source;
  Kept kept;
  bool startOpen;
  bool endOpen;

  VEK_INLINE Trim(const uint8_t* bytes, int32_t length, Ends ends)
      : source(bytes),
        kept{0, length},
        startOpen(ends != Ends::kEnd),
        endOpen(ends != Ends::kStart) {}

  VEK_INLINE bool IsEmpty() const { return kept.start == kept.end; }
  VEK_INLINE bool IsDone() const { return !(startOpen || endOpen) || IsEmpty(); }
  VEK_INLINE bool HasBlock() const { return kept.end - kept.start >= kBlock; }

  // Up to `most` bytes from each end.
  template <class Drops>
  VEK_INLINE void DropSingly(Drops drops, int32_t most) {
    for (int32_t i = 0; i < most && startOpen && !IsEmpty(); ++i) {
      startOpen = drops(source[kept.start]);
      kept.start += static_cast<int32_t>(startOpen);
    }
    for (int32_t i = 0; i < most && endOpen && !IsEmpty(); ++i) {
      endOpen = drops(source[kept.end - 1]);
      kept.end -= static_cast<int32_t>(endOpen);
    }
  }

  // Whatever is to be dropped, as long as one byte is left at entry.
  template <class Probe>
  VEK_INLINE void DropByScan(Probe probe) {
    if (startOpen) {
      probe.source = source + kept.start;
      const int32_t stays = FirstHit(probe, kept.end - kept.start);
      kept.start = stays < 0 ? kept.end : kept.start + stays;
    }
    if (endOpen && !IsEmpty()) {
      probe.source = source + kept.start;
      kept.end = kept.start + LastHit(probe, kept.end - kept.start) + 1;
    }
  }

  // As long as 16 bytes are left.
  template <class Probe>
  VEK_INLINE void DropByBlocks(const Probe& probe) {
    while (startOpen && HasBlock()) {
      const uint32_t stays = HitBits<Probe>(probe(AnyLoad{}, kept.start));
      startOpen = stays == 0;
      kept.start += startOpen ? kBlock : LowestBit(stays);
    }
    while (endOpen && HasBlock()) {
      const uint32_t stays = HitBits<Probe>(probe(AnyLoad{}, kept.end - kBlock));
      endOpen = stays == 0;
      kept.end -= endOpen ? kBlock : kBlock - 1 - HighestBit(stays);
    }
  }
};

VEK_INLINE Kept TrimOneByte(const uint8_t* source, int32_t length, uint8_t value, Ends ends) {
  Trim trim(source, length, ends);
  trim.DropSingly([=](uint8_t byte) { return byte == value; }, kFew);
  if (!trim.IsDone()) {
    trim.DropByScan(Misses<EqualsByte>{{source, Splat(value)}});
  }
  return trim.kept;
}

// For a list of more than kCount / 2 and up to kCount members.
template <int32_t kCount>
VEK_INLINE Kept TrimMembers(const uint8_t* source, int32_t length, const uint8_t* set,
                            int32_t setLength, Ends ends) {
  constexpr uint32_t kLanes = (1U << kCount) - 1;
  const Block members = LoadEnds<kCount / 2>(set, setLength);
  const auto belongs = [=](uint8_t byte) {
    return (LaneBits(Splat(byte) == members) & kLanes) != 0;
  };
  Trim trim(source, length, ends);
  trim.DropSingly(belongs, kFew);
  if (trim.IsDone()) {
    return trim.kept;
  }
  if (trim.HasBlock()) {
    trim.DropByBlocks(Misses<EqualsMember<kCount>>{{source, set, setLength}});
  }
  trim.DropSingly(belongs, kBlock);
  return trim.kept;
}

// One function for each size of a set, so that none pays for the registers and the stack of
// another.
#define VEK_TRIM_KERNEL(name, count)                                                             \
  VEK_KERNEL __attribute__((noinline)) Kept name(                                                \
      const uint8_t* source, int32_t length, const uint8_t* set, int32_t setLength, Ends ends) { \
    return TrimMembers<count>(source, length, set, setLength, ends);                             \
  }

VEK_TRIM_KERNEL(TrimSetOf2, 2)
VEK_TRIM_KERNEL(TrimSetOf4, 4)
VEK_TRIM_KERNEL(TrimSetOf8, 8)
VEK_TRIM_KERNEL(TrimSetOf16, 16)

VEK_KERNEL __attribute__((noinline)) Kept TrimLargeSet(const uint8_t* source, int32_t length,
                                                       const uint8_t* set, int32_t setLength,
                                                       Ends ends) {
  Trim trim(source, length, ends);
  trim.DropSingly([=](uint8_t byte) { return FindByte(set, setLength, byte) >= 0; }, kFew);
  if (!trim.IsDone()) {
    const Table table(set, setLength);
    trim.DropSingly([&](uint8_t byte) { return table.entries[byte] != 0; }, length);
  }
  return trim.kept;
}

}  // namespace

VEK_KERNEL Kept TrimByte(const uint8_t* source, int32_t length, uint8_t value) {
  return TrimOneByte(source, length, value, Ends::kBoth);
}

VEK_KERNEL Kept TrimSet(const uint8_t* source, int32_t length, const uint8_t* set,
                        int32_t setLength, Ends ends) {
  if (setLength <= 2) {
    return setLength == 2   ? TrimSetOf2(source, length, set, setLength, ends)
           : setLength == 1 ? TrimOneByte(source, length, set[0], ends)
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
