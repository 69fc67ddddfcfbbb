/**
 * @file
 * Regular expressions: a pattern is compiled once into an object that the caller owns.
 *
 *   1. veksRegExpGetSize tells how large the object of a pattern is; the caller allocates it.
 *   2. veksRegExpInit compiles the pattern into it.
 *   3. veksRegExpSetMatchLimit and veksRegExpSetFormat adjust it, if need be.
 *   4. veksRegExpFind_8u searches with it, as often as wanted.
 *
 * The object is one block of memory, aligned to 8 bytes as malloc's blocks are, and nothing outside
 * it belongs to it. The library keeps no reference to it between calls; the caller frees it. It
 * must stay where it was compiled: its literals are addressed inside the block, so a copy of its
 * bytes still refers to the first block. Compile again rather than copy.
 *
 * A search uses part of the object as its working memory: one object serves one search at a time,
 * and threads that search in parallel each compile their own.
 *
 * The pattern language:
 *
 *   .                        any character but a newline; with option s, any
 *   ^ $                      start and end of the subject; with option m, of a line
 *   \A \G \z \Z \b \B        start; start; end; end or before a last newline; word boundary; none
 *   x* x+ x? x{n,m}          repetitions of the byte, class or group before: "{n}", "{n,}", "{,m}"
 *                            and "{}" (none) too; as many as possible, with "?" behind as few
 *   x|y                      alternatives, tried in order
 *   (x) (?:x) (?>x)          capturing group; group; group that keeps its first way to match
 *   (?=x) (?!x)              x follows; x does not follow
 *   (?<=x) (?<!x)            x ends here; x does not end here; x is of one length
 *   (?(1)x|y) (?(?=z)x|y)    x if group 1 took part, or if the look-around z holds; else y
 *   (?imsx-imsx) (?i:x)      options for the rest of the group; for a group
 *   (?#text) (?)             nothing
 *   \1 to \9, \10 and on      what a group captured
 *   \d \s \w \D \S \W        ASCII digits, white space but vertical tab, word bytes; all else
 *   \p{Lu} \pL \P{Greek}     characters of a Unicode 5.1 category or script; all else
 *   \X \C                    a character and the marks on it; a byte
 *   \a \e \f \n \r \t \v     control characters; also \cX, \x41, \012
 *   \x{3B1}                  a code point
 *   \Q...\E                  literal text
 *   [a-z\d[:alpha:]] [^x]    a character of a class; one outside of it
 *
 * Literal text is bytes: a quantifier repeats the last byte before it, so that a character of
 * several bytes is to be repeated as "(?:x)+", "[x]+" or "\x{E9}+". In a class it is one member.
 */
#ifndef VEKCH_REGEXP_H
#define VEKCH_REGEXP_H

#include <stdint.h>

#include "vekch/export.h"
#include "vekch/status.h"

VEKCH_BEGIN_DECLS

/** A compiled pattern. What it holds is told in vekch/regexp_program.h, for tools. */
typedef struct RegExpState RegExpState;

/** One piece of a subject that a search reports: the whole match, or what a group captured. */
typedef struct RegExpFindResult {
  const uint8_t* pointer; /* its first byte inside the subject; null for a group without a part */
  int32_t length;         /* its bytes; -1 for a group that took no part in the match */
} RegExpFindResult;

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
 * Compiles a zero-terminated pattern into `state`, a block of at least the size that
 * veksRegExpGetSize gives for it, aligned to 8 bytes. The block may hold an object already, which
 * is lost. The pattern must not lie in the block, and is not needed afterwards.
 *
 * `options` is a zero-terminated string of letters, or null for none; a letter may be repeated:
 *
 *   s  "." matches a newline as well
 *   m  "^" and "$" match at line breaks as well
 *   i  letters match in both cases: ASCII letters, and code points given as such
 *   x  white space and comments from "#" to the end of the line are no part of the pattern
 *   g  every match, not the first alone
 *
 * On success the match limit is 10000 and the format 1 (UTF-8), and nothing is written through
 * `errorOffset`. If the pattern or an option is at fault, `*errorOffset` is set to the offset of
 * the place in the pattern (0 for an option), the length of the pattern where its end comes too
 * early. The block is then of no use, though it may look like a compiled object: don't search with
 * it.
 *
 * At most 999 groups, each of them nested at most 999 deep, and 65535 in a repetition.
 *
 * Status, in order: StatusNullPointer if `pattern`, `state` or `errorOffset` is null, and nothing
 * is written; StatusRegExpOptionError for another letter. Then, for the whole pattern,
 * StatusRegExpSyntaxError if groups are not balanced or too many and StatusRegExpClassError if a
 * class is not closed. Then, at the first place at fault: StatusRegExpEscapeError for a malformed
 * escape; StatusRegExpClassError for a malformed class; StatusRegExpFormatError for a reference to
 * a group that does not exist; StatusRegExpQuantifierError for a quantifier with nothing to
 * repeat, a second quantifier, or numbers too large or in the wrong order; StatusRegExpSyntaxError
 * for any other malformed structure. Otherwise StatusNoError.
 *
 *     int32_t size, offset;
 *     veksRegExpGetSize(pattern, &size);
 *     RegExpState* state = (RegExpState*)malloc((size_t)size);
 *     if (veksRegExpInit(pattern, (const uint8_t*)"i", state, &offset) != StatusNoError) ...
 */
