// SPDX-License-Identifier: MIT
/**
 * @file
 * Conversion between UTF-8 and UTF-16, in native or in swapped unit order.
 *
 * The rules that both functions share:
 *   - No text is refused: whatever is malformed passes through as described below, and the only
 * error is a null pointer.
 *   - Both lengths are read and written. On entry `*sourceLength` is the number of source elements
 *     and `*destinationLength` the capacity of the destination; on return they are the numbers of
 *     elements consumed and written. An element is a byte of UTF-8 or a 16-bit unit of UTF-16.
 *   - A conversion that stops before the end of the source stopped at a character: call again with
 *     the rest of the source and more room to go on.
 *   - A length of 0 on either side, or one below 0, which counts as 0, makes both lengths 0.
 *   - `swapped` is 0 for units in the processor's own order (little-endian); any other value swaps
 *     the two bytes of a unit (big-endian).
 *   - Nothing outside the source is read. Destination elements beyond the reported length keep
 *     their values. The UTF-16 side need not be aligned.
 *   - Source and destination must not overlap, nor may the lengths lie in either of them.
 */
#ifndef VEKCH_UTF_H
#define VEKCH_UTF_H

#include <stdint.h>

#include "vekch/export.h"
#include "vekch/status.h"

VEKCH_BEGIN_DECLS

/**
 * UTF-16 to UTF-8. `*sourceLength` counts units, `*destinationLength` bytes. Three bytes of room
 * for each unit always suffice.
 *
 * A high surrogate followed by a low one is one character of four bytes. A surrogate without its
 * partner, also a high one at the very end, is written as three bytes, like any other unit from
 * 0x0800 up. A character that does not fit into the room left ends the conversion before any
 * byte of it is written.
 *
 * Status, in order: StatusNullPointer if `source`, `sourceLength`, `destination` or
 * `destinationLength` is null, and then nothing is written; StatusNoError.
 *
 *     int32_t units = textLength, bytes = sizeof buffer;
 *     veksConvertUTF_16u8u(text, &units, buffer, &bytes, 0);
 */
VEKCH_API vekStatus veksConvertUTF_16u8u(const uint16_t* source, int32_t* sourceLength,
                                         uint8_t* destination, int32_t* destinationLength,
                                         int32_t swapped) VEKCH_NOEXCEPT;

/**
 * UTF-8 to UTF-16. `*sourceLength` counts bytes, `*destinationLength` units. As many units of room
 * as the source has bytes always suffice.
 *
 * A sequence of one to six bytes in its shortest form is one character; surrogates that come
 * encoded are taken as they are. Every byte that begins no such sequence (a continuation byte
 * without its lead, an overlong form, 0xFE, 0xFF, a sequence that the end of the source cuts off)
 * becomes the unit of its own value, 0x0080 to 0x00FF, and the conversion goes on at the next
 * byte. A value above 0x10FFFF becomes a surrogate pair that has lost the value's upper bits.
 *
 * Hazards:
 *   - The room is looked at once for each character. A character from 0x10000 up that meets ONE
 *     UNIT OF ROOM IS WRITTEN WHOLE, one unit past the capacity; the conversion ends there and
 *     reports the capacity plus 1. Never more than that one unit is overrun, and never when the
 *     room suffices for the source: let the buffer have one unit more than the capacity passed.
 *   - With `swapped` a surrogate pair is written low surrogate first, and the bytes of its units
 *     are NOT swapped. Only characters below 0x10000 come out as big-endian text.
 *
 * Status, in order: StatusNullPointer if `source`, `sourceLength`, `destination` or
 * `destinationLength` is null, and then nothing is written; StatusNoError.
 *
 *     int32_t bytes = textLength, units = bufferUnits - 1;
 *     veksConvertUTF_8u16u(text, &bytes, buffer, &units, 0);
 */
VEKCH_API vekStatus veksConvertUTF_8u16u(const uint8_t* source, int32_t* sourceLength,
                                         uint16_t* destination, int32_t* destinationLength,
                                         int32_t swapped) VEKCH_NOEXCEPT;

VEKCH_END_DECLS

#endif
