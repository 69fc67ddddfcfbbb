// SPDX-License-Identifier: MIT

// Block fill: the steps of the copy with one byte value as their supply. It goes past the cache
// only from the size of the whole cache on.

#include "strings/kernels/block_kernels.h"
#include "strings/kernels/cache_budget.h"
#include "strings/kernels/store_steps.h"
#include "strings/kernels/taken.h"

namespace vekch::kernels {
namespace {

struct RepeatedByte {
  Block block;
  uint64_t word;

  VEK_INLINE explicit RepeatedByte(uint8_t value)
      : block(Splat(value)), word(value * UINT64_C(0x0101010101010101)) {}

  VEK_INLINE Block BlockAt(ptrdiff_t /*i*/) const { return block; }

  template <class Word>
  VEK_INLINE Word WordAt(ptrdiff_t /*i*/) const {
    return static_cast<Word>(word);
  }
};

VEK_INLINE void FillThroughCache(const RepeatedByte& supply, uint8_t* destination, int32_t length) {
  const ptrdiff_t at = StoreGroups<StoreAligned>(supply, destination, 0, length);
  StoreRest(supply, destination, at, length);
}

// Out of line, so that other fills pay for no stack frame.
VEK_KERNEL __attribute__((noinline)) void FillLarge(uint8_t value, uint8_t* destination,
                                                    int32_t length) {
  FillForCache(value, destination, length, CacheSize(ReadCpuLeaves(kDescriptorLeaf, AskThisCpu)));
}

}  // namespace

VEK_KERNEL void FillForCache(uint8_t value, uint8_t* destination, int32_t length,
                             uint32_t cacheSize) {
  if (FillStreams(length, cacheSize)) {
    FillPastCache(value, destination, length);
  } else {
    FillThroughCache(RepeatedByte(value), destination, length);
  }
}

VEK_KERNEL void FillPastCache(uint8_t value, uint8_t* destination, int32_t length) {
  VEKCH_TAKEN("fill past the cache");
  const RepeatedByte supply(value);
  const ptrdiff_t at = StreamBlocks(supply, destination, 0, length);
  StoreFence();
  StoreRest(supply, destination, at, length);
}

VEK_KERNEL void Fill(uint8_t value, uint8_t* destination, int32_t length) {
  const RepeatedByte supply(value);
  if (length < kGroup) {
    StoreRest(supply, destination, 0, length);
    return;
  }
  const ptrdiff_t head = StoreHead(supply, destination);
  destination += head;
  length -= static_cast<int32_t>(head);
  if (length >= kLargeBlock) {
    FillLarge(value, destination, length);
  } else {
    FillThroughCache(supply, destination, length);
  }
}

}  // namespace vekch::kernels
