// SPDX-License-Identifier: MIT

// What the byte after a backslash begins, outside bracket classes and inside. One table: what no
// row names stands for itself.

#ifndef VEKCH_REGEXP_COMPILE_ESCAPE_KIND_H
#define VEKCH_REGEXP_COMPILE_ESCAPE_KIND_H

#include <stdint.h>

#include "regexp/characters/bytes.h"
#include "vekch/regexp_program.h"

namespace vekch::regexp {

enum class EscapeKind : uint8_t {
  kLiteral,    // the byte itself
  kByte,       // the control character of the row: "\n"
  kControl,    // "\cA"
  kHex,        // "\x41", "\x{3B1}"
  kOctal,      // "\012"
  kGroup,      // "\1": a group, or else an octal code or a literal
  kAssertion,  // "\b"
  kShorthand,  // "\d"
  kAnyByte,    // "\C"
  kGrapheme,   // "\X"
  kProperty,   // "\p{L}", "\P{L}"
  kQuote,      // "\Q"
  kQuoteEnd,   // "\E"
};

struct EscapeMeaning {
  EscapeKind outside = EscapeKind::kLiteral;
  EscapeKind inClass = EscapeKind::kLiteral;
  uint8_t byte = 0;  // of kByte
};

struct EscapeTable {
  EscapeMeaning of[256];

  constexpr EscapeTable() : of() {
    using Kind = EscapeKind;
#define VEKCH_REGEXP_ESCAPE(name, letter, ranges, isComplement, newline, words) \
  AddEscape(letter, Kind::kShorthand, Kind::kShorthand);
    VEKCH_REGEXP_SHORTHANDS(VEKCH_REGEXP_ESCAPE)
#undef VEKCH_REGEXP_ESCAPE
#define VEKCH_REGEXP_ESCAPE(name, letter, isOfLine, words) \
  AddEscape(letter, Kind::kAssertion, Kind::kLiteral);
    VEKCH_REGEXP_ASSERTIONS(VEKCH_REGEXP_ESCAPE)
#undef VEKCH_REGEXP_ESCAPE
    struct Row {
      uint8_t byte;
      EscapeMeaning meaning;
    };
    const Row rows[] = {
        {'a', {Kind::kByte, Kind::kByte, 0x07}},      {'b', {Kind::kAssertion, Kind::kByte, 0x08}},
        {'e', {Kind::kByte, Kind::kByte, 0x1B}},      {'f', {Kind::kByte, Kind::kByte, 0x0C}},
        {'n', {Kind::kByte, Kind::kByte, 0x0A}},      {'r', {Kind::kByte, Kind::kByte, 0x0D}},
        {'t', {Kind::kByte, Kind::kByte, 0x09}},      {'v', {Kind::kByte, Kind::kByte, 0x0B}},
        {'c', {Kind::kControl, Kind::kControl, 0}},   {'x', {Kind::kHex, Kind::kHex, 0}},
        {'C', {Kind::kAnyByte, Kind::kLiteral, 0}},   {'X', {Kind::kGrapheme, Kind::kGrapheme, 0}},
        {'p', {Kind::kProperty, Kind::kProperty, 0}}, {'P', {Kind::kProperty, Kind::kProperty, 0}},
        {'Q', {Kind::kQuote, Kind::kQuote, 0}},       {'E', {Kind::kQuoteEnd, Kind::kQuoteEnd, 0}},
    };
    for (const Row& row : rows) {
      of[row.byte] = row.meaning;
    }
    for (int32_t digit = '0'; digit <= '9'; ++digit) {
      const EscapeKind kind = digit < '8' ? Kind::kOctal : Kind::kLiteral;
      of[digit] = {digit == '0' ? kind : Kind::kGroup, kind, 0};
    }
  }

 private:
  // "." and the anchors are no escapes.
  constexpr void AddEscape(int32_t letter, EscapeKind outside, EscapeKind inClass) {
    if (IsAsciiLetter(letter)) {
      of[letter] = {outside, inClass, 0};
    }
  }
};

inline constexpr EscapeTable kEscapes;

}  // namespace vekch::regexp

#endif
