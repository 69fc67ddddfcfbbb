// SPDX-License-Identifier: MIT
/**
 * @file
 * Helpers around the regular expressions, for C99 and C++: the number of groups of a compiled
 * pattern, the cause of a fault in words, and all matches together with their groups. They are
 * compiled into the program that includes them; the library exports nothing for them.
 */
#ifndef VEKCH_REGEXP_HELP_H
#define VEKCH_REGEXP_HELP_H

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include "vekch/regexp.h"
#include "vekch/regexp_replace.h"
#include "vekch/status.h"

/** The number of capturing groups of a compiled pattern: a match takes one element more. */
static inline int32_t vekRegExpGroupCount(const RegExpState* state) {
  int32_t captureCount; /* the object's fourth word; vekch/regexp_program.h shows the whole */
  memcpy(&captureCount, (const uint8_t*)state + 12, sizeof captureCount);
  return captureCount - 1;
}

/* ---- The cause of a fault. */

/* The "(" that the ")" at `closing` belongs to, or -1. With `wanted` 0 the depth at `closing`
 * instead; with another value the last bracket that opens that depth. */
static inline int32_t vekRegExpWalkBrackets_(const char* pattern, int extended, int32_t closing,
                                             int32_t wanted) {
  int32_t depth = 0;
  int32_t opening = -1;
  int32_t i = 0;
  while (i < closing) {
    const char* at = pattern + i;
    if (at[0] == '\\' && at[1] == 'Q') {
      const char* end = strstr(at, "\\E");
      i = end == NULL ? closing : (int32_t)(end - pattern) + 2;
    } else if (at[0] == '\\') {
      i += at[1] == 'c' ? 3 : 2;
    } else if (at[0] == '[') {
      i += at[1] == '^' ? 2 : 1;
      i += pattern[i] == ']' ? 1 : 0;
      while (i < closing && pattern[i] != ']') {
        if (pattern[i] == '[' && pattern[i + 1] == ':') {
          const char* end = strstr(pattern + i, ":]");
          i = end == NULL ? i + 1 : (int32_t)(end - pattern) + 2;
        } else {
          i += pattern[i] == '\\' ? 2 : 1;
        }
      }
      ++i;
    } else if (at[0] == '#' && extended) {
      i += (int32_t)strcspn(at, "\n");
    } else if (at[0] == '(' && at[1] == '?' && at[2] == '#') {
      i += (int32_t)strcspn(at, ")") + 1;
    } else {
      if (at[0] == '(') {
        ++depth;
        opening = depth == wanted ? i : opening;
      } else if (at[0] == ')') {
        --depth;
      }
      ++i;
    }
  }
  return wanted == 0 ? depth : opening;
}

static inline const char* vekRegExpBracketFault_(const char* pattern, const char* options,
                                                 int32_t offset) {
  const int extended =
      (options != NULL && strchr(options, 'x') != NULL) || strstr(pattern, "(?x") != NULL;
  const int32_t depth = vekRegExpWalkBrackets_(pattern, extended, offset, 0);
  const int32_t opening =
      depth <= 0 ? -1 : vekRegExpWalkBrackets_(pattern, extended, offset, depth);
  if (opening >= 0 && strncmp(pattern + opening, "(?<", 3) == 0) {
    return "a look-behind has one fixed length and no back-reference";
  }
  if (opening >= 0 && strncmp(pattern + opening, "(?(", 3) == 0) {
    return "a condition is a group's number or a look-around, with two alternatives at most";
  }
  return "unmatched )";
}

static inline const char* vekRegExpEscapeFault_(const char* pattern, int32_t offset) {
  const char* at = pattern + offset;
  const char* name = at;
  if (offset >= 3 && strncmp(at - 3, "\\x{", 3) == 0) {
    return "\\x{ has up to eight hexadecimal digits and a } after them";
  }
  if (offset >= 2 && at[-2] == '\\' && (at[-1] == 'p' || at[-1] == 'P')) {
    return "a property is one of the letters C L M N P S Z, or a name in braces";
  }
  while (name > pattern && name[-1] != '{' && name[-1] != '\\') {
    --name;
  }
  if (name == pattern || name[-1] == '\\') {
    return "nothing after a backslash";
  }
  if (*at == '^') {
    return "a property negated twice";
  }
  if (strchr(name, '}') == NULL) {
    return "missing } after a property's name";
  }
  name += *name == '^' ? 1 : 0;
  return *at == '}' && strncmp(name, "In", 2) == 0 ? "Unicode blocks are not supported"
                                                   : "unknown category or script";
}

static inline const char* vekRegExpClassFault_(const char* at) {
  if (*at == 0) {
    return "missing ]";
  }
  if (*at == '[' && at[1] != 0 && strchr(":.=", at[1]) != NULL) {
    return "unknown class name";
  }
  if (*at == '\\' && at[1] != 0 && strchr("dDsSwWpPX", at[1]) != NULL) {
    return "a range can't end with a class or a property";
  }
  return "the ends of a range are in the wrong order";
}

