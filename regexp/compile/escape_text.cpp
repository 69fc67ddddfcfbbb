// SPDX-License-Identifier: MIT
#include "regexp/compile/escape_text.h"

#include "regexp/compile/pattern_text.h"

namespace vekch::regexp {
namespace {

// "\c" with a byte: letters of both cases give 1 to 26, "?" gives 0x7F.
constexpr uint8_t ControlByte(uint8_t byte) {
  const int32_t shift = byte >= 0x20 && byte <= 0x3F   ? 0x40
                        : byte >= 0x60 && byte <= 0x7A ? -0x60
                                                       : -0x40;
  return static_cast<uint8_t>(byte + shift);
}

static_assert(ControlByte('A') == 1 && ControlByte('a') == 1 && ControlByte('z') == 26);
static_assert(ControlByte('?') == 0x7F && ControlByte('`') == 0 && ControlByte('_') == 0x1F);

struct HexNumber {
  uint32_t value;
  const uint8_t* next;
};

HexNumber ReadHex(const uint8_t* text, int32_t mostDigits) {
  HexNumber number = {0, text};
  for (; mostDigits > 0 && HexValue(*number.next) >= 0; --mostDigits) {
    number.value = number.value * 16 + static_cast<uint32_t>(HexValue(*number.next++));
  }
  return number;
}

// Up to three octal digits, of which the first is there: a byte, the value's low eight bits.
CharacterEscape ReadOctal(const uint8_t* digits) {
  int32_t value = 0;
  const uint8_t* p = digits;
  for (; p < digits + 3 && IsOctalDigit(*p); ++p) {
    value = value * 8 + (*p - '0');
  }
  return {CharacterKind::kByte, value & 0xFF, p};
}

Fault ReadHexEscape(const uint8_t* text, CharacterEscape* escape) {
  if (text[1] != '{') {
    const HexNumber number = ReadHex(text + 1, 2);
    *escape = {CharacterKind::kByte, static_cast<int32_t>(number.value), number.next};
    return kNoFault;
  }
  const HexNumber number = ReadHex(text + 2, 8);
  if (*number.next != '}') {
    return {StatusRegExpEscapeError, text + 2};
  }
  *escape = {CharacterKind::kCodePoint, static_cast<int32_t>(number.value), number.next + 1};
  return kNoFault;
}

}  // namespace

Fault ReadCharacterEscape(const uint8_t* text, EscapeKind kind, CharacterEscape* escape) {
  if (*text == 0) {
    return {StatusRegExpEscapeError, text};
  }
  switch (kind) {
    case EscapeKind::kControl:
      if (text[1] == 0) {
        return {StatusRegExpEscapeError, text + 1};
      }
      *escape = {CharacterKind::kByte, ControlByte(text[1]), text + 2};
      return kNoFault;
    case EscapeKind::kHex:
      return ReadHexEscape(text, escape);
    case EscapeKind::kOctal:
      *escape = ReadOctal(text);
      return kNoFault;
    case EscapeKind::kByte:
      *escape = {CharacterKind::kByte, kEscapes.of[*text].byte, text + 1};
      return kNoFault;
    default:
      *escape = {CharacterKind::kLiteral, *text, text + 1};
      return kNoFault;
  }
}

}  // namespace vekch::regexp
