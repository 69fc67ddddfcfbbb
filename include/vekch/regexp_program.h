// SPDX-License-Identifier: MIT
/**
 * @file
 * The compiled pattern and the replacement template as they lie in memory: for tools that show or
 * check them. Programs that only search and replace need nothing of this header.
 *
 * A pattern object is one block: a header, two work tables that searches use, and the program, an
 * array of node records. The program has room for one record more than the pattern has bytes; after
 * the last record the copies of the pattern's literal runs lie there, and nothing else. What makes
 * searching faster is kept in the part of the work tables that the pattern's groups leave free, and
 * in operands of the records that are not listed below.
 */
#ifndef VEKCH_REGEXP_PROGRAM_H
#define VEKCH_REGEXP_PROGRAM_H

#include <stdint.h>

#include "vekch/regexp.h"
#include "vekch/regexp_replace.h"

/** Option bits of a pattern, in `compileFlags` and in the records. */
enum {
  RegExpOptionS = 1, /* "." matches a newline too */
  RegExpOptionM = 2, /* "^" and "$" match at line breaks too */
  RegExpOptionI = 4, /* ASCII letters match in both cases */
  RegExpOptionX = 8, /* white space and comments in the pattern are ignored */
  RegExpOptionG = 16 /* every match, not the first alone */
};

/** How an operation counts in the fixed length of a lookbehind's body. */
enum {
  RegExpWidthNone = 0,   /* adds nothing */
  RegExpWidthOne,        /* one character */
  RegExpWidthRun,        /* `b` bytes */
  RegExpWidthClass,      /* one character; its `b` item records are passed over */
  RegExpWidthRepeat,     /* repeats the last item `a` times in all */
  RegExpWidthLookaround, /* nothing; its `b` body records are passed over */
  RegExpWidthGroup,      /* the width of its own `b` body records */
  RegExpWidthAlternative /* ends an alternative, all of which must be of one width */
};

/*
 * The operations, in the order of their codes: name, width rule, whether it is zero-width, and
 * what the operands a, b, c and ptr hold ("" for one that is not used). One list feeds the codes,
 * the names that tools print and the fixed-length rule.
 *
 * Items of a class (OpChar, OpClassRange, OpCharType, OpCodePoint, OpCategory, OpRange, OpScript,
 * OpGrapheme after an OpClass) are never executed on their own. The `c` of an OpChar, an
 * OpClassRange or an OpCharType among them is -1 where a negated name such as "[:^alpha:]" is
 * for them, and 0 otherwise. The complement is that of all items of the name together: `ptr` of
 * the first of them is their number. (An OpCharType has its letter changed instead, to 'W'.)
 *
 * `serial` is the group's position in the order of all opening brackets that open groups, from 1;
 * it is negative in the records of atomic groups and look-arounds. `extent` counts the records
 * between a group's opening record and its OpGroupEnd. The `flag` of an OpGroupEnd is 1 if the body
 * is one character and its quantifier, -1 if the group is quantified as well, else 0.
 */
#define VEKCH_REGEXP_OPERATIONS(X)                                               \
  X(OpChar, RegExpWidthOne, 0, "byte", "", "options", "")                        \
  X(OpString, RegExpWidthRun, 0, "", "length", "options", "bytes")               \
  X(OpBackref, RegExpWidthNone, 0, "group", "", "", "")                          \
  X(OpClass, RegExpWidthClass, 0, "negated", "items", "", "")                    \
  X(OpCharType, RegExpWidthOne, 0, "letter", "", "", "")                         \
  X(OpAssert, RegExpWidthNone, 1, "letter", "", "", "")                          \
  X(OpAlternative, RegExpWidthAlternative, 1, "serial", "options", "", "")       \
  X(OpClassRange, RegExpWidthNone, 0, "lowest", "highest", "negated", "")        \
  X(OpLazy, RegExpWidthRepeat, 0, "minimum", "maximum", "", "")                  \
  X(OpGreedy, RegExpWidthRepeat, 0, "minimum", "maximum", "", "")                \
  X(OpLookbehind, RegExpWidthLookaround, 1, "serial", "extent", "length", "")    \
  X(OpNegLookbehind, RegExpWidthLookaround, 1, "serial", "extent", "length", "") \
  X(OpLookahead, RegExpWidthLookaround, 1, "serial", "extent", "", "")           \
  X(OpNegLookahead, RegExpWidthLookaround, 1, "serial", "extent", "", "")        \
  X(OpOptionGroup, RegExpWidthNone, 0, "serial", "extent", "options", "")        \
  X(OpConditional, RegExpWidthNone, 0, "serial", "extent", "", "")               \
  X(OpCapture, RegExpWidthGroup, 0, "serial", "extent", "slot", "")              \
  X(OpGroup, RegExpWidthGroup, 0, "serial", "extent", "", "")                    \
  X(OpAtomic, RegExpWidthGroup, 0, "serial", "extent", "", "")                   \
  X(OpGroupEnd, RegExpWidthNone, 1, "serial", "options", "flag", "")             \
  X(OpSetOptions, RegExpWidthNone, 1, "options", "", "", "")                     \
  X(OpAnyByte, RegExpWidthNone, 0, "", "", "", "")                               \
  X(OpCodePoint, RegExpWidthOne, 0, "code point", "", "", "")                    \
  X(OpCategory, RegExpWidthOne, 0, "mask", "negated", "", "")                    \
  X(OpRange, RegExpWidthOne, 0, "lowest", "highest", "negated", "")              \
  X(OpScript, RegExpWidthOne, 0, "", "negated", "ranges", "range list")          \
  X(OpGrapheme, RegExpWidthOne, 0, "", "", "", "")

enum { RegExpFirstOperation = 0x10000000 };

