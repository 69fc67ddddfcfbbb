#include "regexp/compile/escape_text.h"

#include "regexp/compile/pattern_text.h"

namespace vekch::regexp {
namespace {

// The control characters that have a letter; 0 for any other letter.
constexpr uint8_t NamedByte(uint8_t letter) {
  switch (letter) {
    case 'a':
      return 0x07;
    case 'e':
      return 0x1B;
    case 'f':
      return 0x0C;
    case 'n':
      return 0x0A;
    case 'r':
      return 0x0D;
    case 't':
      return 0x09;
    case 'v':
      return 0x0B;
    default:
      return 0;
  }
}

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

}  // namespace

CharacterEscape ReadOctal(const uint8_t* digits) {
  int32_t value = 0;
  const uint8_t* p = digits;
  for (; p < digits + 3 && IsOctalDigit(*p); ++p) {
    value = value * 8 + (*p - '0');
  }
  return {EscapeKind::kByte, value & 0xFF, p};
}

Fault ReadCharacterEscape(const uint8_t* text, CharacterEscape* escape) {
  const uint8_t letter = *text;
  if (letter == 0 || (letter == 'c' && text[1] == 0)) {
    return {StatusRegExpEscapeError, letter == 0 ? text : text + 1};
  }
  if (letter == 'c') {
    *escape = {EscapeKind::kByte, ControlByte(text[1]), text + 2};
  } else if (letter == 'x' && text[1] == '{') {
    const HexNumber number = ReadHex(text + 2, 8);
    if (*number.next != '}') {
      return {StatusRegExpEscapeError, text + 2};
    }
    *escape = {EscapeKind::kCodePoint, static_cast<int32_t>(number.value), number.next + 1};
  } else if (letter == 'x') {
    const HexNumber number = ReadHex(text + 1, 2);
    *escape = {EscapeKind::kByte, static_cast<int32_t>(number.value), number.next};
  } else if (IsOctalDigit(letter)) {
    *escape = ReadOctal(text);
  } else if (NamedByte(letter) != 0) {
    *escape = {EscapeKind::kByte, NamedByte(letter), text + 1};
  } else {
    *escape = {EscapeKind::kLiteral, letter, text + 1};
  }
  return kNoFault;
}

}  // namespace vekch::regexp
