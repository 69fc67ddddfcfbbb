// SPDX-License-Identifier: MIT

// Bracket classes: a head record, and after it a record for each item.
//
// A "-" makes a range of the member before it and the member after it, so a member waits until
// what follows is known:
//
//   kNothing   no member waits; a "-" is itself a member
//   kMember    a member waits that a range may begin with
//   kDash      that member and a "-" wait for the range's end
//
// What can't end a range settles the three: "[a-]" and "[a-[:digit:]]" have "-" as a member, and
// "[a-\d]" is malformed. A member and a "-" that wait have been read and have no record yet, so
// the records never get ahead of the bytes that were read.

#include "regexp/characters/properties.h"
#include "regexp/compile/escape_text.h"
#include "regexp/compile/pattern_text.h"
#include "regexp/compile/posix_name.h"
#include "regexp/compile/program_builder.h"
#include "unicode/utf8.h"

namespace vekch::regexp {

class ClassBuilder {
 public:
  explicit ClassBuilder(ProgramBuilder& whole) : builder(whole), at(whole.at) {}

  Fault Run() {
    OpenClass();
    while (*at != ']' || quoted) {
      const Fault fault = *at == 0 ? Malformed(at) : Step();
      if (Failed(fault)) {
        return fault;
      }
    }
    return CloseClass();
  }

 private:
  enum class Waiting { kNothing, kMember, kDash };

  struct Member {
    CharacterKind kind;
    int32_t value;
    bool isSequence;  // written as several bytes that make up one character
  };

  static Fault Malformed(const uint8_t* position) { return {StatusRegExpClassError, position}; }

  void OpenClass() {
    ++at;
    const bool negated = *at == '^';
    at += negated ? 1 : 0;
    head = builder.nodeCount;
    builder.Append(OpClass, negated ? -1 : 0);
    if (*at == ']' || *at == '-') {
      AppendItem(OpChar, *at++);
    }
  }

  Fault Step() {
    if (StartsWith(at, quoted ? "\\E" : "\\Q")) {
      quoted = !quoted;
      at += 2;
      return kNoFault;
    }
    if (!quoted) {
      switch (*at) {
        case '\\':
          return Escape();
        case '[':
          if (OpensPosixName(at[1])) {
            return PosixName();
          }
          break;
        case '-':
          if (waiting != Waiting::kDash) {
            Dash();
            return kNoFault;
          }
          break;
        default:
          break;
      }
    }
    return LiteralMember();
  }

  // A whole UTF-8 character, or the byte where none begins.
  Fault LiteralMember() {
    const uint8_t* position = at;
    const Utf8Character character = ReadUtf8(at, builder.patternEnd);
    at += character.length;
    const auto value = static_cast<int32_t>(character.value);
    const bool isByte = character.value < 256;
    return TakeMember({isByte ? CharacterKind::kByte : CharacterKind::kCodePoint, value,
                       isByte && character.length > 1},
                      position);
  }

  Fault Escape() {
    const uint8_t* position = at;
    const uint8_t* text = at + 1;
    const EscapeKind kind = kEscapes.of[*text].inClass;
    switch (kind) {
      case EscapeKind::kShorthand:
        at = text + 1;
        return TakeItem(OpCharType, *text, position);
      case EscapeKind::kGrapheme:
        at = text + 1;
        return TakeItem(OpGrapheme, 0, position);
      case EscapeKind::kProperty:
        return Property(text, *text == 'P' ? -1 : 0);
      default:
        break;
    }
    CharacterEscape escape;
    const Fault fault = ReadCharacterEscape(text, kind, &escape);
    if (Failed(fault)) {
      return fault;
    }
    at = escape.next;
    return TakeMember({escape.kind, escape.value, false}, position);
  }

  Fault Property(const uint8_t* text, int32_t negated) {
    if (waiting == Waiting::kDash) {
      return Malformed(at);
    }
    Settle();
    if (ParsePropertyEscape(&text, builder.nodes, &builder.nodeCount, negated) < 0) {
      return {StatusRegExpEscapeError, text};
    }
    lastIsSequence = false;
    at = text;
    return kNoFault;
  }

