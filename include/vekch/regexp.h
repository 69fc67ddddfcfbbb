// SPDX-License-Identifier: MIT
/**
 * @file
 * Regular expressions: a pattern is compiled once into an object that the caller owns.
 *
 *   1. veksRegExpGetSize reports how large the object of a pattern is; the caller allocates it.
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
 * ## The pattern language
 *
 *     .                        any character but a newline; with option s, any
 *     ^ $                      start of the subject; its end, or before a newline that ends it;
 *                              with option m, start and end of a line
 *     \A \G  \Z  \z            start of the subject; its end, or before a newline that ends it;
 *                              its very end
 *     \b \B                    word boundary (of ASCII words); none
 *     x* x+ x? x{n,m}          repetitions of the byte, class or group before: "{n}", "{n,}",
 *                              "{,m}" and "{}" (none) too; as many as possible, with "?" after the
 *                              quantifier as few
 *     x|y                      alternatives, tried in order
 *     (x) (?:x) (?>x)          capturing group; group; atomic group: keeps its first way to match
 *     (?=x) (?!x)              x follows; x does not follow
 *     (?<=x) (?<!x)            x ends here; x does not end here; x is of one length
 *     (?(1)x|y) (?(?=z)x|y)    x if group 1 took part, or if the look-around z holds; else y
 *     (?imsx-imsx) (?i:x)      options for the rest of the group; for a group
 *     (?#text) (?)             nothing
 *     \1 to \9, \10 and on     what a group captured; octal character codes where no group has
 *                              that number
 *     \d \s \w \D \S \W        ASCII digits, white space but vertical tab, word bytes; all else
 *     \p{Lu} \pL \P{Greek}     characters of a Unicode 5.1 category or script; all else;
 *                              \p{^Lu} is \P{Lu}, \p{L&} is Lu, Ll and Lt, \p{Any} every character
 *     \X \C                    a character and the marks on it; a byte
 *     \a \e \f \n \r \t \v     control characters; also \cX, \x41, \012
 *     \x{3B1}                  a code point
 *     \Q...\E                  literal text
 *     [a-z\d[:alpha:]] [^x]    a character of a class; one outside of it
 *
 * Literal text is bytes: a quantifier repeats the last byte before it, so that a character of
 * several bytes is to be repeated as `(?:x)+`, `[x]+` or `\x{E9}+`. In a class it is one member.
 * `\xE9` is the byte E9, which is no character of UTF-8, but in a class of several members the
 * letter, like `\x{E9}`.
 *
 * The POSIX names of classes are `alnum alpha ascii blank cntrl digit graph lower print punct space
 * upper word xdigit`, and `[:^alpha:]` is what is outside of `[:alpha:]`. Letters and digits are
 * those of ASCII; `punct` includes the space and all from U+007B to U+00FF, `graph` and `print` all
 * from U+0080 to U+00FF, `space` the vertical tab, and `cntrl` leaves out U+007F.
 *
 * Option i is about ASCII letters, wherever they are; about code points written `\x{...}`; and, in
 * a class, about characters from U+0100 on that are members themselves. Other characters beyond
 * ASCII stay as they are: those in literal text, from U+0080 to U+00FF as members of a class
 * written as such, in ranges, and in properties.
 *
 * ## What means something else than in other engines
 *
 * - **A backslash before any other letter is that letter.** `\h`, `\H`, `\V`, `\R`, `\K`, `\N`,
 *   `\g`, `\k`, `\o` and `\u` compile and match the letters h, H, V and so on: `\h+` matches "hh",
 *   `\u0041` the text "u0041" and `(a)\g{1}` the text "ag".
 * - `\b{wb}` is a word boundary and then the text "{wb}".
 * - `$` and `\Z` match before a last newline too: `\z` does not.
 * - Classes do not nest, and know neither intersections nor differences: `[a[bc]]` is one of the
 *   characters "a[bc" and then a "]"; `[:alpha:]` alone is a class of the characters ":alph".
 * - `a{}` is "a" no times; `{,3}` is `{0,3}`; `a{2` and `a{ 2 }` are literal text.
 * - `[\^]` does not compile: write `\^`.
 * - `\8` and `\9` do not compile where no group has that number.
 * - A back-reference does not match at the end of the subject, even to an empty capture: `(a*)b\1`
 *   finds nothing in "b".
 * - What was captured inside of an atomic group or a look-around whose body matched stays captured
 *   if the pattern fails after it: `(?>(a))b|ac` on "ac" reports group 1.
 * - Look-behind goes back as many characters as its body has bytes of literal text. Write
 *   characters beyond ASCII as `(?<=\x{E9})` or in a class there, not literally.
 * - An alternative at top level may be empty again where option g asks for a match that is not:
 *   with it `|b` never matches a "b", and `^|.` not the first byte. In a group, `(?:|b)`, it does.
 *
 * ## What does not compile
 *
 * Named groups (`(?<n>x)`, `(?P<n>x)`), possessive quantifiers (`x*+`: write `(?>x*)`), recursion
 * and calls of groups (`(?R)`, `(?1)`), `(?|x|y)`, verbs (`(*SKIP)`), names of Unicode blocks
 * (`\p{InGreek}`) and long names of properties (`\p{Letter}`, `\p{Script=Greek}`), `\P{^Lu}`,
 * collating symbols (`[.a.]`), look-behind of changing length or with back-references, and a
 * second quantifier (`a{2}{3}`).
 */