static inline const char* vekRegExpSyntaxFault_(const char* pattern, const char* options,
                                                int32_t offset) {
  const char* at = pattern + offset;
  const int afterMark = offset >= 2 && strncmp(at - 2, "(?", 2) == 0;
  switch (*at) {
    case 0:
      return "missing )";
    case ')':
      return vekRegExpBracketFault_(pattern, options, offset);
    case ']':
      return "a class without a member, or with ^ alone";
    case '(':
      return "more than 999 groups, or groups nested deeper than 999";
    default:
      break;
  }
  if (afterMark && strchr("'PC|R&+0123456789", *at) == NULL) {
    return "unknown letter after (?";
  }
  if (afterMark && *at == '|') {
    return "groups that share their numbers are not supported";
  }
  if (afterMark && *at == 'C') {
    return "callouts are not supported";
  }
  if (afterMark && (*at == 'R' || *at == '&' || *at == '+' || (*at >= '0' && *at <= '9') ||
                    (*at == 'P' && at[1] == '>'))) {
    return "recursion is not supported";
  }
  if (afterMark || (offset >= 3 && strncmp(at - 3, "(?<", 3) == 0)) {
    return "named groups are not supported";
  }
  while (at > pattern && at[-1] >= '0' && at[-1] <= '9') {
    --at;
  }
  return at - pattern >= 3 && strncmp(at - 3, "(?(", 3) == 0
             ? "a condition is a group's number or a look-around"
             : "unknown option letter";
}

static inline const char* vekRegExpQuantifierFault_(const char* pattern, int32_t offset) {
  const char* at = pattern + offset;
  if (offset > 0 && at[-1] == '{' && strchr("*+?{", *at) == NULL) {
    uint32_t bounds[2] = {0, 0};
    int which = 0;
    for (; *at != '}' && *at != 0; ++at) {
      uint32_t* bound = &bounds[which];
      if (*at == ',') {
        which = 1;
      } else if (*bound <= 65535) {
        *bound = *bound * 10 + (uint32_t)(*at - '0');
      }
    }
    return bounds[0] > 65535 || bounds[1] > 65535 ? "a repetition is 65535 times at most"
                                                  : "the bounds of a repetition are in the wrong "
                                                    "order";
  }
  if (offset > 0 && strchr("*+?}", at[-1]) != NULL) {
    return *at == '+' ? "possessive quantifiers are not supported: write (?>...)"
                      : "a quantifier after a quantifier";
  }
  return "nothing to repeat";
}

/**
 * What is wrong with a pattern that veksRegExpInit has refused, as a short English text without a
 * full stop: "missing )", "named groups are not supported". For any other status the text of
 * vekStatusText. `pattern` and `options` are those that were refused, `offset` is what
 * veksRegExpInit has stored as the fault's position. The text is constant.
 *
 *     status = veksRegExpInit(pattern, options, state, &offset);
 *     puts(vekRegExpFaultText(pattern, options, status, offset));
 */
static inline const char* vekRegExpFaultText(const uint8_t* pattern, const uint8_t* options,
                                             vekStatus status, int32_t offset) {
  const char* text = (const char*)pattern;
  switch (status) {
    case StatusRegExpEscapeError:
      return vekRegExpEscapeFault_(text, offset);
    case StatusRegExpClassError:
      return vekRegExpClassFault_(text + offset);
    case StatusRegExpFormatError:
      return text[offset] == ')' || (offset > 0 && text[offset - 1] == '(')
                 ? "a condition's group has a number from 1 up"
                 : "reference to a group that does not exist";
    case StatusRegExpSyntaxError:
      return vekRegExpSyntaxFault_(text, (const char*)options, offset);
    case StatusRegExpQuantifierError:
      return vekRegExpQuantifierFault_(text, offset);
    default:
      return vekStatusText(status);
  }
}

/* ---- All matches. */

/* The bytes of the character at `text`: a UTF-8 sequence of two to six bytes in its shortest form,
 * or one byte. */
static inline int32_t vekUtf8Length_(const uint8_t* text, int32_t left) {
  const uint8_t lead = text[0];
  const int32_t length = lead < 0xC2   ? 1
                         : lead < 0xE0 ? 2
                         : lead < 0xF0 ? 3
                         : lead < 0xF8 ? 4
                         : lead < 0xFC ? 5
                         : lead < 0xFE ? 6
                                       : 1;
  int32_t i;
  if (length > left) {
    return 1;
  }
  for (i = 1; i < length; ++i) {
    if ((text[i] & 0xC0) != 0x80) {
      return 1;
    }
  }
  /* 0xE0, 0xF0, 0xF8 and 0xFC: a second byte too small would make a shorter form do. */
  if (length >= 3 && lead == (uint8_t)(0xFF00 >> length) && text[1] < 0x80 + (0x100 >> length)) {
    return 1;
  }
  return length;
}

