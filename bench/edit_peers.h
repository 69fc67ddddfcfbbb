// SPDX-License-Identifier: MIT

// Editing and trimming as a program without the library would write them, with the C library's
// copies and searches, compiled and called as the plain loops are.

#ifndef VEKCH_BENCH_EDIT_PEERS_H
#define VEKCH_BENCH_EDIT_PEERS_H

#include <stdint.h>

namespace vekch_bench {

void PlainReplace(const uint8_t* source, uint8_t* destination, int32_t length, uint8_t oldValue,
                  uint8_t newValue);

// The number of pieces; every buffer has room.
int32_t MemchrSplit(const uint8_t* source, int32_t length, uint8_t delimiter,
                    uint8_t* const* destinations, int32_t* lengths);

// The length of what is kept.
int32_t PlainTrim(const uint8_t* source, int32_t length, uint8_t value, uint8_t* destination);

// With a table of the set, filled at each call.
int32_t PlainTrimAny(const uint8_t* source, int32_t length, const uint8_t* set, int32_t setLength,
                     uint8_t* destination);
int32_t PlainTrimStartAny(const uint8_t* source, int32_t length, const uint8_t* set,
                          int32_t setLength, uint8_t* destination);
int32_t PlainTrimEndAny(const uint8_t* source, int32_t length, const uint8_t* set,
                        int32_t setLength, uint8_t* destination);

}  // namespace vekch_bench

#endif
