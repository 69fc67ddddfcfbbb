// Block copy. Below 64 bytes: steps of 32 to 1 bytes, as the length's bits say. From 64 bytes on:
//
//   1. the first block unaligned, if the destination is; from there on stores are aligned
//   2. 64 bytes a step through the cache, the rest as below 64 bytes;
//   3. or, where the rest of the string is large for the cache, past it: in chunks of 256 KiB,
//      whose source is first brought in by reading a byte of every other cache line (hardware
//      fetches lines in pairs), so that reading and storing don't alternate on the memory's bus.

#include "strings/kernels/block_kernels.h"
#include "strings/kernels/cache_budget.h"
#include "strings/kernels/store_steps.h"

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

VEK_INLINE void CopyThroughCache(const uint8_t* source, uint8_t* destination, int32_t length) {
  const CopiedBytes supply = {source};
  const ptrdiff_t at = StoreGroups<StoreAligned>(supply, destination, 0, length);
  StoreRest(supply, destination, at, length);
}

// Out of line, so that other copies pay for no stack frame.
VEK_KERNEL __attribute__((noinline)) void CopyLarge(const uint8_t* source, uint8_t* destination,
                                                    int32_t length) {
  if (CopyStreams(length, CacheBudget(ReadCpuLeaves(kSharingLeaf)))) {
    CopyPastCache(source, destination, length);
  } else {
    CopyThroughCache(source, destination, length);
  }
}

}  // namespace

VEK_KERNEL void CopyPastCache(const uint8_t* source, uint8_t* destination, int32_t length) {
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

VEK_KERNEL void Copy(const uint8_t* source, uint8_t* destination, int32_t length) {
  if (length < kGroup) {
    StoreRest(CopiedBytes{source}, destination, 0, length);
    return;
  }
  const ptrdiff_t head = StoreHead(CopiedBytes{source}, destination);
  source += head;
  destination += head;
  length -= static_cast<int32_t>(head);
  if (length >= kLargeBlock) {
    CopyLarge(source, destination, length);
  } else {
    CopyThroughCache(source, destination, length);
  }
}

}  // namespace vekch::kernels
