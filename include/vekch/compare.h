// SPDX-License-Identifier: MIT
/**
 * @file
 * Comparison of two byte strings of one common length.
 *
 * The rules that all three functions share:
 *   - Bytes are unsigned, 0 to 255; zero bytes are ordinary bytes. `length` counts bytes.
 *   - Only `length` bytes of each string are read. The strings may overlap or be the same.
 *   - Status, in the order of the checks: StatusNullPointer if `first`, `second` or `result` is
 *     null (also when `length` is 0); StatusLengthError if `length` is negative; StatusNoError.
 *   - On an error nothing is written.
 */
#ifndef VEKCH_COMPARE_H
#define VEKCH_COMPARE_H

#include <stdint.h>

#include "vekch/export.h"
#include "vekch/status.h"

VEKCH_BEGIN_DECLS

/**
 * Three-way comparison. Writes 0 if the strings are equal (an empty string equals an empty
 * string), otherwise first[i] - second[i] at the lowest index i at which they differ: a value from
 * -255 to 255, not reduced to its sign.
 *
 *     int32_t order;
 *     veksCompare_8u(a, b, 12, &order);  // order < 0: a sorts before b
 */
VEKCH_API vekStatus veksCompare_8u(const uint8_t* first, const uint8_t* second, int32_t length,
                                   int32_t* result) VEKCH_NOEXCEPT;

/**
 * Three-way comparison in which the 26 ASCII capitals count as the small letters; no byte above
 * 127 is folded. Writes 0 if the folded strings are equal, otherwise the difference of the folded
 * bytes at the lowest index at which these differ. Letters therefore sort after the bytes 91 to
 * 96: "[" against "A" gives 91 - 97.
 *
 *     veksCompareIgnoreCaseLatin_8u(name, (const uint8_t*)"content-type", 12, &order);
 */
VEKCH_API vekStatus veksCompareIgnoreCaseLatin_8u(const uint8_t* first, const uint8_t* second,
                                                  int32_t length, int32_t* result) VEKCH_NOEXCEPT;

/**
 * Equality. Writes 1 if the strings are equal (always, for length 0), otherwise 0.
 *
 *     int32_t same;
 *     veksEqual_8u(key, wanted, 16, &same);
 */
VEKCH_API vekStatus veksEqual_8u(const uint8_t* first, const uint8_t* second, int32_t length,
                                 int32_t* result) VEKCH_NOEXCEPT;

VEKCH_END_DECLS

#endif
