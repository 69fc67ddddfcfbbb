// SPDX-License-Identifier: MIT

// Groups, at their ")": a group that needs no records dissolves; any other gets its end, and what
// was open in its records while it was open is settled.
//
// A body is walked construct by construct, over closed groups in one step, so that nested groups
// do not multiply the work.

#include "regexp/compile/pattern_text.h"
#include "regexp/compile/program_builder.h"

namespace vekch::regexp {
namespace {

constexpr int32_t kUnknownWidth = -1;

// The index after the construct that begins at `index`: a class with its items, a closed group
// with its body and its end, or one record.
int32_t AfterConstruct(const ProgramNode* nodes, int32_t index) {
  const ProgramNode& node = nodes[index];
  return index + (IsOpening(node) ? node.b + 2 : node.op == OpClass ? node.b + 1 : 1);
}

// The width of the records from `first` to before `end` if each is one character, a run, a class
// or a greedy quantifier, which counts nothing; otherwise unknown.
int32_t FlatWidth(const ProgramNode* nodes, int32_t first, int32_t end) {
  int32_t width = 0;
  for (int32_t i = first; i < end; i = AfterConstruct(nodes, i)) {
    const int32_t rule = WidthRule(nodes[i]);
    if (rule == RegExpWidthRun) {
      width += nodes[i].b;
    } else if (rule == RegExpWidthOne || rule == RegExpWidthClass) {
      ++width;
    } else if (nodes[i].op != OpGreedy) {
      return kUnknownWidth;
    }
  }
  return width;
}

}  // namespace

Fault ProgramBuilder::CloseGroup() {
  const uint8_t* closing = at;
  FlushRun();
  if (AtTopLevel()) {  // a class's extent deceived the pre-scan
    return Fail(StatusRegExpSyntaxError, closing);
  }
  ++at;
  GroupEntry& group = groups[innermost];
  innermost = group.around;
  options = group.compiling.options;  // dissolved or not

  const int32_t bodyCount = nodeCount - group.opening - 1;
  const int32_t width = FlatWidth(nodes, group.opening + 1, nodeCount);
  const uint32_t op = nodes[group.opening].op;
  if (op == OpGroup &&
      ((width == 1 && bodyCount == 1) || (width >= 2 && !QuantifierFollows(at, options)))) {
    DissolveGroup(group.opening);
    return kNoFault;
  }
  AppendGroupEnd(&group, width == 1);
  const bool isValid = op == OpConditional                  ? IsConditional(group)
                       : IsLookbehind(nodes[group.opening]) ? SettleLookbehind(group)
                                                            : true;
  return isValid ? kNoFault : Fail(StatusRegExpSyntaxError, closing);
}

void ProgramBuilder::DissolveGroup(int32_t opening) {
  for (int32_t i = opening + 1; i < nodeCount; ++i) {
    nodes[i - 1] = nodes[i];
  }
  --nodeCount;
  --serial;
  lastOfRun = lastOfRun > opening ? -1 : lastOfRun;
  classEnd -= classEnd > opening ? 1 : 0;
}

void ProgramBuilder::AppendGroupEnd(GroupEntry* group, bool isOneWide) {
  ProgramNode& open = nodes[group->opening];
  const bool repeatsOne =
      (open.op == OpCapture || open.op == OpGroup) && IsQuantifier(Last()) && isOneWide;
  open.b = nodeCount - group->opening - 1;
  if (WidthRule(open) == RegExpWidthGroup) {
    group->compiling.fixedLength = FixedBodyLength(group->opening);
  }
  Append(OpGroupEnd, open.a, options, repeatsOne ? 1 : 0);
}

// A condition that is a group's number or a look-around, not repeated, and at most two branches.
bool ProgramBuilder::IsConditional(const GroupEntry& group) const {
  const ProgramNode& condition = nodes[group.opening + 1];
  const int32_t body = AfterConstruct(nodes, group.opening + 1);
  return (condition.op == OpBackref || IsLookaround(condition)) && !IsQuantifier(nodes[body]) &&
         group.compiling.alternatives <= 1;
}

// The body must be of one length, checked record by record wherever it lies in the body.
bool ProgramBuilder::SettleLookbehind(const GroupEntry& group) {
  for (int32_t i = group.opening + 1; i < nodeCount; ++i) {
    const ProgramNode& node = nodes[i];
    if (node.op == OpBackref || (IsQuantifier(node) && node.a != node.b)) {
      return false;
    }
  }
  ProgramNode& open = nodes[group.opening];
  open.c = FixedBodyLength(group.opening);
  return open.c >= 0;
}

// The number of characters that the body of a closed group always consumes, or -1 if it is not
// fixed; what is longer than any subject counts as the longest.
//
// Of groups inside the body (of the rule RegExpWidthGroup) the length is known since they closed.
// So there is no recursion, and each record is walked once for the group that it is in.
int32_t ProgramBuilder::FixedBodyLength(int32_t opening) const {
  int64_t length = 0;
  int64_t lastWidth = 0;  // of what a quantifier would repeat
  int64_t ofFirstAlternative = -1;
  const int32_t end = opening + 1 + nodes[opening].b;
  for (int32_t i = opening + 1; i < end; ++i) {
    const ProgramNode& node = nodes[i];
    switch (WidthRule(node)) {
      case RegExpWidthOne:
        lastWidth = 1;
        length += 1;
        break;
      case RegExpWidthRun:
        length += node.b;
        break;
      case RegExpWidthClass:
        lastWidth = 1;
        length += 1;
        i += node.b;
        break;
      case RegExpWidthRepeat:
        // "a{0}" still counts as one "a".
        length += node.a > 1 ? (int64_t{node.a} - 1) * lastWidth : 0;
        break;
      case RegExpWidthLookaround:
        i += node.b;
        break;
      case RegExpWidthGroup:
        lastWidth = groups[SerialOf(node)].compiling.fixedLength;
        if (lastWidth < 0) {
          return -1;
        }
        length += lastWidth;
        i += node.b;
        break;
      case RegExpWidthAlternative:
        if (ofFirstAlternative >= 0 && length != ofFirstAlternative) {
          return -1;
        }
        ofFirstAlternative = length;
        length = 0;
        break;
      default:
        break;
    }
    length = length < INT32_MAX ? length : INT32_MAX;
  }
  const bool isFixed = ofFirstAlternative < 0 || length == ofFirstAlternative;
  return isFixed ? static_cast<int32_t>(length) : -1;
}

}  // namespace vekch::regexp
