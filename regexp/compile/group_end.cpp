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

// The index behind the construct that begins at `index`: a class with its items, a closed group
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

constexpr bool IsNegativeSerial(const ProgramNode& opening) {
  return opening.op == OpAtomic || IsLookaround(opening);
}

}  // namespace

Fault ProgramBuilder::CloseGroup() {
  const uint8_t* closing = at;
  FlushRun();
  if (AtTopLevel()) {  // a class's extent deceived the pre-scan
    return Fail(StatusRegExpSyntaxError, closing);
  }
  ++at;
  --depth;
  const int32_t opening = innermost;
  const OpenNote note = OpenNote::Of(nodes[opening].ptr);
  innermost = note.around;
  options = note.options;  // dissolved or not

  const int32_t bodyCount = nodeCount - opening - 1;
  const int32_t width = FlatWidth(nodes, opening + 1, nodeCount);
  if (nodes[opening].op == OpGroup &&
      ((width == 1 && bodyCount == 1) || (width >= 2 && !QuantifierFollows(at, options)))) {
    DissolveGroup(opening);
    return kNoFault;
  }
  AppendGroupEnd(opening, width == 1);
  if (nodes[opening].op == OpConditional) {
    return CheckConditional(opening, closing);
  }
  return IsLookbehind(nodes[opening]) ? SettleLookbehind(opening, closing) : kNoFault;
}

void ProgramBuilder::DissolveGroup(int32_t opening) {
  for (int32_t i = opening + 1; i < nodeCount; ++i) {
    nodes[i - 1] = nodes[i];
  }
  --nodeCount;
  --serial;
  lastOfRun = lastOfRun > opening ? -1 : lastOfRun;
}

void ProgramBuilder::AppendGroupEnd(int32_t opening, bool isOneWide) {
  ProgramNode& open = nodes[opening];
  const int32_t signedSerial = IsNegativeSerial(open) ? -open.b : open.b;
  const bool repeatsOne =
      (open.op == OpCapture || open.op == OpGroup) && IsQuantifier(Last()) && isOneWide;
  open.a = signedSerial;
  open.b = nodeCount - opening - 1;
  open.ptr = 0;
  for (int32_t i = opening + 1; i < nodeCount; i = AfterConstruct(nodes, i)) {
    if (nodes[i].op == OpAlternative) {
      nodes[i].a = signedSerial;
    }
  }
  if (WidthRule(open) == RegExpWidthGroup) {
    NoteFixedLength(open);
  }
  Append(OpGroupEnd, signedSerial, options, repeatsOne ? 1 : 0, static_cast<uint64_t>(opening));
}

// A condition that is a group's number or a look-around, not repeated, and at most two branches.
Fault ProgramBuilder::CheckConditional(int32_t opening, const uint8_t* closing) const {
  const ProgramNode& condition = nodes[opening + 1];
  const int32_t end = nodeCount - 1;
  const int32_t body = AfterConstruct(nodes, opening + 1);
  bool isValid =
      (condition.op == OpBackref || IsLookaround(condition)) && !IsQuantifier(nodes[body]);
  int32_t branches = 1;
  for (int32_t i = body; isValid && i < end; i = AfterConstruct(nodes, i)) {
    branches += nodes[i].op == OpAlternative ? 1 : 0;
    isValid = branches <= 2;
  }
  return isValid ? kNoFault : Fail(StatusRegExpSyntaxError, closing);
}

// The body must be of one length, told record by record wherever it lies in the body.
Fault ProgramBuilder::SettleLookbehind(int32_t opening, const uint8_t* closing) {
  ProgramNode& open = nodes[opening];
  for (int32_t i = opening + 1; i < nodeCount; ++i) {
    const ProgramNode& node = nodes[i];
    if (node.op == OpBackref || (IsQuantifier(node) && node.a != node.b)) {
      return Fail(StatusRegExpSyntaxError, closing);
    }
  }
  open.c = FixedBodyLength(open, open.b);
  return open.c < 0 ? Fail(StatusRegExpSyntaxError, closing) : kNoFault;
}

}  // namespace vekch::regexp
