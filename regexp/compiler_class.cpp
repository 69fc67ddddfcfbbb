// Bracket classes: a head record, and behind it a record for each item.
//
// A "-" makes a range of the member before it and the member behind it, so a member waits until
// what follows is known:
//
//   kNothing   no member waits; a "-" is itself a member
//   kMember    a member waits that a range may begin with
//   kDash      that member and a "-" wait for the range's end
//
// What can't end a range settles the three: "[a-]" and "[a-[:digit:]]" have "-" as a member, and
// "[a-\d]" is malformed. A member and a "-" that wait have been read and have no record yet, so
// the records stay behind the bytes.

#include "regexp/compiler_posix.h"
#include "regexp/escape_text.h"
#include "regexp/pattern_text.h"
#include "regexp/program_builder.h"
#include "regexp/properties.h"
#include "unicode/utf8.h"

namespace vekch::regexp {

class ClassBuilder {
 public:
  explicit ClassBuilder(ProgramBuilder& builder) : builder_(builder), at_(builder.at_) {}

  Fault Run() {
    OpenClass();
    while (*at_ != ']' || quoted_) {
      const Fault fault = *at_ == 0 ? Malformed(at_) : Step();
      if (Failed(fault)) {
        return fault;
      }
    }
    return CloseClass();
  }

 private:
  enum class Waiting { kNothing, kMember, kDash };

  struct Member {
    EscapeKind kind;
    int32_t value;
    bool isSequence;  // written as several bytes that make up one character
  };

  static Fault Malformed(const uint8_t* place) { return {StatusRegExpClassError, place}; }

  void OpenClass() {
    ++at_;
    const bool negated = *at_ == '^';
    at_ += negated ? 1 : 0;
    head_ = builder_.nodeCount_;
    builder_.Append(OpClass, negated ? -1 : 0);
    if (*at_ == ']' || *at_ == '-') {
      AppendItem(OpChar, *at_++);
    }
  }