  Fault TakeItem(uint32_t op, int32_t a, const uint8_t* position) {
    if (waiting == Waiting::kDash) {
      return Malformed(position);
    }
    Settle();
    AppendItem(op, a);
    return kNoFault;
  }

  Fault TakeMember(Member member, const uint8_t* position) {
    if (waiting == Waiting::kDash) {
      if (waitingMember.value < 0 ||
          member.value < waitingMember.value) {  // below 0: from 0x80000000 up
        return Malformed(position);
      }
      AppendItem(OpClassRange, waitingMember.value, member.value);
      waiting = Waiting::kNothing;
      return kNoFault;
    }
    Settle();
    waitingMember = member;
    waiting = Waiting::kMember;
    return kNoFault;
  }

  void Dash() {
    ++at;
    if (waiting == Waiting::kMember) {
      waiting = Waiting::kDash;
    } else {
      AppendItem(OpChar, '-');
    }
  }

  // Gives what waits its records: no range came of it.
  void Settle() {
    if (waiting == Waiting::kNothing) {
      return;
    }
    AppendItem(waitingMember.kind == CharacterKind::kCodePoint ? OpCodePoint : OpChar,
               waitingMember.value);
    lastIsSequence = waitingMember.isSequence;
    if (waiting == Waiting::kDash) {
      AppendItem(OpChar, '-');
    }
    waiting = Waiting::kNothing;
  }

  // "[:", "[." or "[=": a name, malformed, or two members.
  Fault PosixName() {
    Settle();
    const uint8_t opener = at[1];
    const PosixBracket bracket = ReadPosixBracket(at + 2, opener);
    switch (bracket.kind) {
      case PosixBracket::kName:
        AppendName(bracket);
        break;
      case PosixBracket::kMalformed:
        return Malformed(at);
      case PosixBracket::kLiteral:
        AppendItem(OpChar, '[');
        AppendItem(OpChar, opener);
        break;
    }
    at = bracket.next;
    return kNoFault;
  }

  void AppendName(const PosixBracket& bracket) {
    const PosixSet& set = *bracket.set;
    if (set.items[0].op == OpCharType) {  // its complement has a letter of its own
      AppendItem(OpCharType, bracket.negated ? 'W' : 'w', 0, bracket.negated ? -1 : 0);
      return;
    }
    for (int32_t i = 0; i < set.count; ++i) {
      AppendItem(set.items[i].op, set.items[i].a, set.items[i].b, bracket.negated ? -1 : 0);
    }
    if (bracket.negated) {
      // Where the name's items end is known in no other way: the next name may be negated as well.
      builder.nodes[builder.nodeCount - set.count].ptr = static_cast<uint64_t>(set.count);
    }
  }

  void AppendItem(uint32_t op, int32_t a, int32_t b = 0, int32_t c = 0) {
    builder.Append(op, a, b, c);
    lastIsSequence = false;
  }

  Fault CloseClass() {
    Settle();
    ProgramNode& classHead = builder.nodes[head];
    classHead.b = builder.nodeCount - head - 1;
    const ProgramNode& last = builder.Last();
    // A character of several bytes would be lost as a record of one byte.
    const bool isOne = classHead.b == 1 && classHead.a == 0 && !lastIsSequence;
    if (classHead.b == 0 || (isOne && last.op == OpChar && last.a == '^')) {
      return {StatusRegExpSyntaxError, at};
    }
    if (isOne && (last.op == OpChar || last.op == OpCharType || last.op == OpGrapheme)) {
      ReduceToItem();
    } else {
      builder.classEnd = builder.nodeCount;
    }
    builder.at = at + 1;
    return kNoFault;
  }

  // A class of one item is that item, no longer an item of a class.
  void ReduceToItem() {
    ProgramNode item = builder.Last();
    item.c = item.op == OpChar ? builder.options : item.c;
    builder.nodes[head] = item;
    builder.nodeCount = head + 1;
  }

  ProgramBuilder& builder;
  const uint8_t* at;
  int32_t head = 0;
  Waiting waiting = Waiting::kNothing;
  Member waitingMember = {};
  bool lastIsSequence = false;  // the last item is a member written as several bytes
  bool quoted = false;
};

Fault ProgramBuilder::BracketClass() {
  FlushRun();
  return ClassBuilder(*this).Run();
}

}  // namespace vekch::regexp
