// SPDX-License-Identifier: MIT

// Kernels that move bytes. Lengths are 0 or more; nothing outside the given lengths is read or
// written.
//
// The copy and the fill store every byte once, but for the part of an unaligned first block that
// the aligned block after it stores again. Blocks that are large for the cache are stored past
// it, so that they don't drive out what the caller works with.

#ifndef VEKCH_STRINGS_KERNELS_BLOCK_KERNELS_H
#define VEKCH_STRINGS_KERNELS_BLOCK_KERNELS_H

#include <stdint.h>

#include "strings/kernels/cache_budget.h"

namespace vekch::kernels {

// The strings must not overlap. A caller that copies several blocks hands on what the first large
// one has learnt of the cache.
void Copy(const uint8_t* source, uint8_t* destination, int32_t length,
          CacheAnswer* cache = nullptr);

// The strings may overlap in any way.
void Move(const uint8_t* source, uint8_t* destination, int32_t length);

void Fill(uint8_t value, uint8_t* destination, int32_t length);

// The ways past the cache, which Copy and Fill take only for what is large on the processor at
// hand. The destination is aligned to 16.
void CopyPastCache(const uint8_t* source, uint8_t* destination, int32_t length);
void FillPastCache(uint8_t value, uint8_t* destination, int32_t length);
// Past a cache of that size or through it, as Fill does with what is large.
void FillForCache(uint8_t value, uint8_t* destination, int32_t length, uint32_t cacheSize);

}  // namespace vekch::kernels

#endif
