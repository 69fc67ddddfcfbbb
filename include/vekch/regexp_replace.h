// SPDX-License-Identifier: MIT
/**
 * @file
 * Replacing what a compiled pattern matches by an expanded template.
 *
 *   1. veksRegExpReplaceGetSize reports how large the object of a template is; the caller allocates
 *      it.
 *   2. veksRegExpReplaceInit reads the template into it.
 *   3. veksRegExpReplace_8u replaces with it, as often as wanted and with any pattern.
 *
 * The object is aligned to 8 bytes as malloc's blocks are. It refers to the template's text, which
 * is not copied: keep that alive and unchanged as long as the object is used. Replacing only reads
 * the object, so that any number of threads may share one.
 *
 * A template is literal text but for two bytes:
 *
 *     $&        what the pattern matched
 *     $1 to $9  what a group captured; nothing for a group that took no part or does not exist
 *     $12       more digits make another number than they show: each digit is added to 11 times
 *               the number before it, so that "$10" is group 11 and "$12" group 13. There is no
 *               way to write group 10.
 *     \         nothing. It does not escape: "\$1" is group 1 and "\\" is nothing, so that neither
 *               a backslash nor a dollar sign can be inserted. It does end a number: "$1\0" is
 *               group 1 and a "0".
 */
#ifndef VEKCH_REGEXP_REPLACE_H
#define VEKCH_REGEXP_REPLACE_H

#include <stdint.h>

#include "vekch/export.h"
#include "vekch/regexp.h"
#include "vekch/status.h"

VEKCH_BEGIN_DECLS

/** A template that was read. What it holds is described in vekch/regexp_program.h, for tools. */
typedef struct RegExpReplaceState RegExpReplaceState;

/**
 * Bytes that the object of a zero-terminated template takes: 16, and 16 for each byte of the
 * template; 16 for a null pointer too. The template is not read further than for its length.
 *
 * A template has at most 134217726 bytes: the size of a longer one wraps, unchecked.
 *
 * Status, in order: StatusNullPointer if `size` is null; StatusNoError.
 *
 *     veksRegExpReplaceGetSize((const uint8_t*)"<$&>", &size);  // 80
 */
VEKCH_API vekStatus veksRegExpReplaceGetSize(const uint8_t* replacement,
                                             int32_t* size) VEKCH_NOEXCEPT;

/**
 * Reads a zero-terminated template into `state`, a block of at least the size that
 * veksRegExpReplaceGetSize gives for it. A null `replacement` is an empty template.
 *
 * A group's number is kept in 32 bits: one with more than nine digits wraps, and means another
 * group.
 *
 * Status, in order: StatusNullPointer if `state` is null, and nothing is written;
 * StatusRegExpFormatError for a "$" with neither a digit nor "&" after it, and for a number that
 * is 0, as of "$0"; the block is then of no use. StatusNoError.
 *
 *     veksRegExpReplaceInit((const uint8_t*)"$2, $1", state);
 */
VEKCH_API vekStatus veksRegExpReplaceInit(const uint8_t* replacement,
                                          RegExpReplaceState* state) VEKCH_NOEXCEPT;

/**
 * Copies the `*srcLen` bytes at `src` to `dst`, with the first match of a compiled pattern replaced
 * by the template; with the pattern's option g, with every match replaced. It searches as
 * veksRegExpFind_8u does.
 *
 * On entry `*dstLen` is the capacity of `dst` in bytes, on return the bytes of the result. No zero
 * byte is added. Bytes after the result may have been written, up to the capacity.
 *
 * On return `*srcLen` reports how much of the source the result stands for. Where that is less than
 * all, `dst` was too small, which is no error: try again with a larger one or, with option g, go on
 * at `src + *srcLen` with what is left (where "^", "\b" and look-behind see a new start).
 * Text is copied only where it leaves a byte of the capacity unused, so pass one byte more than the
 * result takes at least. Where it would not, the call ends
 *   - before the text before a match; without option g both lengths are then 0;
 *   - before a match whose template did not fit, or
 *   - after the last match that was replaced, where the rest of the source did not fit.
 * Only a source without a match is copied up to the last byte of `dst`, and `*srcLen` and `*dstLen`
 * are the number of bytes copied.
 *
 * `results` and `numFind` are where the search reports: `*numFind` is the number of elements on
 * entry and of those filled on return. Without option g as many are filled as the pattern has
 * groups and one more, and a group whose element had no room counts as one that does not exist.
 * With option g every match fills that many, the whole match and then each group: `results` has to
 * have room for all matches. When it has not, the matches without room stay as they are, and the
 * groups of the last match that have none expand to nothing; no status reports it. (Without groups
 * a match fills one element in both modes.)
 *
 * Hazards, all of them without option g:
 *   - The template is held against the whole capacity, not against what the text before the match
 *     left of it. Up to 2 * *dstLen - 2 bytes are written, and `*dstLen` may come back larger than
 *     it was, though as 2^31 - 1 at most: keep room for twice the capacity that you pass, or pass
 *     one that is larger than the text before the match and the expanded template together.
 *   - With an empty template the rest of the source after the match is copied WITHOUT REGARD TO
 *     THE CAPACITY, though `*dstLen` reports only the bytes before the match. Keep room for the
 *     whole source.
 *
 * A match that is reported longer than it is (see veksRegExpFind_8u) counts up to the end of the
 * source, no further.
 *
 * `dst` must not overlap the source, the template, or any other argument.
 *
 * Status, in order, of which the first two write nothing: StatusNullPointer if any pointer is null;
 * StatusSizeError if `*srcLen` or `*dstLen` is below 1 (an empty source is refused). Then the
 * source is copied as for no match, both lengths are set, and the status is the search's:
 * StatusSizeError if `*numFind` is below 1; StatusRegExpError if `state` is no compiled object;
 * StatusRegExpMatchLimit if the match limit ran out. The first two leave `*numFind` as it was,
 * and with the third it means nothing. Otherwise, as said above,
 * StatusRegExpResultsTruncated, a warning, if not all elements of a match had room, with option g
 * only where it was the first; StatusNoError for a replacement, and for no match, with `*numFind`
 * 0.
 *
 *     RegExpFindResult found[10];
 *     int32_t count = 10;
 *     status = veksRegExpReplace_8u(text, &length, result, &resultLength, found, &count, state,
 *                                   replaceState);
 */
VEKCH_API vekStatus veksRegExpReplace_8u(const uint8_t* src, int32_t* srcLen, uint8_t* dst,
                                         int32_t* dstLen, RegExpFindResult* results,
                                         int32_t* numFind, RegExpState* state,
                                         const RegExpReplaceState* replaceState) VEKCH_NOEXCEPT;

VEKCH_END_DECLS

#endif
