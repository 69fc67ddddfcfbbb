// SPDX-License-Identifier: MIT

// Conditions on a position: starts and ends of lines and of the text, word boundaries.

#ifndef VEKCH_REGEXP_FAST_ASSERTIONS_H
#define VEKCH_REGEXP_FAST_ASSERTIONS_H

#include <stdint.h>

#include "regexp/characters/bytes.h"
#include "regexp/fast/machine.h"

namespace vekch::regexp::fast {

constexpr uint8_t kNewline = '\n';

VEK_INLINE bool IsAtEnd(const Text& text, const uint8_t* at) {
  return at == text.limit || (text.limit - at == 1 && *at == kNewline);
}

// Where the text that is matched ends before the subject, the byte there counts.
VEK_INLINE bool ChangesWord(const Text& text, const uint8_t* at) {
  const bool after = at < text.subjectEnd && IsWordByte(*at);
  return after != (at != text.subject && IsWordByte(at[-1]));
}

[[gnu::noinline]] inline bool Holds(const Text& text, const uint8_t* at, const FastOp& assertion) {
  const bool atStart = at == text.subject;
  const bool atEnd = at == text.limit;
  switch (assertion.letter) {
    case 'z':
      return atEnd;
    case '^':
      return atStart || (!atEnd && at[-1] == kNewline);
    case '$':
      return atEnd || *at == kNewline;
    case 'b':
      return ChangesWord(text, at);
    case 'B':
      return !ChangesWord(text, at);
    case 0x80:
      return atStart || at[-1] == kNewline;
    default:
      return false;
  }
}

}  // namespace vekch::regexp::fast

#endif
