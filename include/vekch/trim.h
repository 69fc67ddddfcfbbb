// SPDX-License-Identifier: MIT
/**
 * @file
 * Trimming: dropping a byte value, or the bytes of a set, from the ends of a string.
 *
 * The rules that all five functions share:
 *   - What is kept reaches from the first byte that is not to be dropped to the last. It is stored
 *     at the start of the destination, and its length, 0 if nothing is kept, through a pointer.
 *   - Lengths count bytes; zero bytes are ordinary bytes.
 *   - The destination has room for as many bytes as the source has. Its bytes after the reported
 *     length are not touched.
 *   - `destination` may equal `source`: the bytes that are kept move to its start then, and those
 *     after the new end stay as they were. Hazard: any other overlap of the two gives unspecified
 *     bytes in the destination. The set must not overlap the destination, and no length that is
 *     written may lie inside a string.
 *   - On an error nothing is written.
 *
 * Apart from the copy, time grows with the number of bytes dropped, not with the length of the
 * source.
 */
#ifndef VEKCH_TRIM_H
#define VEKCH_TRIM_H

#include <stdint.h>

#include "vekch/export.h"
#include "vekch/status.h"

VEKCH_BEGIN_DECLS

/**
 * Copies the source without the bytes `value` at its start and at its end.
 *
 * Status, in order: StatusNullPointer if `source`, `destination` or `destinationLength` is null;
 * StatusLengthError if `sourceLength` is negative; StatusNoError.
 *
 *     veksTrimC_8u(field, fieldLength, ' ', text, &textLength);
 */
VEKCH_API vekStatus veksTrimC_8u(const uint8_t* source, int32_t sourceLength, uint8_t value,
                                 uint8_t* destination, int32_t* destinationLength) VEKCH_NOEXCEPT;

/**
 * The same in place: `*length` is the buffer's length on entry and that of what is kept on return.
 *
 * Status, in order: StatusNullPointer if `buffer` or `length` is null; StatusLengthError if
 * `*length` is negative; StatusNoError.
 *
 *     veksTrimC_8u_I(text, &textLength, ' ');
 */
VEKCH_API vekStatus veksTrimC_8u_I(uint8_t* buffer, int32_t* length, uint8_t value) VEKCH_NOEXCEPT;

/**
 * Copies the source without the bytes at its start and at its end that belong to the set of byte
 * values listed in `set`. Order and repetitions in the list do not matter; an empty set drops
 * nothing.
 *
 * Status, in order: StatusNullPointer if `source`, `destination`, `set` or `destinationLength` is
 * null; StatusLengthError if `sourceLength`, then `setLength`, is negative; StatusNoError.
 *
 *     veksTrimCAny_8u(line, lineLength, (const uint8_t*)" \t\r\n", 4, text, &textLength);
 */
VEKCH_API vekStatus veksTrimCAny_8u(const uint8_t* source, int32_t sourceLength, const uint8_t* set,
                                    int32_t setLength, uint8_t* destination,
                                    int32_t* destinationLength) VEKCH_NOEXCEPT;

/**
 * The same at the start only; bytes of the set at the end are kept.
 *
 *     veksTrimStartCAny_8u(digits, digitsLength, (const uint8_t*)"0", 1, number, &numberLength);
 */
VEKCH_API vekStatus veksTrimStartCAny_8u(const uint8_t* source, int32_t sourceLength,
                                         const uint8_t* set, int32_t setLength,
                                         uint8_t* destination,
                                         int32_t* destinationLength) VEKCH_NOEXCEPT;

/**
 * The same at the end only; bytes of the set at the start are kept.
 *
 *     veksTrimEndCAny_8u(line, lineLength, (const uint8_t*)"\r\n", 2, text, &textLength);
 */
VEKCH_API vekStatus veksTrimEndCAny_8u(const uint8_t* source, int32_t sourceLength,
                                       const uint8_t* set, int32_t setLength, uint8_t* destination,
                                       int32_t* destinationLength) VEKCH_NOEXCEPT;

VEKCH_END_DECLS

#endif