  Fault Step() {
    if (StartsWith(at_, quoted_ ? "\\E" : "\\Q")) {
      quoted_ = !quoted_;
      at_ += 2;
      return kNoFault;
    }
    if (!quoted_) {
      switch (*at_) {
        case '\\':
          return Escape();
        case '[':
          if (OpensPosixName(at_[1])) {
            return PosixName();
          }
          break;
        case '-':
          if (waiting_ != Waiting::kDash) {
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
    const uint8_t* place = at_;
    const Utf8Character character = ReadUtf8(at_, builder_.end_);
    at_ += character.length;
    const auto value = static_cast<int32_t>(character.value);
    const bool isByte = character.value < 256;
    return TakeMember({isByte ? EscapeKind::kByte : EscapeKind::kCodePoint, value,
                       isByte && character.length > 1},
                      place);
  }

  Fault Escape() {
    const uint8_t* place = at_;
    const uint8_t* text = at_ + 1;
    const uint8_t letter = *text;
    switch (letter) {
      case 'b':
        at_ = text + 1;
        return TakeMember({EscapeKind::kByte, 0x08, false}, place);
      case 'd':
      case 'D':
      case 's':
      case 'S':
      case 'w':
      case 'W':
        at_ = text + 1;
        return TakeItem(OpCharType, letter, place);
      case 'X':
        at_ = text + 1;
        return TakeItem(OpGrapheme, 0, place);
      case 'p':
      case 'P':
        return Property(text, letter == 'P' ? -1 : 0);
      default:
        break;
    }
    CharacterEscape escape;
    const Fault fault = ReadCharacterEscape(text, &escape);
    if (Failed(fault)) {
      return fault;
    }
    at_ = escape.next;
    return TakeMember({escape.kind, escape.value, false}, place);
  }

  Fault Property(const uint8_t* text, int32_t negated) {
    if (waiting_ == Waiting::kDash) {
      return Malformed(at_);
    }
    Settle();
    if (ParsePropertyEscape(&text, builder_.nodes_, &builder_.nodeCount_, negated) < 0) {
      return {StatusRegExpEscapeError, text};
    }
    if (builder_.Last().op != OpScript) {
      builder_.Last().ptr = kItemNote;
    }
    at_ = text;
    return kNoFault;
  }

  Fault TakeItem(uint32_t op, int32_t a, const uint8_t* place) {
    if (waiting_ == Waiting::kDash) {
      return Malformed(place);
    }
    Settle();
    AppendItem(op, a);
    return kNoFault;
  }

  Fault TakeMember(Member member, const uint8_t* place) {
    if (waiting_ == Waiting::kDash) {
      if (member_.value < 0 || member.value < member_.value) {  // below 0: from 0x80000000 up
        return Malformed(place);
      }
      AppendItem(OpClassRange, member_.value, member.value);
      waiting_ = Waiting::kNothing;
      return kNoFault;
    }
    Settle();
    member_ = member;
    waiting_ = Waiting::kMember;
    return kNoFault;
  }

  void Dash() {
    ++at_;
    if (waiting_ == Waiting::kMember) {
      waiting_ = Waiting::kDash;
    } else {
      AppendItem(OpChar, '-');
    }
  }

  // Gives what waits its records: no range came of it.
  void Settle() {
    if (waiting_ == Waiting::kNothing) {
      return;
    }
    AppendItem(member_.kind == EscapeKind::kCodePoint ? OpCodePoint : OpChar, member_.value);
    if (member_.isSequence) {
      builder_.Last().ptr |= kSequenceNote;
    }
    if (waiting_ == Waiting::kDash) {
      AppendItem(OpChar, '-');
    }
    waiting_ = Waiting::kNothing;
  }

  // "[:", "[." or "[=": a name, malformed, or two members.
  Fault PosixName() {
    Settle();
    const uint8_t opener = at_[1];
    const PosixBracket bracket = ReadPosixBracket(at_ + 2, opener);
    switch (bracket.kind) {
      case PosixBracket::kName:
        AppendName(bracket);
        break;
      case PosixBracket::kMalformed:
        return Malformed(at_);
      case PosixBracket::kLiteral:
        AppendItem(OpChar, '[');
        AppendItem(OpChar, opener);
        break;
    }
    at_ = bracket.next;
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
      // Where the name's items end can't be told otherwise: the next name may be negated as well.
      builder_.nodes_[builder_.nodeCount_ - set.count].ptr |= static_cast<uint64_t>(set.count);
    }
  }

  void AppendItem(uint32_t op, int32_t a, int32_t b = 0, int32_t c = 0) {
    builder_.Append(op, a, b, c, kItemNote);
  }

  Fault CloseClass() {
    Settle();
    ProgramNode& head = builder_.nodes_[head_];
    head.b = builder_.nodeCount_ - head_ - 1;
    const ProgramNode& last = builder_.Last();
    // A character of several bytes would be lost as a record of one byte.
    const bool isOne = head.b == 1 && head.a == 0 && (last.ptr & kSequenceNote) == 0;
    if (head.b == 0 || (isOne && last.op == OpChar && last.a == '^')) {
      return {StatusRegExpSyntaxError, at_};
    }
    if (isOne && (last.op == OpChar || last.op == OpCharType || last.op == OpGrapheme)) {
      ReduceToItem();
    }
    builder_.at_ = at_ + 1;
    return kNoFault;
  }

  // A class of one item is that item, no longer an item of a class.
  void ReduceToItem() {
    ProgramNode item = builder_.Last();
    item.c = item.op == OpChar ? builder_.options_ : item.c;
    item.ptr = 0;
    builder_.nodes_[head_] = item;
    builder_.nodeCount_ = head_ + 1;
  }

  ProgramBuilder& builder_;
  const uint8_t* at_;
  int32_t head_ = 0;
  Waiting waiting_ = Waiting::kNothing;
  Member member_ = {};
  bool quoted_ = false;
};

Fault ProgramBuilder::BracketClass() {
  FlushRun();
  return ClassBuilder(*this).Run();
}

}  // namespace vekch::regexp
