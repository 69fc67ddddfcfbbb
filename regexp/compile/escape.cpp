// SPDX-License-Identifier: MIT

// Escapes outside bracket classes, and "." and the shorthands, whose repetitions merge.

#include "regexp/characters/properties.h"
#include "regexp/compile/escape_text.h"
#include "regexp/compile/pattern_text.h"
#include "regexp/compile/program_builder.h"

namespace vekch::regexp {

Fault ProgramBuilder::Escape() {
  FlushRun();
  const uint8_t* text = at + 1;
  const EscapeKind kind = kEscapes.of[*text].outside;
  switch (kind) {
    case EscapeKind::kAssertion:
      Append(OpAssert, *text);
      break;
    case EscapeKind::kAnyByte:
      Append(OpAnyByte);
      break;
    case EscapeKind::kGrapheme:
      Append(OpGrapheme);
      break;
    case EscapeKind::kShorthand:
      return CharType(*text, text + 1);
    case EscapeKind::kProperty:
      return PropertyEscape(*text == 'P' ? -1 : 0);
    case EscapeKind::kQuote:
      Quote(text + 1);
      return kNoFault;
    case EscapeKind::kQuoteEnd:  // of a quotation that was never begun
      break;
    case EscapeKind::kGroup:
      return NumberEscape(text);
    case EscapeKind::kLiteral:
    case EscapeKind::kByte:
    case EscapeKind::kControl:
    case EscapeKind::kHex:
    case EscapeKind::kOctal:
      return ByteEscape(text, kind);
  }
  at = text + 1;
  return kNoFault;
}

Fault ProgramBuilder::ByteEscape(const uint8_t* text, EscapeKind kind) {
  CharacterEscape escape;
  const Fault fault = ReadCharacterEscape(text, kind, &escape);
  if (Failed(fault)) {
    return fault;
  }
  at = escape.next;
  switch (escape.kind) {
    case CharacterKind::kByte:
      AppendByte(static_cast<uint8_t>(escape.value));
      break;
    case CharacterKind::kCodePoint:
      Append(OpCodePoint, escape.value);
      break;
    case CharacterKind::kLiteral:  // a run begins with it, and may go on
      at = text;
      return LiteralByte();
  }
  return kNoFault;
}

// "\" and a digit from 1 to 9: a group, or else the code of a byte. One digit alone is always a
// group.
Fault ProgramBuilder::NumberEscape(const uint8_t* digits) {
  int32_t number = 0;
  const uint8_t* next = digits;
  for (; next < digits + 3 && IsDigit(*next); ++next) {
    number = number * 10 + (*next - '0');
  }
  if (number < captureCount) {
    Append(OpBackref, number);
    at = next;
    return kNoFault;
  }
  if (next == digits + 1) {
    return Fail(StatusRegExpFormatError, digits);
  }
  return ByteEscape(digits, kEscapes.of[*digits].inClass);  // which knows no groups
}

Fault ProgramBuilder::PropertyEscape(int32_t negated) {
  const uint8_t* position = at + 1;
  if (ParsePropertyEscape(&position, nodes, &nodeCount, negated) < 0) {
    return Fail(StatusRegExpEscapeError, position);
  }
  at = position;
  return kNoFault;
}

// "\Q" to "\E" or to the pattern's end: a run of its own.
void ProgramBuilder::Quote(const uint8_t* text) {
  const uint8_t* end = FindPair(text, '\\', 'E');
  run = text;
  runLength = static_cast<int32_t>(end - text);
  FlushRun();
  at = *end == 0 ? end : end + 2;
}

// A shorthand that repeats the one before it becomes that one's quantifier, or adds 1 to it. If a
// quantifier follows, it will be added to what is here for the shorthand alone.
Fault ProgramBuilder::CharType(uint8_t letter, const uint8_t* next) {
  FlushRun();
  at = next;
  const bool quantified = QuantifierFollows(at, options);
  const auto repeats = [this, letter](int32_t index) {
    return index >= 0 && nodes[index].op == OpCharType && nodes[index].a == letter &&
           !IsItem(index);
  };
  if (repeats(nodeCount - 1)) {
    const int32_t count = quantified ? 1 : 2;
    Append(OpGreedy, count, count);
  } else if (nodeCount > 0 && IsQuantifier(Last()) && repeats(nodeCount - 2)) {
    if (!quantified) {
      Last().a += Last().a < RegExpUnbounded ? 1 : 0;
      Last().b += Last().b < RegExpUnbounded ? 1 : 0;
    }
  } else {
    Append(OpCharType, letter);
  }
  return kNoFault;
}

}  // namespace vekch::regexp
