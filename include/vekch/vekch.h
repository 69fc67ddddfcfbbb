// SPDX-License-Identifier: MIT
/**
 * @file
 * vekch: string primitives for 64-bit x86 with SSE3, for C99 and C++.
 *
 * Promises that hold for every function:
 *   - It allocates nothing, keeps nothing between calls and calls no system service.
 *   - It touches only the memory passed to it; where a function reads or writes beyond a given
 *     length, its declaration says so.
 *   - It may be called from any number of threads at once on distinct outputs.
 *   - Arguments are checked before any work: all pointers first, then lengths and positions, then
 *     counts and capacities. The first failed check is the status that is returned.
 *   - Lengths are signed 32-bit counts of elements, and 0 is a valid length.
 *
 * In a name, 8u is a string of bytes, C one byte value as an argument, CAny a set of byte values,
 * Rev a search from the end, _Z a zero-terminated string.
 */
#ifndef VEKCH_VEKCH_H
#define VEKCH_VEKCH_H

#include "vekch/case.h"
#include "vekch/compare.h"
#include "vekch/edit.h"
#include "vekch/find.h"
#include "vekch/hash.h"
#include "vekch/regexp.h"
#include "vekch/regexp_replace.h"
#include "vekch/status.h"
#include "vekch/trim.h"
#include "vekch/utf.h"
#include "vekch/version.h"

#endif
