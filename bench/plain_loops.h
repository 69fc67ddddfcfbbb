// SPDX-License-Identifier: MIT

// What a program without the library would do: the obvious loops, compiled for the same processor
// (-O2 -msse3). They lie in a shared library of their own, so that a call of theirs costs what a
// call of ours does.

#ifndef VEKCH_BENCH_PLAIN_LOOPS_H
#define VEKCH_BENCH_PLAIN_LOOPS_H

#include <stdint.h>

namespace vekch_bench {

// Case mapping: the loop that compares bytes, the same left to the compiler's vectoriser, and the
// loop that calls the C library for each byte.
void PlainLowercase(const uint8_t* source, uint8_t* destination, int32_t length);
void PlainUppercase(const uint8_t* source, uint8_t* destination, int32_t length);
void VectorisedLowercase(const uint8_t* source, uint8_t* destination, int32_t length);
void VectorisedUppercase(const uint8_t* source, uint8_t* destination, int32_t length);
void ToLowerEach(const uint8_t* source, uint8_t* destination, int32_t length);
void ToUpperEach(const uint8_t* source, uint8_t* destination, int32_t length);

uint32_t PlainShiftXor8(const uint8_t* string, int32_t length);
uint32_t PlainShiftXor16(const uint16_t* string, int32_t length);
uint32_t PlainMultiply31For8(const uint8_t* string, int32_t length);
uint32_t PlainMultiply31For16(const uint16_t* string, int32_t length);
uint32_t PlainMultiply33For8(const uint8_t* string, int32_t length);
uint32_t PlainMultiply33For16(const uint16_t* string, int32_t length);

}  // namespace vekch_bench

#endif
