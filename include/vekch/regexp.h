/**
 * @file
 * Regular expressions: a pattern is compiled once into an object that the caller owns.
 *
 *   1. veksRegExpGetSize tells how large the object of a pattern is; the caller allocates it.
 *   2. veksRegExpSetMatchLimit and veksRegExpSetFormat adjust the compiled object.
 *
 * The object is one block of memory, aligned to 8 bytes as malloc's blocks are, and nothing outside
 * it belongs to it. The library keeps no reference to it between calls; the caller frees it. It
 * must stay where it was compiled: its literals are addressed inside the block, so a copy of its
 * bytes still refers to the first block. Compile again rather than copy.
 *
 * A search uses part of the object as its working memory: one object serves one search at a time,
 * and threads that search in parallel each compile their own.
 */
#ifndef VEKCH_REGEXP_H
#define VEKCH_REGEXP_H

#include <stdint.h>

#include "vekch/export.h"
#include "vekch/status.h"

VEKCH_BEGIN_DECLS

/** A compiled pattern. What it holds is told in vekch/regexp_program.h, for tools. */
typedef struct RegExpState RegExpState;

/**
 * Bytes that the object of a zero-terminated pattern takes: 48056, and 24 for each byte of the
 * pattern. The pattern is not parsed: one that will not compile has a size as well.
 *
 * A pattern has at most 89476482 bytes: the size of a longer one wraps, unchecked.
 *
 * Status, in order: StatusNullPointer if `pattern` or `size` is null, and nothing is written;
 * StatusNoError.
 *
 *     veksRegExpGetSize((const uint8_t*)"a+b", &size);  // 48128
 */
VEKCH_API vekStatus veksRegExpGetSize(const uint8_t* pattern, int32_t* size) VEKCH_NOEXCEPT;

/**
 * Sets how the subjects of later searches are read: 1, where an object starts, as UTF-8, where one
 * character may be several bytes; 0 as bytes, each of them a character.
 *
 * Compiling sets the format anew, so set it afterwards. It is not tested whether the object is
 * compiled.
 *
 * Status, in order: StatusNullPointer if `state` is null; StatusRangeError if `format` is neither
 * 0 nor 1, and the format stays; StatusNoError.
 *
 *     veksRegExpSetFormat(0, state);
 */
VEKCH_API vekStatus veksRegExpSetFormat(int32_t format, RegExpState* state) VEKCH_NOEXCEPT;

/**
 * Sets how much a later search may spend on one start position before it gives up: 10000, where an
 * object starts; 0 is a limit too. A higher limit finds matches that need deeper nesting of tries,
 * and takes more of the calling thread's stack for them.
 *
 * Compiling sets the limit anew, so set it afterwards. It is not tested whether the object is
 * compiled.
 *
 * Status, in order: StatusNullPointer if `state` is null; StatusLengthError if `limit` is negative,
 * and the limit stays; StatusNoError.
 *
 *     veksRegExpSetMatchLimit(100000, state);
 */
VEKCH_API vekStatus veksRegExpSetMatchLimit(int32_t limit, RegExpState* state) VEKCH_NOEXCEPT;

VEKCH_END_DECLS

#endif
