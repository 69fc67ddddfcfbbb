// SPDX-License-Identifier: MIT

// The escapes that stand for one character, inside bracket classes and outside.

#ifndef VEKCH_REGEXP_COMPILE_ESCAPE_TEXT_H
#define VEKCH_REGEXP_COMPILE_ESCAPE_TEXT_H

#include <stdint.h>

#include "regexp/compile/escape_kind.h"
#include "regexp/compile/fault.h"

namespace vekch::regexp {

enum class CharacterKind {
  kByte,       // "\n", "\cA", "\x41", "\012"
  kCodePoint,  // "\x{3B1}"
  kLiteral     // any other byte, which stands for itself
};

struct CharacterEscape {
  CharacterKind kind;
  int32_t value;
  const uint8_t* next;  // after the escape
};

// Reads an escape of a kind up to kOctal; any other is taken for a literal byte. `text` begins
// after the backslash. The zero byte that ends a pattern stands for no character.
Fault ReadCharacterEscape(const uint8_t* text, EscapeKind kind, CharacterEscape* escape);

}  // namespace vekch::regexp

#endif
