// SPDX-License-Identifier: MIT

// Reading a pattern's text: the small questions that the pre-scan and the compiler both ask. A
// pattern ends with a zero byte; every routine stops there at the latest.

#ifndef VEKCH_REGEXP_COMPILE_PATTERN_TEXT_H
#define VEKCH_REGEXP_COMPILE_PATTERN_TEXT_H

#include <stdint.h>

#include "regexp/characters/bytes.h"
#include "vekch/regexp_program.h"

namespace vekch::regexp {

constexpr bool IsOctalDigit(uint8_t byte) { return byte >= '0' && byte <= '7'; }

// The value of a hexadecimal digit, or -1.
constexpr int32_t HexValue(uint8_t byte) {
  const uint8_t lower = byte | 0x20;
  return IsDigit(byte) ? byte - '0' : lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// White space that option x passes over: the vertical tab is not among it.
constexpr bool IsPatternSpace(uint8_t byte) {
  return byte == ' ' || byte == '\t' || byte == '\n' || byte == '\f' || byte == '\r';
}

// What "[:", "[." and "[=" have after the bracket.
constexpr bool OpensPosixName(uint8_t byte) { return byte == ':' || byte == '.' || byte == '='; }

// The bit that an option letter stands for inside the pattern, 0 for any other byte.
constexpr int32_t InlineOption(uint8_t letter) {
  switch (letter) {
    case 's':
      return RegExpOptionS;
    case 'm':
      return RegExpOptionM;
    case 'i':
      return RegExpOptionI;
    case 'x':
      return RegExpOptionX;
    default:
      return 0;
  }
}

// Whether "(?" with this byte after it starts inline options.
constexpr bool StartsInlineOptions(uint8_t byte) { return byte == '-' || InlineOption(byte) != 0; }

// Whether the text begins with a constant that holds no zero byte.
constexpr bool StartsWith(const uint8_t* text, const char* constant) {
  for (; *constant != 0; ++constant, ++text) {
    if (*text != static_cast<uint8_t>(*constant)) {
      return false;
    }
  }
  return true;
}

// The first position from `text` on that is `byte`, or the terminating zero byte.
constexpr const uint8_t* FindInPattern(const uint8_t* text, uint8_t byte) {
  while (*text != 0 && *text != byte) {
    ++text;
  }
  return text;
}

// The same for a pair of bytes.
constexpr const uint8_t* FindPair(const uint8_t* text, uint8_t first, uint8_t second) {
  text = FindInPattern(text, first);
  while (*text != 0 && text[1] != second) {
    text = FindInPattern(text + 1, first);
  }
  return text;
}

// The position after a comment that runs to the end of its line.
constexpr const uint8_t* SkipLine(const uint8_t* text) {
  text = FindInPattern(text, '\n');
  return *text == 0 ? text : text + 1;
}

// The position after the ")" that ends "(?#", or the terminating zero byte.
constexpr const uint8_t* SkipComment(const uint8_t* text) {
  text = FindInPattern(text, ')');
  return *text == 0 ? text : text + 1;
}

// The position after the "\E" that ends a quotation, or the terminating zero byte.
constexpr const uint8_t* SkipQuotation(const uint8_t* text) {
  text = FindPair(text, '\\', 'E');
  return *text == 0 ? text : text + 2;
}

constexpr const uint8_t* SkipDigits(const uint8_t* text) {
  while (IsDigit(*text)) {
    ++text;
  }
  return text;
}

// Whether the text begins with a quantifier. "{}" and "{,5}" are quantifiers, "{a}" and "{1,2" are
// literal text.
constexpr bool IsQuantifierAt(const uint8_t* text) {
  if (*text == '*' || *text == '+' || *text == '?') {
    return true;
  }
  if (*text != '{') {
    return false;
  }
  const uint8_t* p = SkipDigits(text + 1);
  if (*p == ',') {
    p = SkipDigits(p + 1);
  }
  return *p == '}';
}

// Whether a quantifier comes next once all is passed over that compiles to nothing: white space
// and comments by option x, comments in groups, and constructs that are empty.
constexpr bool QuantifierFollows(const uint8_t* text, int32_t options) {
  for (;;) {
    const bool extended = (options & RegExpOptionX) != 0;
    if (extended && IsPatternSpace(*text)) {
      ++text;
    } else if (extended && *text == '#') {
      text = SkipLine(text);
    } else if (StartsWith(text, "(?#")) {
      text = SkipComment(text);
    } else if (StartsWith(text, "(?)")) {
      text += 3;
    } else if (StartsWith(text, "\\E")) {
      text += 2;
    } else {
      return IsQuantifierAt(text);
    }
  }
}

}  // namespace vekch::regexp

#endif
