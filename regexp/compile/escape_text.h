// The escapes that stand for one character, inside bracket classes and outside.

#ifndef VEKCH_REGEXP_COMPILE_ESCAPE_TEXT_H
#define VEKCH_REGEXP_COMPILE_ESCAPE_TEXT_H

#include <stdint.h>

#include "regexp/compile/fault.h"

namespace vekch::regexp {

enum class EscapeKind {
  kByte,       // "\n", "\cA", "\x41", "\012"
  kCodePoint,  // "\x{3B1}"
  kLiteral     // any other byte, which stands for itself
};

struct CharacterEscape {
  EscapeKind kind;
  int32_t value;
  const uint8_t* next;  // behind the escape
};

// Reads the escape whose text, without the backslash, begins at `text`.
Fault ReadCharacterEscape(const uint8_t* text, CharacterEscape* escape);

// Up to three octal digits, of which the first is there: a byte, the value's low eight bits.
CharacterEscape ReadOctal(const uint8_t* digits);

}  // namespace vekch::regexp

#endif