VEKCH_API vekStatus veksRegExpInit(const uint8_t* pattern, const uint8_t* options,
                                   RegExpState* state, int32_t* errorOffset) VEKCH_NOEXCEPT;

/**
 * Sets how the subjects of later searches are read: 1, where an object starts, as UTF-8, where one
 * character may be several bytes; 0 as bytes, each of them a character. Code points
 * ("\x{3B1}"), properties and "\X" outside of classes read UTF-8 in either format.
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

/**
 * Searches the `len` bytes at `src` for the first match of a compiled pattern; with its option g,
 * for one match behind the other. No terminator is read, and no byte outside of the subject.
 *
 * On entry `*numFind` is the number of elements of `results`, on return the number written.
 *
 * Without option g element 0 is the match and element k what group k captured. As many elements are
 * written as there are groups and one more, or as fit. A pattern that is nothing but alternatives
 * of literal text reports in the same way: the leftmost of them, and of two that begin at one place
 * the first.
 *
 * With option g a pattern without groups gives one element for each match, and a pattern with
 * groups an element for each of its groups, but none for the match as a whole. Behind a match the
 * search goes on where it ends; at the place of an empty match it asks for one of a single byte,
 * then goes on a byte further. It ends where the subject ends or the elements are used up.
 *
 * What is reported lies in the subject, but for one case: a code point written as "\x{E9}" counts
 * as long as its own UTF-8 form, also where it has matched a byte that is no UTF-8, or a letter of
 * another length without regard to case. The length of a match may then differ from the bytes that
 * it covers, and reach past the end of the subject; it is 2^31 - 1 where it would be more.
 *
 * How deep the tries for one start position may nest is a fourth of the match limit; a repetition
 * of one character counts once, whatever its length, each repetition of a group counts again. The
 * calling thread needs 72 bytes of stack for each, and 61440 bytes beyond: at the limit that an
 * object starts with, a stack of 256 KiB is enough for every pattern and subject. Repetitions of an
 * atomic group take none of the limit; but where their lengths change, the places to go back to are
 * kept in that stack. When there are more bytes between the first and the last of them than it has
 * room for, about 1,300,000 at the limit that an object starts with and 300,000 at the lowest, the
 * limit counts as run out.
 *
 * Status, in order, of which the first four write nothing: StatusNullPointer if `src`, `state`,
 * `results` or `numFind` is null; StatusLengthError if `len` is negative; StatusSizeError if
 * `*numFind` is below 1; StatusRegExpError if `state` is no compiled object.
 * StatusRegExpMatchLimit if the match limit ran out, with `*numFind` 0 in most cases; what is in
 * `results` does not count then. StatusRegExpResultsTruncated, a warning, if a match was found and
 * not all of its elements had room. StatusNoError for a match, and for none, with `*numFind` 0.
 *
 *     RegExpFindResult found[4];
 *     int32_t count = 4;
 *     status = veksRegExpFind_8u(text, length, state, found, &count);
 */
VEKCH_API vekStatus veksRegExpFind_8u(const uint8_t* src, int32_t len, RegExpState* state,
                                      RegExpFindResult* results, int32_t* numFind) VEKCH_NOEXCEPT;

VEKCH_END_DECLS

#endif
