// Groups, at their ")": a group that needs no records dissolves; any other gets its end, and what
// was open in its records while it was open is settled.
//
// A body is walked construct by construct, over closed groups in one step, so that nested groups
// do not multiply the work.

#include "regexp/pattern_text.h"
#include "regexp/program_builder.h"

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
  const uint8_t* closing = at_;
  FlushRun();
  if (AtTopLevel()) {  // a class's extent deceived the pre-scan
    return Fail(StatusRegExpSyntaxError, closing);
  }
  ++at_;
  --depth_;
  const int32_t opening = innermost_;
  const OpenNote note = OpenNote::Of(nodes_[opening].ptr);
  innermost_ = note.around;
  options_ = note.options;  // dissolved or not

  const int32_t bodyCount = nodeCount_ - opening - 1;
  const int32_t width = FlatWidth(nodes_, opening + 1, nodeCount_);
  if (nodes_[opening].op == OpGroup &&
      ((width == 1 && bodyCount == 1) || (width >= 2 && !QuantifierFollows(at_, options_)))) {
    DissolveGroup(opening);
    return kNoFault;
  }
  AppendGroupEnd(opening, width == 1);
  if (nodes_[opening].op == OpConditional) {
    return CheckConditional(opening, closing);
  }
  return IsLookbehind(nodes_[opening]) ? SettleLookbehind(opening, closing) : kNoFault;
}

void ProgramBuilder::DissolveGroup(int32_t opening) {
  for (int32_t i = opening + 1; i < nodeCount_; ++i) {
    nodes_[i - 1] = nodes_[i];
  }
  --nodeCount_;
  --serial_;
}

void ProgramBuilder::AppendGroupEnd(int32_t opening, bool isOneWide) {
  ProgramNode& open = nodes_[opening];
  const int32_t serial = IsNegativeSerial(open) ? -open.b : open.b;
  const bool repeatsOne =
      (open.op == OpCapture || open.op == OpGroup) && IsQuantifier(Last()) && isOneWide;
  open.a = serial;
  open.b = nodeCount_ - opening - 1;
  open.ptr = 0;
  for (int32_t i = opening + 1; i < nodeCount_; i = AfterConstruct(nodes_, i)) {
    if (nodes_[i].op == OpAlternative) {
      nodes_[i].a = serial;
    }
  }
  if (WidthRule(open) == RegExpWidthGroup) {
    NoteFixedLength(open);
  }
  Append(OpGroupEnd, serial, options_, repeatsOne ? 1 : 0, static_cast<uint64_t>(opening));
}

// A condition that is a group's number or a look-around, not repeated, and at most two branches.
Fault ProgramBuilder::CheckConditional(int32_t opening, const uint8_t* closing) const {
  const ProgramNode& condition = nodes_[opening + 1];
  const int32_t end = nodeCount_ - 1;
  const int32_t body = AfterConstruct(nodes_, opening + 1);
  bool isValid =
      (condition.op == OpBackref || IsLookaround(condition)) && !IsQuantifier(nodes_[body]);
  int32_t branches = 1;
  for (int32_t i = body; isValid && i < end; i = AfterConstruct(nodes_, i)) {
    branches += nodes_[i].op == OpAlternative ? 1 : 0;
    isValid = branches <= 2;
  }
  return isValid ? kNoFault : Fail(StatusRegExpSyntaxError, closing);
}

// The body must be of one length, told record by record wherever it lies in the body.
Fault ProgramBuilder::SettleLookbehind(int32_t opening, const uint8_t* closing) {
  ProgramNode& open = nodes_[opening];
  for (int32_t i = opening + 1; i < nodeCount_; ++i) {
    const ProgramNode& node = nodes_[i];
    if (node.op == OpBackref || (IsQuantifier(node) && node.a != node.b)) {
      return Fail(StatusRegExpSyntaxError, closing);
    }
  }
  open.c = FixedBodyLength(open, open.b);
  return open.c < 0 ? Fail(StatusRegExpSyntaxError, closing) : kNoFault;
}

}  // namespace vekch::regexp
