// SPDX-License-Identifier: MIT
/**
 * @file
 * Case mapping of the 26 ASCII letters.
 *
 * The rules that all four functions share:
 *   - Only the bytes 65 to 90 ("A" to "Z") or 97 to 122 ("a" to "z") change. No byte above 127
 *     does, so the letters of no other character set are mapped, and UTF-8 stays valid.
 *   - `length` counts bytes; zero bytes are ordinary bytes. Exactly `length` bytes are read and
 *     written; with length 0 none is.
 *   - Status, in the order of the checks: StatusNullPointer if a pointer is null (also when
 *     `length` is 0); StatusLengthError if `length` is negative; StatusNoError.
 *   - On an error nothing is written.
 */
#ifndef VEKCH_CASE_H
#define VEKCH_CASE_H

#include <stdint.h>

#include "vekch/export.h"
#include "vekch/status.h"

VEKCH_BEGIN_DECLS

/**
 * Copies the source with its capitals turned into small letters.
 *
 * `destination` may equal `source`. Hazard: any other overlap of the two gives unspecified bytes in
 * the destination.
 *
 *     veksLowercaseLatin_8u(name, folded, nameLength);  // "Content-Type" gives "content-type"
 */
VEKCH_API vekStatus veksLowercaseLatin_8u(const uint8_t* source, uint8_t* destination,
                                          int32_t length) VEKCH_NOEXCEPT;

/**
 * Turns the capitals of a buffer into small letters, in place.
 *
 *     veksLowercaseLatin_8u_I(name, nameLength);
 */
VEKCH_API vekStatus veksLowercaseLatin_8u_I(uint8_t* buffer, int32_t length) VEKCH_NOEXCEPT;

/**
 * Copies the source with its small letters turned into capitals. Overlap as for
 * veksLowercaseLatin_8u.
 *
 *     veksUppercaseLatin_8u(word, shouted, wordLength);  // "get" gives "GET"
 */
VEKCH_API vekStatus veksUppercaseLatin_8u(const uint8_t* source, uint8_t* destination,
                                          int32_t length) VEKCH_NOEXCEPT;

/**
 * Turns the small letters of a buffer into capitals, in place.
 *
 *     veksUppercaseLatin_8u_I(word, wordLength);
 */
VEKCH_API vekStatus veksUppercaseLatin_8u_I(uint8_t* buffer, int32_t length) VEKCH_NOEXCEPT;

VEKCH_END_DECLS

#endif