#define VEKCH_REGEXP_INDEX(name, width, zeroWidth, a, b, c, ptr) RegExpIndexOf##name,
enum { VEKCH_REGEXP_OPERATIONS(VEKCH_REGEXP_INDEX) RegExpOperationCount };
#undef VEKCH_REGEXP_INDEX

#define VEKCH_REGEXP_CODE(name, width, zeroWidth, a, b, c, ptr) \
  name = (int)RegExpFirstOperation + RegExpIndexOf##name,
enum { VEKCH_REGEXP_OPERATIONS(VEKCH_REGEXP_CODE) RegExpOperationEnd };
#undef VEKCH_REGEXP_CODE

/** The maximum of a quantifier without an upper bound. */
enum { RegExpUnbounded = 0x3FFFFFFF };

/** When a newline is among what a record matches. */
enum { RegExpNewlineNever = 0, RegExpNewlineAlways, RegExpNewlineByOptionS };

/*
 * The shorthands, by whose letters OpCharType records name them: name, letter, bytes as pairs of a
 * first and a last one, whether all others are meant instead, when a newline is one of them, and
 * the set in words. A shorthand is nothing but its line here: the escape, what the compiler makes
 * of it, the sets that searches test and what tools report of it are made of the line.
 */
#define VEKCH_REGEXP_SHORTHANDS(X)                                                             \
  X(Any, '.', "\n\n", 1, RegExpNewlineByOptionS, "any character, with option s a newline too") \
  X(Digit, 'd', "09", 0, RegExpNewlineNever, "a digit")                                        \
  X(NoDigit, 'D', "09", 1, RegExpNewlineAlways, "no digit")                                    \
  X(Space, 's', "\t\n\f\r  ", 0, RegExpNewlineAlways, "white space")                           \
  X(NoSpace, 'S', "\t\n\f\r  ", 1, RegExpNewlineNever, "no white space")                       \
  X(Word, 'w', "09AZ__az", 0, RegExpNewlineNever, "a letter of ASCII, a digit or _")           \
  X(NoWord, 'W', "09AZ__az", 1, RegExpNewlineAlways, "no letter of ASCII, digit or _")

/*
 * The assertions, by whose letters OpAssert records name them: name, letter, whether option m makes
 * it ask of its line alone, and what it asks in words. The last one no pattern can spell: it is
 * before one that begins with ".*" or ".+".
 */
#define VEKCH_REGEXP_ASSERTIONS(X)                                    \
  X(LineOrSubjectStart, '^', 1, "the start, with option m of a line") \
  X(LineOrSubjectEnd, '$', 1, "the end, with option m of a line")     \
  X(SubjectStart, 'A', 0, "the start")                                \
  X(SearchStart, 'G', 0, "the start")                                 \
  X(LastLineEnd, 'Z', 0, "the end, or a last newline before it")      \
  X(SubjectEnd, 'z', 0, "the end")                                    \
  X(WordBoundary, 'b', 1, "a word begins or ends")                    \
  X(NoWordBoundary, 'B', 1, "no word begins or ends")                 \
  X(LineStart, 0x80, 1, "the start of a line")

#define VEKCH_REGEXP_ASSERTION(name, letter, isOfLine, words) RegExpAssert##name = (letter),
enum { VEKCH_REGEXP_ASSERTIONS(VEKCH_REGEXP_ASSERTION) RegExpAssertNone = 0 };
#undef VEKCH_REGEXP_ASSERTION

/** The match limit that compiling sets, and the part of a limit that the depth may reach. */
enum { RegExpDefaultMatchLimit = 10000, RegExpDepthShare = 4 };

/** One record of the program, 24 bytes. */
typedef struct ProgramNode {
  uint32_t op; /* RegExpFirstOperation plus the operation's position in the list */
  int32_t a; /* directly after `op`: both are read as one word where that determines an operation */
  int32_t b;
  int32_t c;
  uint64_t ptr; /* address of a literal run or of a script's ranges; else a note of the library's */
} ProgramNode;

/** First word of a compiled object: the characters "rgEx". */
enum { RegExpTag = 0x78456772 };

/** Number of records in each of the two work tables, and so the limit of groups and of nesting. */
enum { RegExpTableSize = 1000 };

/** The fixed part of a pattern object; the program's records follow it. */
struct RegExpState {
  uint32_t regExpTag;
  uint32_t compileFlags; /* the options given as letters; options inside the pattern don't count */
  int32_t nodeCount;
  int32_t captureCount;         /* 1 more than the capturing groups: slot 0 is the whole match */
  int32_t requiredLiteralIndex; /* record of the suffix literal; -1 none, -2 alternatives */
  int32_t matchLimit;
  int32_t characterFormat; /* 1 UTF-8, 0 bytes */
  int32_t searchMode;      /* 0 general, 1 a prefix literal, 2 alternatives of literals */
  uint64_t workTableA[RegExpTableSize][4];
  uint64_t workTableB[RegExpTableSize][2];
};

/** Bytes of an object: the fixed part, and room for one record more than the pattern has bytes. */
enum { RegExpFixedSize = 48056, RegExpSizePerByte = 24 };

/** What a template's item inserts. */
enum {
  ReplaceLiteral = 0x10000001, /* literal text */
  ReplaceGroup = 0x10000002    /* what a group captured */
};

/** One item of a template. */
typedef struct ReplaceItem {
  uint32_t kind;
  uint32_t value;         /* bytes of literal text; number of a group, 0 for the whole match */
  const uint8_t* pointer; /* literal text, inside the template; not set for a group */
} ReplaceItem;

/** A template's object: its items follow it, in the order of the template. */
struct RegExpReplaceState {
  uint32_t unused; /* neither read nor written */
  uint32_t itemCount;
  ReplaceItem* items; /* null for a null template */
};

#endif
