// SPDX-License-Identifier: MIT
/**
 * @file
 * Search for a byte, a byte of a set, or a substring, forwards and backwards.
 *
 * The rules that all eight functions share:
 *   - Bytes are unsigned; zero bytes are ordinary bytes except in the _Z functions. Lengths count
 *     bytes.
 *   - The result is written through `index`: the zero-based position, from the start of `haystack`,
 *     of the first byte of the occurrence, or -1 where there is none. Not finding something is
 *     StatusNoError.
 *   - The strings are only read, so they may overlap; `index` must not lie inside them. No byte
 *     outside the given lengths is read (see the _Z functions for theirs).
 *   - On an error nothing is written.
 *
 * Time grows linearly with the length of the haystack for every needle and every set.
 */
#ifndef VEKCH_FIND_H
#define VEKCH_FIND_H

#include <stdint.h>

#include "vekch/export.h"
#include "vekch/status.h"

VEKCH_BEGIN_DECLS

/**
 * Lowest index at which the whole needle occurs in the haystack.
 *
 * An empty needle is found nowhere: it gives -1, not 0. So does a needle longer than the haystack.
 *
 * Status, in order: StatusNullPointer if `haystack`, `needle` or `index` is null; StatusLengthError
 * if `haystackLength`, then `needleLength`, is negative; StatusNoError.
 *
 *     veksFind_8u(text, textLength, (const uint8_t*)"error", 5, &index);
 */
VEKCH_API vekStatus veksFind_8u(const uint8_t* haystack, int32_t haystackLength,
                                const uint8_t* needle, int32_t needleLength,
                                int32_t* index) VEKCH_NOEXCEPT;

/**
 * Highest index at which the whole needle occurs in the haystack; occurrences may overlap, so "aa"
 * in "aaa" gives 1. Empty and too long needles, and the statuses, as for veksFind_8u.
 *
 *     veksFindRev_8u(path, pathLength, (const uint8_t*)"..", 2, &index);
 */
VEKCH_API vekStatus veksFindRev_8u(const uint8_t* haystack, int32_t haystackLength,
                                   const uint8_t* needle, int32_t needleLength,
                                   int32_t* index) VEKCH_NOEXCEPT;

/**
 * Lowest index of the byte `value`; -1 for an empty haystack.
 *
 * Status, in order: StatusNullPointer if `haystack` or `index` is null; StatusLengthError if
 * `haystackLength` is negative; StatusNoError.
 *
 *     veksFindC_8u(text, textLength, '\n', &index);
 */
VEKCH_API vekStatus veksFindC_8u(const uint8_t* haystack, int32_t haystackLength, uint8_t value,
                                 int32_t* index) VEKCH_NOEXCEPT;

/**
 * Highest index of the byte `value`; otherwise as veksFindC_8u.
 *
 *     veksFindRevC_8u(path, pathLength, '/', &index);
 */
VEKCH_API vekStatus veksFindRevC_8u(const uint8_t* haystack, int32_t haystackLength, uint8_t value,
                                    int32_t* index) VEKCH_NOEXCEPT;

/**
 * Lowest index of a byte that belongs to the set of byte values listed in `set`. Order and
 * repetitions in the list do not matter. An empty set or an empty haystack gives -1.
 *
 * Status, in order: StatusNullPointer if `haystack`, `set` or `index` is null; StatusLengthError if
 * `haystackLength`, then `setLength`, is negative; StatusNoError.
 *
 *     veksFindCAny_8u(text, textLength, (const uint8_t*)" \t\r\n", 4, &index);
 */
VEKCH_API vekStatus veksFindCAny_8u(const uint8_t* haystack, int32_t haystackLength,
                                    const uint8_t* set, int32_t setLength,
                                    int32_t* index) VEKCH_NOEXCEPT;

/**
 * Highest index of a byte that belongs to the set; otherwise as veksFindCAny_8u.
 *
 *     veksFindRevCAny_8u(path, pathLength, (const uint8_t*)"/\\", 2, &index);
 */
VEKCH_API vekStatus veksFindRevCAny_8u(const uint8_t* haystack, int32_t haystackLength,
                                       const uint8_t* set, int32_t setLength,
                                       int32_t* index) VEKCH_NOEXCEPT;

/**
 * veksFind_8u on two zero-terminated strings, their terminators not included. An empty needle
 * gives -1.
 *
 * Hazards: a string of 2^31 bytes or more is the caller's fault. Nobody knows beforehand where the
 * strings end, so they are read in groups of up to 64 bytes aligned to 64, each of which holds a
 * byte of the string or its terminator: up to 63 bytes before a string and after its terminator are
 * read, in its own cache lines and thus never in another page. Nothing depends on what is
 * there.
 *
 * An occurrence is found without a look at the whole haystack: what is read after its start is at
 * most 16 KiB, or eight times the needle, and the rest of a group.
 *
 * Status, in order: StatusNullPointer if `haystack`, `needle` or `index` is null; StatusNoError.
 *
 *     veksFind_Z_8u((const uint8_t*)"haystack", (const uint8_t*)"st", &index);
 */
VEKCH_API vekStatus veksFind_Z_8u(const uint8_t* haystack, const uint8_t* needle,
                                  int32_t* index) VEKCH_NOEXCEPT;

/**
 * Lowest index of the byte `value` in a zero-terminated string; for the value 0, the index of the
 * terminator, that is the string's length.
 *
 * Hazards: for the value 0 the index pointer is NOT tested: a null `index` is then written to.
 * String length and reads of groups as for veksFind_Z_8u.
 *
 * Status, in order: StatusNullPointer if `haystack` is null, or if `value` is not 0 and `index` is
 * null; StatusNoError.
 *
 *     veksFindC_Z_8u((const uint8_t*)"name=value", '=', &index);
 */
VEKCH_API vekStatus veksFindC_Z_8u(const uint8_t* haystack, uint8_t value,
                                   int32_t* index) VEKCH_NOEXCEPT;

VEKCH_END_DECLS

#endif
