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
  ProgramChecker(const RegExpState& state, size_t length)
      : state_(state),
        nodes_(reinterpret_cast<const ProgramNode*>(&state + 1)),
        count_(state.nodeCount),
        room_(static_cast<int32_t>(length) + 1) {}

  std::string Run() {
    if (count_ < 0 || count_ > room_ || state_.regExpTag != RegExpTag || !HeaderHolds()) {
      return "header";
    }
    while (at_ < count_) {
      const int32_t start = at_;
      const char* flaw = Step(nodes_[at_]);
      if (flaw != nullptr) {
        return std::string(flaw) + " at " + std::to_string(start);
      }
    }
    return open_.empty() ? "" : "a group without an end";
  }

 private:
  bool HeaderHolds() const {
    const int32_t required = state_.requiredLiteralIndex;
    return state_.captureCount >= 1 && state_.matchLimit == 10000 && state_.characterFormat == 1 &&
           required >= -2 && required < count_ &&
           (required < 0 || nodes_[required].op == OpChar || nodes_[required].op == OpString);
  }

  // Moves on behind one construct, and says what is wrong with it.
  const char* Step(const ProgramNode& node) {
    const bool repeatable = repeatable_;
    repeatable_ = true;
    ++at_;
    if (node.op < OpChar || node.op > OpGrapheme || node.op == OpClassRange) {
      return "an operation";
    }
    if (node.op == OpString) {
      repeatable_ = false;
      return StringHolds(node) ? nullptr : "a string";
    }
    if (node.op != OpScript && node.ptr != 0) {
      return "a note";
    }
    if (IsQuantifier(node)) {
      repeatable_ = false;
      const bool inOrder = node.a >= 0 && node.a <= node.b && node.b <= RegExpUnbounded;
      return repeatable && inOrder ? nullptr : "a quantifier";
    }
    if (node.op == OpClass) {
      return ItemsHold(node.b) ? nullptr : "a class";
    }
    if (IsOpening(node)) {
      repeatable_ = false;
      return Enter(node) ? nullptr : "an opening";
    }
    if (node.op == OpGroupEnd) {
      return Leave(node) ? nullptr : "a group's end";
    }
    repeatable_ = node.op != OpAlternative && node.op != OpSetOptions;
    return node.op != OpAlternative || node.a == Serial() ? nullptr : "an alternative";
  }

  int32_t Serial() const { return open_.empty() ? 0 : nodes_[open_.back()].a; }

  // The runs lie one behind the other, from the last record on.
  bool StringHolds(const ProgramNode& node) {
    const auto tail = reinterpret_cast<uintptr_t>(nodes_ + count_) + copied_;
    const auto end = reinterpret_cast<uintptr_t>(nodes_ + room_);
    copied_ += static_cast<uintptr_t>(node.b);
    return node.b >= 2 && node.ptr == tail && node.ptr + static_cast<uintptr_t>(node.b) <= end;
  }

  bool ItemsHold(int32_t items) {
    if (items < 1 || at_ + items > count_) {
      return false;
    }
    for (const int32_t end = at_ + items; at_ < end; ++at_) {
      const ProgramNode& item = nodes_[at_];
      if (!IsItem(item) || (item.op == OpClassRange && item.a > item.b)) {
        return false;
      }
    }
    return true;
  }

  bool Enter(const ProgramNode& node) {
    const bool inOrder = std::abs(node.a) > lastSerial_ && std::abs(node.a) < RegExpTableSize;
    lastSerial_ = std::abs(node.a);
    open_.push_back(at_ - 1);
    return inOrder && (node.a < 0) == IsNegativeSerial(node) && at_ + node.b < count_;
  }

  bool Leave(const ProgramNode& node) {
    if (open_.empty()) {
      return false;
    }
    const ProgramNode& opening = nodes_[open_.back()];
    const bool holds = node.a == opening.a && open_.back() + opening.b + 1 == at_ - 1;
    open_.pop_back();
    return holds;
  }

  const RegExpState& state_;
  const ProgramNode* nodes_;
  int32_t count_;
  int32_t room_;
  int32_t at_ = 0;
  bool repeatable_ = false;  // whether a quantifier may stand here
  int32_t lastSerial_ = 0;
  uintptr_t copied_ = 0;
  std::vector<int32_t> open_;
};

}  // namespace

std::string FindFlaw(const RegExpState& state, size_t length) {
  return ProgramChecker(state, length).Run();
}

}  // namespace vekch::test
