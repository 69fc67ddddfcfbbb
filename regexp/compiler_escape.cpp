// Escapes outside bracket classes, and "." and the shorthands, whose repetitions merge.

#include "regexp/escape_text.h"
#include "regexp/pattern_text.h"
#include "regexp/program_builder.h"
#include "regexp/properties.h"

namespace vekch::regexp {

Fault ProgramBuilder::Escape() {
  FlushRun();
  const uint8_t* text = at_ + 1;
  const uint8_t letter = *text;
  switch (letter) {
    case 'A':
    case 'B':
    case 'G':
    case 'Z':
    case 'b':
    case 'z':
      Append(OpAssert, letter);
      at_ = text + 1;
      return kNoFault;
    case 'C':
    case 'X':
      Append(letter == 'C' ? OpAnyByte : OpGrapheme);
      at_ = text + 1;
      return kNoFault;
    case 'd':
    case 'D':
    case 's':
    case 'S':
    case 'w':
    case 'W':
      return CharType(letter, text + 1);
    case 'p':
      return PropertyEscape(0);
    case 'P':
      return PropertyEscape(-1);
    case 'Q':
      Quote(text + 1);
      return kNoFault;
    case 'E':  // ends a quotation that was never begun
      at_ = text + 1;
      return kNoFault;
    default:
      return letter >= '1' && letter <= '9' ? NumberEscape(text) : ByteEscape(text);
  }
}

Fault ProgramBuilder::ByteEscape(const uint8_t* text) {
  CharacterEscape escape;
  const Fault fault = ReadCharacterEscape(text, &escape);
  if (Failed(fault)) {
    return fault;
  }
  at_ = escape.next;
  switch (escape.kind) {
    case EscapeKind::kByte:
      AppendByte(static_cast<uint8_t>(escape.value));
      break;
    case EscapeKind::kCodePoint:
      Append(OpCodePoint, escape.value);
      break;
    case EscapeKind::kLiteral:  // a run begins with it, and may go on
      at_ = text;
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
  if (number < captureCount_) {
    Append(OpBackref, number);
    at_ = next;
    return kNoFault;
  }
  if (next == digits + 1) {
    return Fail(StatusRegExpFormatError, digits);
  }
  return ByteEscape(digits);
}

Fault ProgramBuilder::PropertyEscape(int32_t negated) {
  const uint8_t* position = at_ + 1;
  if (ParsePropertyEscape(&position, nodes_, &nodeCount_, negated) < 0) {
    return Fail(StatusRegExpEscapeError, position);
  }
  at_ = position;
  return kNoFault;
}

// "\Q" to "\E" or to the pattern's end: a run of its own.
void ProgramBuilder::Quote(const uint8_t* text) {
  const uint8_t* end = FindPair(text, '\\', 'E');
  run_ = text;
  runLength_ = static_cast<int32_t>(end - text);
  FlushRun();
  at_ = *end == 0 ? end : end + 2;
}

// A shorthand that repeats the one before it becomes that one's quantifier, or adds 1 to it. If a
// quantifier follows, it will be added to what stands here for the shorthand alone.
Fault ProgramBuilder::CharType(uint8_t letter, const uint8_t* next) {
  FlushRun();
  at_ = next;
  const bool quantified = QuantifierFollows(at_, options_);
  const auto repeats = [this, letter](int32_t index) {
    return index >= 0 && nodes_[index].op == OpCharType && nodes_[index].a == letter &&
           nodes_[index].ptr == 0;  // no item of a class
  };
  if (repeats(nodeCount_ - 1)) {
    const int32_t count = quantified ? 1 : 2;
    Append(OpGreedy, count, count);
  } else if (nodeCount_ > 0 && IsQuantifier(Last()) && repeats(nodeCount_ - 2)) {
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
