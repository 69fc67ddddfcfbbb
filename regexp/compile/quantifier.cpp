// SPDX-License-Identifier: MIT

// Quantifiers: a record after what they repeat.

#include "regexp/compile/pattern_text.h"
#include "regexp/compile/program_builder.h"

namespace vekch::regexp {
namespace {

constexpr int32_t kLargestBound = 65535;

struct Bounds {
  int32_t minimum;
  int32_t maximum;
};

int32_t AddBounds(int32_t first, int32_t second) {
  const int32_t sum = first + second;  // both at most RegExpUnbounded, far from wrapping
  return sum < RegExpUnbounded ? sum : RegExpUnbounded;
}

// A number, 0 where there is no digit; it stops growing at RegExpUnbounded.
int32_t ReadNumber(const uint8_t** position) {
  int32_t number = 0;
  for (; IsDigit(**position); ++*position) {
    const int64_t next = int64_t{number} * 10 + (**position - '0');
    number = next < RegExpUnbounded ? static_cast<int32_t>(next) : RegExpUnbounded;
  }
  return number;
}

// Reads a quantifier without the "?" that may follow. False where its numbers are at fault.
bool ReadBounds(const uint8_t** position, Bounds* bounds) {
  const uint8_t mark = *(*position)++;
  if (mark != '{') {
    *bounds = {mark == '+' ? 1 : 0, mark == '?' ? 1 : RegExpUnbounded};
    return true;
  }
  bounds->minimum = ReadNumber(position);
  bounds->maximum = bounds->minimum;
  bool limited = true;
  if (**position == ',') {
    ++*position;
    limited = IsDigit(**position);
    bounds->maximum = limited ? ReadNumber(position) : RegExpUnbounded;
  }
  ++*position;  // "}"
  return bounds->minimum <= kLargestBound && (!limited || bounds->maximum <= kLargestBound) &&
         bounds->minimum <= bounds->maximum;
}

bool CanRepeat(const ProgramNode& node) {
  return node.op != OpAlternative && node.op != OpSetOptions && !IsOpening(node);
}

}  // namespace

Fault ProgramBuilder::Quantifier() {
  const uint8_t* start = at;
  SplitRun();
  Bounds bounds;
  if (!ReadBounds(&at, &bounds)) {
    return Fail(StatusRegExpQuantifierError, start + 1);
  }
  const bool lazy = *at == '?';
  at += lazy ? 1 : 0;
  if (nodeCount == 0 || !CanRepeat(Last()) || start == quantifierEnd) {
    return Fail(StatusRegExpQuantifierError, start);
  }
  quantifierEnd = at;

  ProgramNode& last = Last();
  if (IsQuantifier(last)) {
    // What "." and the shorthands were merged into: repetitions add up, and never lazily.
    last = {OpGreedy, AddBounds(last.a, bounds.minimum), AddBounds(last.b, bounds.maximum), 0, 0};
    return kNoFault;
  }
  if (last.op == OpGroupEnd) {
    last.c = last.c == 1 ? -1 : last.c;
    const int32_t opening = groups[SerialOf(last)].opening;
    if (IsLookaround(nodes[opening])) {
      // It holds or does not, however often it is asked; and need not hold if asked no times.
      if (bounds.minimum == 0) {
        nodeCount = opening;
        classEnd = groups[SerialOf(last)].compiling.classEnd;
        lastOfRun = lastOfRun < opening ? lastOfRun : -1;
      }
      return kNoFault;
    }
  } else if ((last.op == OpChar || last.op == OpCodePoint) && !IsItem(nodeCount - 1)) {
    QuantifyLiteral(bounds.minimum);
  }
  Append(lazy ? OpLazy : OpGreedy, bounds.minimum, bounds.maximum);
  return kNoFault;
}

// Only a run's byte that must occur stays the suffix literal.
void ProgramBuilder::QuantifyLiteral(int32_t minimum) {
  if (suffixLiteral == kAlternatives) {
    return;
  }
  const bool required = lastOfRun == nodeCount - 1 && AtTopLevel() && minimum >= 1;
  suffixLiteral = required ? nodeCount - 1 : kNoLiteral;
}

}  // namespace vekch::regexp
