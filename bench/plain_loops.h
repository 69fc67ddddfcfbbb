// What a program without the library would do: the obvious loops, as a compiler makes them for the
// same processor (-O2 -msse3), called as functions.

#ifndef VEKCH_BENCH_PLAIN_LOOPS_H
#define VEKCH_BENCH_PLAIN_LOOPS_H

#include <stdint.h>

namespace vekch_bench {

void PlainLowercase(const uint8_t* source, uint8_t* destination, int32_t length);
void PlainUppercase(const uint8_t* source, uint8_t* destination, int32_t length);
// The same with the C library's function for each byte.
void ToLowerEach(const uint8_t* source, uint8_t* destination, int32_t length);
void ToUpperEach(const uint8_t* source, uint8_t* destination, int32_t length);

uint32_t PlainShiftXor(const uint8_t* string, int32_t length);
uint32_t PlainShiftXor(const uint16_t* string, int32_t length);
uint32_t PlainMultiply31(const uint8_t* string, int32_t length);
uint32_t PlainMultiply31(const uint16_t* string, int32_t length);
uint32_t PlainMultiply33(const uint8_t* string, int32_t length);
uint32_t PlainMultiply33(const uint16_t* string, int32_t length);

}  // namespace vekch_bench

#endif
