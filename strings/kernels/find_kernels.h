// SPDX-License-Identifier: MIT

// Kernels of the search family. Lengths are at least 1 and a needle is no longer than its haystack;
// only the given bytes are read, except where a kernel says otherwise. Every kernel returns the
// position found, or -1.

#ifndef VEKCH_STRINGS_KERNELS_FIND_KERNELS_H
#define VEKCH_STRINGS_KERNELS_FIND_KERNELS_H

#include <stdint.h>

namespace vekch::kernels {

int32_t FindByte(const uint8_t* haystack, int32_t length, uint8_t value);
int32_t FindLastByte(const uint8_t* haystack, int32_t length, uint8_t value);

int32_t FindSubstring(const uint8_t* haystack, int32_t length, const uint8_t* needle,
                      int32_t needleLength);
int32_t FindLastSubstring(const uint8_t* haystack, int32_t length, const uint8_t* needle,
                          int32_t needleLength);

// Of two zero-terminated strings, the second of which may be empty and then is found nowhere. They
// are read in aligned groups of 64 bytes that hold one of their bytes or their terminator.
int32_t FindInTerminated(const uint8_t* haystack, const uint8_t* needle);

int32_t FindAnyOf(const uint8_t* haystack, int32_t length, const uint8_t* set, int32_t setLength);
int32_t FindLastOf(const uint8_t* haystack, int32_t length, const uint8_t* set, int32_t setLength);

}  // namespace vekch::kernels

#endif
