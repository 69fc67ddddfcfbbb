// SPDX-License-Identifier: MIT
#include "regexp/compile/posix_name.h"

#include "regexp/compile/pattern_text.h"

namespace vekch::regexp {
namespace {

// The sets are sets of bytes, and some are wider than their names say: punct holds the space and
// every byte from 0x7B up, graph and print every byte above 0x7F.
constexpr PosixSet kSets[] = {
    {"alnum", 3, {{OpClassRange, 'a', 'z'}, {OpClassRange, 'A', 'Z'}, {OpClassRange, '0', '9'}}},
    {"alpha", 2, {{OpClassRange, 'a', 'z'}, {OpClassRange, 'A', 'Z'}}},
    {"ascii", 1, {{OpClassRange, 0x00, 0x7F}}},
    {"blank", 2, {{OpChar, ' ', 0}, {OpChar, '\t', 0}}},
    {"cntrl", 1, {{OpClassRange, 0x00, 0x1F}}},
    {"digit", 1, {{OpClassRange, '0', '9'}}},
    {"graph", 1, {{OpClassRange, 0x21, 0xFF}}},
    {"lower", 1, {{OpClassRange, 'a', 'z'}}},
    {"print", 1, {{OpClassRange, 0x20, 0xFF}}},
    {"punct",
     4,
     {{OpClassRange, 0x20, 0x2F},
      {OpClassRange, 0x3A, 0x40},
      {OpClassRange, 0x5B, 0x60},
      {OpClassRange, 0x7B, 0xFF}}},
    {"space", 2, {{OpClassRange, 0x09, 0x0D}, {OpChar, ' ', 0}}},
    {"upper", 1, {{OpClassRange, 'A', 'Z'}}},
    {"word", 1, {{OpCharType, 'w', 0}}},
    {"xdigit", 3, {{OpClassRange, 'a', 'f'}, {OpClassRange, 'A', 'F'}, {OpClassRange, '0', '9'}}},
};

const uint8_t* SkipName(const uint8_t* text, const char* name) {
  for (; *name != 0; ++name) {
    ++text;
  }
  return text;
}

}  // namespace

PosixBracket ReadPosixBracket(const uint8_t* text, uint8_t opener) {
  const bool negated = *text == '^';
  const uint8_t* nameStart = text + (negated ? 1 : 0);
  for (const PosixSet& set : kSets) {
    if (StartsWith(nameStart, set.name)) {
      const uint8_t* end = SkipName(nameStart, set.name);
      if (*end == opener && end[1] == ']') {
        return {PosixBracket::kName, end + 2, negated, &set};
      }
    }
  }
  // No name. It is at fault if it is closed like one.
  const uint8_t* closing = FindInPattern(text, opener);
  const bool isLiteral = *text == ']' || *closing == 0 || (closing[1] != ']' && closing[1] != 0);
  return {isLiteral ? PosixBracket::kLiteral : PosixBracket::kMalformed, text, false, nullptr};
}

}  // namespace vekch::regexp
