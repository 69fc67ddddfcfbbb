// SPDX-License-Identifier: MIT

// How much cache a block may use before it is better stored past it. The figures are computed from
// what the processor says of itself each time they are needed: nothing is kept between calls.

#ifndef VEKCH_STRINGS_KERNELS_CACHE_BUDGET_H
#define VEKCH_STRINGS_KERNELS_CACHE_BUDGET_H

#include <stdint.h>

namespace vekch::kernels {

// The answers of the CPUID instruction that the figures depend on.
struct CpuLeaves {
  uint32_t highest;         // leaf 0, eax: the highest leaf there is
  uint32_t vendor[3];       // leaf 0, ebx, edx, ecx: twelve letters
  uint32_t descriptors[4];  // leaf 2, eax to edx: one byte for each cache and buffer
  uint32_t sharing;         // leaf 4, eax: bits 26 to 31 count the sharing cores, less one
};

constexpr uint32_t kDescriptorLeaf = 2;
constexpr uint32_t kSharingLeaf = 4;

struct CpuRegisters {
  uint32_t a, b, c, d;
};

using AskCpu = CpuRegisters (*)(uint32_t leaf);

// Asks for leaves up to `last`, and for none that can't matter any more, since an answer takes
// microseconds in a virtual machine: most processors of today describe no cache in the descriptors,
// and are done with one question. Leaves that aren't there, or weren't asked for, are zero.
CpuLeaves ReadCpuLeaves(uint32_t last, AskCpu ask);

// This processor.
CpuRegisters AskThisCpu(uint32_t leaf);

constexpr uint32_t kUnknownCache = 0;

// Size in bytes of the largest cache.
uint32_t CacheSize(const CpuLeaves& leaves);

// The calling core's share of it.
uint32_t CacheBudget(const CpuLeaves& leaves);

// What a call has learnt, for the further blocks that it copies. It ends with the call.
struct CacheAnswer {
  bool known = false;
  uint32_t budget = kUnknownCache;
};

// Below this nobody asks.
constexpr int32_t kLargeBlock = 512 * 1024;

// Whether a block goes past the cache: a copy, which fills the cache twice over, from half of its
// budget on; a fill from the size of the whole cache on, shared or not.
constexpr bool CopyStreams(int64_t length, uint32_t budget) {
  return length >= kLargeBlock && budget != kUnknownCache && 2 * length >= budget;
}

constexpr bool FillStreams(int64_t length, uint32_t cacheSize) {
  return length >= kLargeBlock && cacheSize != kUnknownCache && length >= cacheSize;
}

}  // namespace vekch::kernels

#endif