#ifndef VEKCH_REGEXP_H
#define VEKCH_REGEXP_H

#include <stdint.h>

#include "vekch/export.h"
#include "vekch/status.h"

VEKCH_BEGIN_DECLS

/** A compiled pattern. What it holds is described in vekch/regexp_program.h, for tools. */
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
 * **A pattern has at most 89476482 bytes, which is not tested.** The size of a longer one wraps: it
 * is negative, and from 178954969 bytes on a small number again, of a block that compiling would
 * write far beyond. Test the length of a pattern that comes from elsewhere first.
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
 * the position in the pattern (0 for an option), the length of the pattern where its end comes too
 * early. The block is then of no use, though it may look like a compiled object: don't search with
 * it.
 *
 * At most 999 groups, each of them nested at most 999 deep, and 65535 in a repetition.
 *
 * Status, in order: StatusNullPointer if `pattern`, `state` or `errorOffset` is null, and nothing
 * is written; StatusRegExpOptionError for another letter. Then, for the whole pattern,
 * StatusRegExpSyntaxError if groups are not balanced or too many and StatusRegExpClassError if a
 * class is not closed. Then, at the first position at fault: StatusRegExpEscapeError for a
 * malformed escape; StatusRegExpClassError for a malformed class; StatusRegExpFormatError for a
 * reference to a group that does not exist; StatusRegExpQuantifierError for a quantifier with
 * nothing to repeat, a second quantifier, or numbers too large or in the wrong order;
 * StatusRegExpSyntaxError for any other malformed structure. Otherwise StatusNoError.
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
 * Sets the match limit of later searches: 10000, where an object starts; 0 is a limit too. The
 * tries for one start position may nest to a fourth of it. A higher limit finds matches that need
 * deeper nesting, and takes more of the calling thread's stack for them.
 *
 * **It bounds the depth exactly, and the work generously.** The number of tries may grow while
 * their depth does not: a pattern that can share out the same bytes among its repetitions in many
 * ways, such as `(a+)+[bc]` on "aaa...ad", has twice as many for each further byte. Most such
 * searches end at once all the same, since the search remembers which choices have failed where.
 * It does not where the pattern has back-references, conditionals, captures in a look-around or an
 * atomic group, repeated atomic groups, or repetitions of a group with a bound other than 0, 1 or
 * none, nor where the subject is so long that the depth is used up. Any search that has gone
 * through about 1,000,000 + 100,000 * limit + 4,096 * len records of the program, or come back to
 * its choices half as often, ends as if the limit had run out: after about ten seconds at 10000,
 * and sooner at a lower limit, which serves patterns and subjects from somebody you don't trust.
 *
 * **A search may also run out of the limit without a status.** Inside of a group, a further
 * repetition that would nest too deep is one that can't be had, and the search goes on with those
 * before: at 10000 `(?:ab)*` matches 1248 repetitions and no more, and `^(?:ab)*$` none at all of
 * 1249. A repetition of one character or class, such as `\w*`, nests no deeper for being long.
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
 * for one match after the other. No terminator is read, and no byte outside of the subject.
 *
 * On entry `*numFind` is the number of elements of `results`, on return the number written.
 *
 * Without option g element 0 is the match and element k what group k captured. As many elements are
 * written as there are groups and one more, or as fit. A pattern that is nothing but alternatives
 * of literal text reports in the same way: the leftmost of them, and of two that begin at one
 * position the first.
 *
 * With option g a pattern without groups gives one element for each match, and a pattern with
 * groups an element for each of its groups, but none for the match as a whole. After a match the
 * search goes on where it ends; at the position of an empty match it asks for one of a single byte,
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
 * object starts with, a stack of 256 KiB is enough for every pattern and subject. **A thread with
 * less needs a lower limit**: 3000 for 128 KiB, which musl gives to threads. Repetitions of an
 * atomic group take none of the limit; but where their lengths change, the positions to go back to
 * are kept in that stack. When there are more bytes between the first and the last of them than it
 * has room for, about 1,300,000 at the limit that an object starts with and 300,000 at the lowest,
 * the limit counts as run out.
 *
 * Status, in order, of which the first four write nothing: StatusNullPointer if `src`, `state`,
 * `results` or `numFind` is null; StatusLengthError if `len` is negative; StatusSizeError if
 * `*numFind` is below 1; StatusRegExpError if `state` is no compiled object.
 * StatusRegExpMatchLimit if the match limit ran out, with `*numFind` 0 in most cases; what is in
 * `results` does not count then; veksRegExpSetMatchLimit says where it runs out without a status.
 * StatusRegExpResultsTruncated, a warning, if a match was found and not all of its elements had
 * room. StatusNoError for a match, and for none, with `*numFind` 0.
 *
 *     RegExpFindResult found[4];
 *     int32_t count = 4;
 *     status = veksRegExpFind_8u(text, length, state, found, &count);
 */
VEKCH_API vekStatus veksRegExpFind_8u(const uint8_t* src, int32_t len, RegExpState* state,
                                      RegExpFindResult* results, int32_t* numFind) VEKCH_NOEXCEPT;

VEKCH_END_DECLS

#endif
