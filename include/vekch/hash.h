// SPDX-License-Identifier: MIT
/**
 * @file
 * Three 32-bit string hashes, for bytes (8u32u) and for 16-bit units (16u32u).
 *
 * The rules that all six functions share:
 *   - `length` counts elements, not bytes. Each element counts with its whole value, 0 to 255 or 0
 *     to 65535; equal element values give equal hashes in both forms.
 *   - Arithmetic is modulo 2^32. The values never change: they can be stored and compared later.
 *   - Only the elements given are read, only the four bytes at `hash` are written. Both may lie at
 *     any address, aligned or not.
 *   - Status, in the order of the checks: StatusNullPointer if `string` or `hash` is null (also
 *     when `length` is 0); StatusLengthError if `length` is negative; StatusNoError.
 *   - On an error nothing is written.
 *
 * None of them resists an attacker who chooses the strings.
 */
#ifndef VEKCH_HASH_H
#define VEKCH_HASH_H

#include <stdint.h>

#include "vekch/export.h"
#include "vekch/status.h"

VEKCH_BEGIN_DECLS

/**
 * Shift-xor hash: h = (h << 1) ^ c for each element c, zeros included, starting from 0. An empty
 * string gives 0.
 *
 * Hazard: only the last 32 elements count, however long the string is, and zeros before them
 * do not. The time does not grow with the length either.
 *
 * `hash` may overlap the string: it is written once, after all reading.
 *
 *     uint32_t hash;
 *     veksHash_8u32u((const uint8_t*)"abc", 3, &hash);  // 291
 */
VEKCH_API vekStatus veksHash_8u32u(const uint8_t* string, int32_t length,
                                   uint32_t* hash) VEKCH_NOEXCEPT;

/**
 * veksHash_8u32u for 16-bit units.
 *
 *     veksHash_16u32u(name, nameLength, &hash);
 */
VEKCH_API vekStatus veksHash_16u32u(const uint16_t* string, int32_t length,
                                    uint32_t* hash) VEKCH_NOEXCEPT;

/**
 * Multiply-31 hash: h = h * 31 + c for each element c, zeros included, starting from 0. An empty
 * string gives 0; zeros before a string do not count.
 *
 * Hazard: `hash` may overlap the string, but then it counts as part of it. 0 is stored before the
 * first element is read, and h after each element, before the next is read; so elements that lie
 * under `hash` are read as the bytes of the running value, lowest first, and the result is no
 * longer the hash of the string that was passed.
 *
 *     veksHashSJ2_8u32u((const uint8_t*)"abc", 3, &hash);  // 96354
 */
VEKCH_API vekStatus veksHashSJ2_8u32u(const uint8_t* string, int32_t length,
                                      uint32_t* hash) VEKCH_NOEXCEPT;

/**
 * veksHashSJ2_8u32u for 16-bit units.
 *
 *     veksHashSJ2_16u32u(name, nameLength, &hash);
 */
VEKCH_API vekStatus veksHashSJ2_16u32u(const uint16_t* string, int32_t length,
                                       uint32_t* hash) VEKCH_NOEXCEPT;

/**
 * Multiply-33 hash: h = (h * 33) ^ c for each element c before the first zero element, or all
 * elements if there is none, starting from 5381. An empty string, and one that starts with a zero
 * element, give 5381.
 *
 * Nothing after the first zero element is read, so a string that ends with one may be passed with
 * any length that is not below its own. `hash` may overlap the string: it is written once, after
 * all reading.
 *
 *     veksHashMSCS_8u32u((const uint8_t*)"abc", 3, &hash);  // 193409669
 */
VEKCH_API vekStatus veksHashMSCS_8u32u(const uint8_t* string, int32_t length,
                                       uint32_t* hash) VEKCH_NOEXCEPT;

/**
 * veksHashMSCS_8u32u for 16-bit units; the byte order within a unit is the processor's.
 *
 *     veksHashMSCS_16u32u(name, nameLength, &hash);
 */
VEKCH_API vekStatus veksHashMSCS_16u32u(const uint16_t* string, int32_t length,
                                        uint32_t* hash) VEKCH_NOEXCEPT;

VEKCH_END_DECLS

#endif
