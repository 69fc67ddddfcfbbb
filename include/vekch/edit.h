// SPDX-License-Identifier: MIT
/**
 * @file
 * Editing: concatenation, insertion, removal, replacement of a byte value, splitting.
 *
 * The rules that all nine functions share:
 *   - Lengths, positions and numbers count bytes; positions count from 0. Zero bytes are ordinary
 *     bytes.
 *   - Exactly the bytes of the result are written; its length follows from the arguments, and
 *     nothing after it is touched. No zero byte is added.
 *   - The caller provides the room. A result longer than 2^31 - 1 bytes is the caller's fault.
 *   - A pointer must not be null even where its length is 0.
 *   - On an error nothing is written, except by the functions on lists (_D2L): they check the
 *     elements of a list one by one as they reach them, so what lies before a bad element has been
 *     written.
 *   - Outputs must not overlap inputs unless the function says so.
 *
 * A list of strings is an array of pointers, an array of as many lengths, and their count.
 */
#ifndef VEKCH_EDIT_H
#define VEKCH_EDIT_H

#include <stdint.h>

#include "vekch/export.h"
#include "vekch/status.h"

VEKCH_BEGIN_DECLS

/**
 * Joins two strings: `destination` receives firstLength + secondLength bytes.
 *
 * Status, in order: StatusNullPointer if `first`, `second` or `destination` is null;
 * StatusLengthError if a length is negative; StatusNoError.
 *
 *     veksConcat_8u(folder, folderLength, file, fileLength, path);
 */
VEKCH_API vekStatus veksConcat_8u(const uint8_t* first, int32_t firstLength, const uint8_t* second,
                                  int32_t secondLength, uint8_t* destination) VEKCH_NOEXCEPT;

/**
 * Joins the `count` strings of a list: `destination` receives the sum of the lengths in bytes.
 *
 * Status, in order: StatusNullPointer if `strings`, `lengths` or `destination` is null;
 * StatusSizeError if `count` is below 1; then, with the elements before it written, for the first
 * element that is bad: StatusNullPointer if its pointer is null, StatusLengthError if its length is
 * negative; StatusNoError.
 *
 *     veksConcat_8u_D2L(parts, partLengths, 3, text);
 */
VEKCH_API vekStatus veksConcat_8u_D2L(const uint8_t* const* strings, const int32_t* lengths,
                                      int32_t count, uint8_t* destination) VEKCH_NOEXCEPT;

/**
 * Joins the strings of a list with the byte `delimiter` between each two of them: `destination`
 * receives the sum of the lengths and count - 1 bytes more.
 *
 * Status as for veksConcat_8u_D2L. The delimiter before a bad element is not written.
 *
 *     veksConcatC_8u_D2L(fields, fieldLengths, fieldCount, ',', line);
 */
VEKCH_API vekStatus veksConcatC_8u_D2L(const uint8_t* const* strings, const int32_t* lengths,
                                       int32_t count, uint8_t delimiter,
                                       uint8_t* destination) VEKCH_NOEXCEPT;

/**
 * Copies the source with a text inserted before the byte at `startIndex`; startIndex ==
 * sourceLength appends. `destination` receives sourceLength + insertedLength bytes.
 *
 * Hazard: with an insertedLength of 0 the call succeeds without writing anything: the source is NOT
 * copied.
 *
 * Overlap: `destination` may equal `source`. The inserted text must not overlap the destination,
 * except, with destination == source, wholly before startIndex.
 *
 * Status, in order: StatusNullPointer if `source`, `inserted` or `destination` is null;
 * StatusLengthError if a length or `startIndex` is negative, or startIndex > sourceLength;
 * StatusNoError.
 *
 *     veksInsert_8u(name, nameLength, (const uint8_t*)"~", 1, backup, nameLength);
 */
VEKCH_API vekStatus veksInsert_8u(const uint8_t* source, int32_t sourceLength,
                                  const uint8_t* inserted, int32_t insertedLength,
                                  uint8_t* destination, int32_t startIndex) VEKCH_NOEXCEPT;

