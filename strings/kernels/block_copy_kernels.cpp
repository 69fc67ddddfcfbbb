// SPDX-License-Identifier: MIT

// Block copy. Below 64 bytes: steps of 32 to 1 bytes, as the length's bits say. From 64 bytes on:
//
//   1. the first block unaligned, if the destination is; from there on stores are aligned
//   2. 64 bytes a step through the cache, from either end, the rest as below 64 bytes;
//   3. or, where the rest of the string is large for the cache, past it: in chunks of 256 KiB,
//      whose source is first brought in by reading a byte of every other cache line (hardware
//      fetches lines in pairs), so that reading and storing don't alternate on the memory's bus.

#include "strings/kernels/block_kernels.h"
#include "strings/kernels/cache_budget.h"
#include "strings/kernels/store_steps.h"
#include "strings/kernels/taken.h"
#include "strings/kernels/transform.h"

namespace vekch::kernels {
namespace {

constexpr ptrdiff_t kChunk = 256 * 1024;
constexpr ptrdiff_t kTouchStride = 128;

struct CopiedBytes {
  const uint8_t* source;

  VEK_INLINE Block BlockAt(ptrdiff_t i) const { return LoadAny(source + i); }

  template <class Word>
  VEK_INLINE Word WordAt(ptrdiff_t i) const {
    return LoadWord<Word>(source + i);
  }
};

VEK_INLINE void Touch(const uint8_t* p) { *static_cast<const volatile uint8_t*>(p); }

// A processor distinguishes a load from the stores before it by the low 12 bits of their addresses
// at first. Where a destination lies just above its source in these bits, as large buffers that
// begin on a page do, every load of a walk from the start waits for a store that has nothing to do
// with it; those of a walk from the end meet none, and take up to a tenth less.
VEK_INLINE bool BetterFromEnd(const uint8_t* source, const uint8_t* destination) {
  constexpr uintptr_t kPage = 4096;
  constexpr uintptr_t kNear = 320;
  return (reinterpret_cast<uintptr_t>(destination) - reinterpret_cast<uintptr_t>(source)) % kPage <
         kNear;
}

// A shorter walk is over before that costs anything.
constexpr int32_t kLongCopy = 4096;

// Whole groups of 64 bytes, the last one first; returns the position after them.
VEK_INLINE ptrdiff_t CopyGroupsFromEnd(const uint8_t* source, uint8_t* destination,
                                       ptrdiff_t length) {
  VEKCH_TAKEN("copy from the end");
  const ptrdiff_t end = length / kGroup * kGroup;
  const uint8_t* from = source + end;
  for (uint8_t* to = destination + end; to != destination;) {
    from -= kGroup;
    to -= kGroup;
    StoreFourDownwards(to, MapFour(from, 2 * kBlock, Same{}));
  }
  return end;
}

VEK_INLINE void CopyThroughCache(const uint8_t* source, uint8_t* destination, int32_t length) {
  const CopiedBytes supply = {source};
  const ptrdiff_t at = StoreGroups<StoreAligned>(supply, destination, 0, length);
  StoreRest(supply, destination, at, length);
}

VEK_INLINE bool GoesPastCache(int32_t length, CacheAnswer* cache) {
  if (length < kLargeBlock) {
    return false;
  }
  CacheAnswer own;
  cache = cache == nullptr ? &own : cache;
  if (!cache->known) {
    *cache = {true, CacheBudget(ReadCpuLeaves(kSharingLeaf, AskThisCpu))};
  }
  return CopyStreams(length, cache->budget);
}

// Out of line, so that other copies pay for no stack frame.
VEK_KERNEL __attribute__((noinline)) void CopyLong(const uint8_t* source, uint8_t* destination,
                                                   int32_t length, CacheAnswer* cache) {
  if (GoesPastCache(length, cache)) {
    CopyPastCache(source, destination, length);
  } else if (BetterFromEnd(source, destination)) {
    const ptrdiff_t at = CopyGroupsFromEnd(source, destination, length);
    StoreRest(CopiedBytes{source}, destination, at, length);
  } else {
    CopyThroughCache(source, destination, length);
  }
}

}  // namespace

VEK_KERNEL void CopyPastCache(const uint8_t* source, uint8_t* destination, int32_t length) {
  VEKCH_TAKEN("copy past the cache");
  const CopiedBytes supply = {source};
  ptrdiff_t at = 0;
  for (; at + kChunk <= length; at += kChunk) {
    for (ptrdiff_t i = 0; i < kChunk; i += kTouchStride) {
      Touch(source + at + i);
    }
    StreamBlocks(supply, destination, at, at + kChunk);
  }
  for (ptrdiff_t i = length - 1; i >= at; i -= kTouchStride) {
    Touch(source + i);
  }
  at = StreamBlocks(supply, destination, at, length);
  StoreFence();
  StoreRest(supply, destination, at, length);
}

VEK_KERNEL void Copy(const uint8_t* source, uint8_t* destination, int32_t length,
                     CacheAnswer* cache) {
  if (length < kGroup) {
    StoreRest(CopiedBytes{source}, destination, 0, length);
    return;
  }
  const ptrdiff_t head = StoreHead(CopiedBytes{source}, destination);
  source += head;
  destination += head;
  length -= static_cast<int32_t>(head);
  if (length >= kLongCopy) {
    CopyLong(source, destination, length, cache);
  } else {
    CopyThroughCache(source, destination, length);
  }
}

}  // namespace vekch::kernels
