// SPDX-License-Identifier: MIT

// Trimming: from each end, the search for the first byte that stays. Most trims drop a byte or two,
// so an end goes through two stages:
//
//   1. a few bytes one by one, with next to nothing prepared; branches that are predicted also let
//      the copy start before the search has ended
//   2. if it is still open then:
//        one byte value        the scan for a byte that differs
//        up to 16 members      blocks that are compared with every member, then the last bytes one
//                              by one
//        more members          bytes looked up in a table of 256 entries that serves both ends
//
// So the cost follows the number of bytes dropped, not the length of the string.

#ifndef VEKCH_STRINGS_KERNELS_TRIM_KERNELS_H
#define VEKCH_STRINGS_KERNELS_TRIM_KERNELS_H

#include "strings/kernels/block.h"

namespace vekch::kernels {

// The ends from which bytes are dropped.
enum class Ends { kStart, kEnd, kBoth };

// The bytes from position `start` up to `end`; if none is kept, start == end.
struct Kept {
  int32_t start;
  int32_t end;
};

// How many bytes the first stage takes from each end: what the second needs to start is worth.
constexpr int32_t kFewForByte = 16;
constexpr int32_t kFewForMembers = 4;
constexpr int32_t kFewForLargeSet = 2;

// Drops the bytes for which `drops` holds: up to kMost from each end here, and what remains by
// `dropRest`, which is given the ends that are still open. At least one byte is left then.
template <int32_t kMost, class Drops, class DropRest>
VEK_INLINE Kept Trim(const uint8_t* source, int32_t length, Ends ends, Drops drops,
                     DropRest dropRest) {
  const bool fromStart = ends != Ends::kEnd;
  const bool fromEnd = ends != Ends::kStart;
  int32_t start = 0;
  const int32_t startLimit = !fromStart ? 0 : length < kMost ? length : kMost;
  while (start < startLimit && drops(source[start])) {
    ++start;
  }
  int32_t end = length;
  const int32_t endLimit = !fromEnd ? length : length - start < kMost ? start : length - kMost;
  while (end > endLimit && drops(source[end - 1])) {
    --end;
  }
  const bool startOpen = fromStart && start == startLimit;
  const bool endOpen = fromEnd && end == endLimit;
  if (__builtin_expect(startOpen | endOpen, 0) && start < end) {
    return dropRest(start, end, startOpen, endOpen);
  }
  return {start, end};
}

// The second stage for one byte value.
Kept DropByScan(const uint8_t* source, int32_t start, int32_t end, bool startOpen, bool endOpen,
                uint8_t value);

// Drops bytes equal to `value`.
VEK_INLINE Kept TrimByte(const uint8_t* source, int32_t length, uint8_t value, Ends ends) {
  return Trim<kFewForByte>(
      source, length, ends, [=](uint8_t byte) { return byte == value; },
      [=](int32_t start, int32_t end, bool startOpen, bool endOpen) {
        return DropByScan(source, start, end, startOpen, endOpen, value);
      });
}

// Drops bytes that belong to the set of the listed byte values; an empty set drops nothing.
Kept TrimSet(const uint8_t* source, int32_t length, const uint8_t* set, int32_t setLength,
             Ends ends);

}  // namespace vekch::kernels

#endif