/**
 * Inserts a text into a buffer before the byte at `startIndex` and adds insertedLength to
 * `*length`. The buffer has room for *length + insertedLength bytes. The text may lie inside the
 * buffer, wholly before startIndex; any other overlap inserts unspecified bytes.
 *
 * Status, in order: StatusNullPointer if `inserted`, `buffer` or `length` is null;
 * StatusLengthError if `insertedLength`, `*length` or `startIndex` is negative, or startIndex >
 * *length; StatusNoError.
 *
 *     veksInsert_8u_I((const uint8_t*)"not ", 4, text, &textLength, 6);
 */
VEKCH_API vekStatus veksInsert_8u_I(const uint8_t* inserted, int32_t insertedLength,
                                    uint8_t* buffer, int32_t* length,
                                    int32_t startIndex) VEKCH_NOEXCEPT;

/**
 * Copies the source without the `number` bytes from `startIndex` on: `destination` receives
 * sourceLength - number bytes.
 *
 * Status, in order: StatusNullPointer if `source` or `destination` is null; StatusLengthError if
 * `number` or `startIndex` is negative, or startIndex + number > sourceLength (the sum does not
 * wrap; a negative sourceLength fails here); StatusNoError.
 *
 *     veksRemove_8u(line, lineLength, rest, 0, prefixLength);
 */
VEKCH_API vekStatus veksRemove_8u(const uint8_t* source, int32_t sourceLength, uint8_t* destination,
                                  int32_t startIndex, int32_t number) VEKCH_NOEXCEPT;

/**
 * Removes `number` bytes from `startIndex` on from a buffer and subtracts `number` from `*length`.
 * The bytes after the new end stay as they were.
 *
 * Status, in order: StatusNullPointer if `buffer` or `length` is null; StatusLengthError if
 * `number`, `*length` or `startIndex` is negative, or startIndex + number > *length (the sum does
 * not wrap); StatusNoError.
 *
 *     veksRemove_8u_I(text, &textLength, 0, 3);  // drops a byte order mark
 */
VEKCH_API vekStatus veksRemove_8u_I(uint8_t* buffer, int32_t* length, int32_t startIndex,
                                    int32_t number) VEKCH_NOEXCEPT;

/**
 * Copies the source with every byte `oldValue` replaced by `newValue`. `destination` may equal
 * `source`; any other overlap gives unspecified bytes in the destination.
 *
 * Status, in order: StatusNullPointer if `source` or `destination` is null; StatusLengthError if
 * `length` is negative; StatusNoError.
 *
 *     veksReplaceC_8u(path, path, pathLength, '\\', '/');
 */
VEKCH_API vekStatus veksReplaceC_8u(const uint8_t* source, uint8_t* destination, int32_t length,
                                    uint8_t oldValue, uint8_t newValue) VEKCH_NOEXCEPT;

/**
 * Splits the source at every byte `delimiter` and copies the pieces, without the delimiters, into
 * the buffers of a list.
 *
 * On entry `*count` is the number of buffers and lengths[i] the capacity of destinations[i]; on
 * return `*count` is the number of pieces stored and lengths[i] the length of piece i. A piece that
 * is longer than its buffer is cut to the capacity; its remaining bytes are dropped, they do not go
 * into the next buffer.
 *
 * Delimiters side by side, and one at the very start, give empty pieces; one at the very end gives
 * no empty last piece. An empty source gives a count of 0.
 *
 * Buffers after the last piece are not looked at: their pointers may be null and their capacities
 * negative.
 *
 * Status, in order: StatusNullPointer if `source`, `destinations`, `lengths` or `count` is null;
 * StatusLengthError if `sourceLength` is negative; StatusSizeError if `*count` is below 1; then,
 * for the first buffer needed that is bad, StatusNullPointer if its pointer is null,
 * StatusLengthError if its capacity is negative: the pieces before it and their lengths are written
 * then, while
 * `*count` keeps its value. Otherwise StatusDestinationsExhausted if bytes of the source remain
 * after the last buffer's piece and delimiter; else StatusDestinationTruncated if a piece was cut;
 * else StatusNoError. The two warnings are positive values, and all outputs are valid with them.
 *
 *     veksSplitC_8u_D2L(line, lineLength, ',', fields, fieldLengths, &fieldCount);
 */
VEKCH_API vekStatus veksSplitC_8u_D2L(const uint8_t* source, int32_t sourceLength,
                                      uint8_t delimiter, uint8_t* const* destinations,
                                      int32_t* lengths, int32_t* count) VEKCH_NOEXCEPT;

VEKCH_END_DECLS

#endif
