// SPDX-License-Identifier: MIT

// Kernels of the conversions. UTF-16 is passed as bytes, since its units need not be aligned.
// Length and capacity count elements and are at least 1; they are replaced by the elements read and
// written, and StatusNoError is returned, so that the call can be the last thing that a front does.
// Nothing outside the source is read; nothing after the last element reported keeps another value
// than it had.

#ifndef VEKCH_UNICODE_UTF_KERNELS_H
#define VEKCH_UNICODE_UTF_KERNELS_H

#include <stdint.h>

#include "vekch/status.h"

namespace vekch::kernels {

// May write one unit past the capacity, where a surrogate pair meets one unit of room.
vekStatus Utf8ToUtf16(const uint8_t* source, int32_t* length, uint8_t* destination,
                      int32_t* capacity);
vekStatus Utf8ToUtf16Swapped(const uint8_t* source, int32_t* length, uint8_t* destination,
                             int32_t* capacity);

vekStatus Utf16ToUtf8(const uint8_t* source, int32_t* length, uint8_t* destination,
                      int32_t* capacity);
vekStatus Utf16SwappedToUtf8(const uint8_t* source, int32_t* length, uint8_t* destination,
                             int32_t* capacity);

}  // namespace vekch::kernels

#endif
