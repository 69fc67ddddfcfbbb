// Groups, from their "(" on: what kind a group is, and the constructs in "(?" and ")" that are no
// groups. While a group is open its record holds the depth in `a` and the serial in `b`.

#include "regexp/pattern_text.h"
#include "regexp/program_builder.h"

namespace vekch::regexp {

Fault ProgramBuilder::OpenBracket() {
  FlushRun();
  // Counted here for every "(", though a comment or an option setting gives its serial back.
  if (serial_ >= kSerialEnd) {
    return Fail(StatusRegExpSyntaxError, at_);
  }
  if (at_[1] != '?') {
    return OpenGroup(OpCapture, 1, captureNumber_++);
  }
  switch (at_[2]) {
    case ':':
      return OpenGroup(OpGroup, 3);
    case '>':
      return OpenGroup(OpAtomic, 3);
    case '=':
      return OpenGroup(OpLookahead, 3);
    case '!':
      return OpenGroup(OpNegLookahead, 3);
    case '<':
      if (at_[3] != '=' && at_[3] != '!') {
        return Fail(StatusRegExpSyntaxError, at_ + 3);
      }
      return OpenGroup(at_[3] == '=' ? OpLookbehind : OpNegLookbehind, 4);
    case '(':
      return Conditional();
    case '#':
      return Comment();
    case ')':
      at_ += 3;
      return kNoFault;
    default:
      return StartsInlineOptions(at_[2]) ? InlineOptions() : Fail(StatusRegExpSyntaxError, at_ + 2);
  }
}

Fault ProgramBuilder::OpenGroup(uint32_t op, int32_t length, int32_t c) {
  ++depth_;
  Append(op, depth_, serial_, c, OpenNote{innermost_, options_}.Packed());
  ++serial_;
  innermost_ = nodeCount_ - 1;
  at_ += length;
  return kNoFault;
}

Fault ProgramBuilder::Comment() {
  const uint8_t* end = FindInPattern(at_, ')');
  if (*end == 0) {
    return Fail(StatusRegExpSyntaxError, end);
  }
  at_ = end + 1;
  return kNoFault;
}

// "(?imsx-imsx)", which holds on in the group around, or "(?imsx-imsx:", which opens a group.
Fault ProgramBuilder::InlineOptions() {
  int32_t options = options_;
  bool sets = true;
  const uint8_t* p = at_ + 2;
  for (; *p != ':' && *p != ')'; ++p) {
    if (!StartsInlineOptions(*p)) {
      return Fail(StatusRegExpSyntaxError, p);
    }
    const int32_t bit = InlineOption(*p);  // none for "-"
    options = sets ? options | bit : options & ~bit;
    sets = sets && *p != '-';
  }
  const auto length = static_cast<int32_t>(p + 1 - at_);
  if (*p == ':') {
    OpenGroup(OpOptionGroup, length, options);
  } else {
    // The searches have no use for x: set or cleared alone, it needs no record.
    if (!StartsWith(at_, "(?x)") && !StartsWith(at_, "(?-x)")) {
      Append(OpSetOptions, options);
    }
    at_ += length;
  }
  options_ = options;
  return kNoFault;
}

// "(?(1)" has its condition read here; "(?(?=" and the like are left standing at the condition,
// which is a group of its own.
Fault ProgramBuilder::Conditional() {
  const uint8_t* condition = at_ + 3;
  if (*condition == '?') {
    return OpenGroup(OpConditional, 2);
  }
  int32_t group = 0;
  const uint8_t* p = condition;
  for (; p < condition + 3 && IsDigit(*p); ++p) {
    group = group * 10 + (*p - '0');
  }
  if (*p != ')') {
    return Fail(StatusRegExpSyntaxError, p);
  }
  if (group == 0) {  // no number at all as well
    return Fail(StatusRegExpFormatError, condition);
  }
  OpenGroup(OpConditional, static_cast<int32_t>(p + 1 - at_));
  Append(OpBackref, group);
  return kNoFault;
}

// The serial of its group is written when the group closes.
Fault ProgramBuilder::Alternative() {
  FlushRun();
  Append(OpAlternative, depth_, options_);
  ++at_;
  if (AtTopLevel()) {
    requiredLiteral_ = kAlternatives;
  }
  return kNoFault;
}

}  // namespace vekch::regexp
