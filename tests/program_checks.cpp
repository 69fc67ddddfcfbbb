// SPDX-License-Identifier: MIT
#include "tests/program_checks.h"

#include <cstdlib>
#include <vector>

namespace vekch::test {
namespace {

bool IsOpening(const ProgramNode& node) { return node.op >= OpLookbehind && node.op <= OpAtomic; }

bool IsQuantifier(const ProgramNode& node) { return node.op == OpGreedy || node.op == OpLazy; }

bool IsNegativeSerial(const ProgramNode& node) {
  return node.op == OpAtomic || (node.op >= OpLookbehind && node.op <= OpNegLookahead);
}

bool IsItem(const ProgramNode& node) {
  return node.op == OpChar || node.op == OpClassRange || node.op == OpCharType ||
         (node.op >= OpCodePoint && node.op <= OpGrapheme);
}

class ProgramChecker {
 public:
  ProgramChecker(const RegExpState& object, size_t length)
      : state(object),
        nodes(reinterpret_cast<const ProgramNode*>(&object + 1)),
        count(object.nodeCount),
        room(static_cast<int32_t>(length) + 1) {}

  std::string Run() {
    if (count < 0 || count > room || state.regExpTag != RegExpTag || !HeaderHolds()) {
      return "header";
    }
    while (at < count) {
      const int32_t start = at;
      const char* flaw = Step(nodes[at]);
      if (flaw != nullptr) {
        return std::string(flaw) + " at " + std::to_string(start);
      }
    }
    return open.empty() ? "" : "a group without an end";
  }

 private:
  bool HeaderHolds() const {
    const int32_t required = state.requiredLiteralIndex;
    return state.captureCount >= 1 && state.matchLimit == 10000 && state.characterFormat == 1 &&
           required >= -2 && required < count &&
           (required < 0 || nodes[required].op == OpChar || nodes[required].op == OpString);
  }

  // Moves on after one construct, and says what is wrong with it.
  const char* Step(const ProgramNode& node) {
    const bool followsAtom = repeatable;
    repeatable = true;
    ++at;
    if (node.op < OpChar || node.op > OpGrapheme || node.op == OpClassRange) {
      return "an operation";
    }
    if (node.op == OpString) {
      repeatable = false;
      return StringHolds(node) ? nullptr : "a string";
    }
    if (IsQuantifier(node)) {
      repeatable = false;
      const bool inOrder = node.a >= 0 && node.a <= node.b && node.b <= RegExpUnbounded;
      return followsAtom && inOrder ? nullptr : "a quantifier";
    }
    if (node.op == OpBackref) {
      // A condition may name a group that does not exist: one without a part.
      const bool isCondition = at >= 2 && nodes[at - 2].op == OpConditional;
      const bool isGroup = node.a >= 1 && (isCondition || node.a < state.captureCount);
      return isGroup ? nullptr : "a reference";
    }
    if (node.op == OpClass) {
      return ItemsHold(node.b) ? nullptr : "a class";
    }
    if (IsOpening(node)) {
      repeatable = false;
      return Enter(node) ? nullptr : "an opening";
    }
    if (node.op == OpGroupEnd) {
      return Leave(node) ? nullptr : "a group's end";
    }
    repeatable = node.op != OpAlternative && node.op != OpSetOptions;
    return node.op != OpAlternative || node.a == Serial() ? nullptr : "an alternative";
  }

  int32_t Serial() const { return open.empty() ? 0 : nodes[open.back()].a; }

  // The runs lie one after the other, from the last record on.
  bool StringHolds(const ProgramNode& node) {
    const auto tail = reinterpret_cast<uintptr_t>(nodes + count) + copied;
    const auto end = reinterpret_cast<uintptr_t>(nodes + room);
    copied += static_cast<uintptr_t>(node.b);
    return node.b >= 2 && node.ptr == tail && node.ptr + static_cast<uintptr_t>(node.b) <= end;
  }

  bool ItemsHold(int32_t items) {
    if (items < 1 || at + items > count) {
      return false;
    }
    for (const int32_t end = at + items; at < end; ++at) {
      const ProgramNode& item = nodes[at];
      if (!IsItem(item) || (item.op == OpClassRange && item.a > item.b)) {
        return false;
      }
    }
    return true;
  }

  bool Enter(const ProgramNode& node) {
    const bool inOrder = std::abs(node.a) > lastSerial && std::abs(node.a) < RegExpTableSize;
    lastSerial = std::abs(node.a);
    open.push_back(at - 1);
    return inOrder && (node.a < 0) == IsNegativeSerial(node) && at + node.b < count;
  }

  bool Leave(const ProgramNode& node) {
    if (open.empty()) {
      return false;
    }
    const ProgramNode& opening = nodes[open.back()];
    const bool holds = node.a == opening.a && open.back() + opening.b + 1 == at - 1;
    open.pop_back();
    return holds;
  }

  const RegExpState& state;
  const ProgramNode* nodes;
  int32_t count;
  int32_t room;
  int32_t at = 0;
  bool repeatable = false;  // whether a quantifier may be here
  int32_t lastSerial = 0;
  uintptr_t copied = 0;
  std::vector<int32_t> open;
};

}  // namespace

std::string FindFlaw(const RegExpState& state, size_t length) {
  return ProgramChecker(state, length).Run();
}

}  // namespace vekch::test
