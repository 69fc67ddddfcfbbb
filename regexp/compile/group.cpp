// SPDX-License-Identifier: MIT

// Groups, from their "(" on: what kind a group is, and the constructs in "(?" and ")" that are no
// groups.

#include "regexp/compile/pattern_text.h"
#include "regexp/compile/program_builder.h"

namespace vekch::regexp {

Fault ProgramBuilder::OpenBracket() {
  FlushRun();
  // Counted here for every "(", though a comment or an option setting gives its serial back.
  if (serial >= kSerialEnd) {
    return Fail(StatusRegExpSyntaxError, at);
  }
  if (at[1] != '?') {
    return OpenGroup(OpCapture, 1, captureNumber++);
  }
  switch (at[2]) {
    case ':':
      return OpenGroup(OpGroup, 3);
    case '>':
      return OpenGroup(OpAtomic, 3);
    case '=':
      return OpenGroup(OpLookahead, 3);
    case '!':
      return OpenGroup(OpNegLookahead, 3);
    case '<':
      if (at[3] != '=' && at[3] != '!') {
        return Fail(StatusRegExpSyntaxError, at + 3);
      }
      return OpenGroup(at[3] == '=' ? OpLookbehind : OpNegLookbehind, 4);
    case '(':
      return Conditional();
    case '#':
      return Comment();
    case ')':
      at += 3;
      return kNoFault;
    default:
      return StartsInlineOptions(at[2]) ? InlineOptions() : Fail(StatusRegExpSyntaxError, at + 2);
  }
}

Fault ProgramBuilder::OpenGroup(uint32_t op, int32_t length, int32_t c) {
  const bool isNegative = op == OpAtomic || (op >= OpLookbehind && op <= OpNegLookahead);
  groups[serial] = {nodeCount, innermost, {{options, classEnd, 0, 0}}};
  Append(op, isNegative ? -serial : serial, 0, c);
  innermost = serial++;
  at += length;
  return kNoFault;
}

Fault ProgramBuilder::Comment() {
  const uint8_t* end = FindInPattern(at, ')');
  if (*end == 0) {
    return Fail(StatusRegExpSyntaxError, end);
  }
  at = end + 1;
  return kNoFault;
}

// "(?imsx-imsx)", which holds on in the group around, or "(?imsx-imsx:", which opens a group.
Fault ProgramBuilder::InlineOptions() {
  int32_t changed = options;
  bool sets = true;
  const uint8_t* p = at + 2;
  for (; *p != ':' && *p != ')'; ++p) {
    if (!StartsInlineOptions(*p)) {
      return Fail(StatusRegExpSyntaxError, p);
    }
    const int32_t bit = InlineOption(*p);  // none for "-"
    changed = sets ? changed | bit : changed & ~bit;
    sets = sets && *p != '-';
  }
  const auto length = static_cast<int32_t>(p + 1 - at);
  if (*p == ':') {
    OpenGroup(OpOptionGroup, length, changed);
  } else {
    // The searches have no use for x: set or cleared alone, it needs no record.
    if (!StartsWith(at, "(?x)") && !StartsWith(at, "(?-x)")) {
      Append(OpSetOptions, changed);
    }
    at += length;
  }
  options = changed;
  return kNoFault;
}

// "(?(1)" has its condition read here; "(?(?=" and the like are left at the condition,
// which is a group of its own.
Fault ProgramBuilder::Conditional() {
  const uint8_t* condition = at + 3;
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
  OpenGroup(OpConditional, static_cast<int32_t>(p + 1 - at));
  Append(OpBackref, group);
  return kNoFault;
}

Fault ProgramBuilder::Alternative() {
  FlushRun();
  ++at;
  if (AtTopLevel()) {
    Append(OpAlternative, 0, options);
    suffixLiteral = kAlternatives;
    return kNoFault;
  }
  GroupEntry& group = groups[innermost];
  Append(OpAlternative, nodes[group.opening].a, options);
  ++group.compiling.alternatives;
  return kNoFault;
}

}  // namespace vekch::regexp