/* Drops the matches at positions where a match can't begin once an empty one was found: the library
 * goes on by a byte there, and asks for a match of that byte alone first. */
static inline int32_t vekRegExpDropInner_(const uint8_t* src, int32_t len, int utf8,
                                          RegExpFindResult* results, int32_t count, int32_t slots) {
  const uint8_t* earliest = src;
  int32_t kept = 0;
  int32_t i;
  for (i = 0; i < count; i += slots) {
    const uint8_t* const start = results[i].pointer;
    if (start < earliest) {
      continue;
    }
    if (results[i].length == 0) {
      const int32_t left = len - (int32_t)(start - src);
      earliest = start + (utf8 && left > 0 ? vekUtf8Length_(start, left) : 1);
    }
    if (kept != i) {
      memmove(results + kept, results + i, (size_t)slots * sizeof *results);
    }
    kept += slots;
  }
  return kept;
}

/**
 * Searches the `len` bytes at `src` for all matches of a pattern that was compiled with option g;
 * of one compiled without it, for the first. Each match fills vekRegExpGroupCount(state) + 1
 * elements of `results`: the whole match and then each group, as veksRegExpFind_8u does without
 * option g.
 *
 * A match begins where the one before ends, or after an empty match at the next character: none
 * lies inside a character, and no two begin at one position. ("|b" on "b" matches at 0 and at 1,
 * both times the empty text, as in engines that step on after an empty match.)
 *
 * On entry `*numFind` is the number of elements of `results`, on return the number filled, always
 * whole matches. StatusRegExpResultsTruncated reports that not all of them may have had room: call
 * again with more. It comes also where the elements were just enough, so have room for one match
 * more than you expect.
 *
 * Status, in order: StatusNullPointer if a pointer is null; StatusLengthError if `len` is negative;
 * StatusSizeError if `*numFind` is below 1; StatusRegExpError if `state` is no compiled object;
 * StatusRegExpMatchLimit if the match limit ran out, with `*numFind` 0. (Where it runs out after a
 * match was found, the library may end the search there without a status.)
 *
 *     int32_t count = 300;  // of elements
 *     vekRegExpFindAll(text, length, state, found, &count);
 *     for (i = 0; i < count; i += vekRegExpGroupCount(state) + 1) ...
 */
static inline vekStatus vekRegExpFindAll(const uint8_t* src, int32_t len, RegExpState* state,
                                         RegExpFindResult* results, int32_t* numFind) {
  int32_t header[8]; /* the object's: 1 options, 3 captures, 6 format */
  int32_t capacity;
  int32_t slots;
  int32_t i;
  vekStatus status;
  if (src == NULL || state == NULL || results == NULL || numFind == NULL) {
    return StatusNullPointer;
  }
  memcpy(header, state, sizeof header);
  capacity = *numFind;
  slots = header[3];
  if ((header[1] & 16) == 0 || len < 1 || capacity < 1) {
    /* With option g an empty subject's match, which is empty itself, reports its groups only. */
    const int32_t first = (header[1] & 16) != 0 && slots > 1 && capacity > 1 ? 1 : 0;
    *numFind = capacity - first;
    status = veksRegExpFind_8u(src, len, state, results + first, numFind);
    if (status < 0) {
      *numFind = status == StatusRegExpMatchLimit ? 0 : capacity;
      return status;
    }
    if (*numFind == 0) {
      return StatusNoError;
    }
    if (capacity < slots) {
      *numFind = 0;
      return StatusRegExpResultsTruncated;
    }
    if ((header[1] & 16) != 0) {
      results[0].pointer = src;
      results[0].length = 0;
    }
    for (i = *numFind + first; i < slots; ++i) { /* groups that compiling has dropped */
      results[i].pointer = NULL;
      results[i].length = -1;
    }
    *numFind = slots;
    return StatusNoError;
  }
  {
    /* A null template and room for a byte: nothing but the search takes place. */
    uint64_t replacement[2];
    uint8_t scratch[2];
    int32_t room = 1;
    int32_t length = len;
    veksRegExpReplaceInit(NULL, (RegExpReplaceState*)replacement);
    status = veksRegExpReplace_8u(src, &length, scratch, &room, results, numFind, state,
                                  (const RegExpReplaceState*)replacement);
  }
  if (status < 0) {
    *numFind = status == StatusRegExpMatchLimit ? 0 : capacity;
    return status;
  }
  status = *numFind > capacity - slots ? StatusRegExpResultsTruncated : StatusNoError;
  *numFind =
      vekRegExpDropInner_(src, len, header[6] == 1, results, *numFind / slots * slots, slots);
  return status;
}

#endif
