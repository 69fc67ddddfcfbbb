// SPDX-License-Identifier: MIT
#include "regexp/fast/lone_run_translator.h"

#include "regexp/characters/byte_ranges.h"
#include "regexp/fast/record_questions.h"

namespace vekch::regexp {
namespace {

constexpr uint8_t kNewline = '\n';

bool IsProperty(const ProgramNode& node) {
  return node.op == OpCodePoint || node.op == OpCategory || node.op == OpRange ||
         node.op == OpScript;
}

// Of what lies from a record on.
bool SetEnd(const ProgramWalk& walk, int32_t i, LoneRun* run) {
  if (i == walk.count) {
    return true;
  }
  const ProgramNode& node = walk.nodes[i];
  if (node.op != OpAssert || i + 1 != walk.count || run->isOne) {
    return false;
  }
  const bool isMultiLine = node.a == '$' && (OptionsOf(node) & RegExpOptionM) != 0;
  run->end = isMultiLine     ? RunEnd::kLineEnd
             : node.a == 'z' ? RunEnd::kTextEnd
                             : RunEnd::kTextEndOrNewline;
  return node.a == '$' || node.a == 'z' || node.a == 'Z';
}

bool SetRun(const ProgramWalk& walk, int32_t atom, bool isUtf8, TableRoom* room, LoneRun* run) {
  const ProgramNode& node = walk.nodes[atom];
  const ProgramNode* const quantifier = walk.QuantifierAt(walk.AfterAtom(atom));
  const bool isEndless = quantifier != nullptr && quantifier->op == OpGreedy && quantifier->a > 0 &&
                         quantifier->b == RegExpUnbounded;
  if (quantifier != nullptr && !isEndless) {
    return false;
  }
  run->minimum = isEndless ? quantifier->a : 1;
  const CharacterSet* const bytes = ByteSetOf(walk, atom, isUtf8);
  const CharacterSet* const open = OpenSetOf(walk, atom);
  if (bytes != nullptr || (open != nullptr && isEndless && run->minimum == 1)) {
    run->member = (bytes != nullptr ? bytes : open)->member;
    auto* const set = room->Take<kernels::RangeSet>();
    if (set != nullptr) {
      FillRangeSet(run->member, 0xFF, set);
      run->set = set->count == 0 ? nullptr : set;
    }
    return true;
  }
  const bool isWide =
      open == nullptr && isEndless && run->minimum == 1 && (HasSet(node) || IsProperty(node));
  run->wide = isWide ? room->Take<WideSet>() : nullptr;
  if (run->wide == nullptr) {
    return false;
  }
  run->wide->Begin(node);
  run->member = run->wide->Bytes();
  return true;
}

}  // namespace

const LoneRun* TranslateLoneRun(const RegExpState& state, const ProgramWalk& walk,
                                TableRoom* room) {
  const bool isCaptured = walk.count > 0 && walk.nodes[0].op == OpCapture && walk.IsPassed(0);
  const int32_t atom = isCaptured ? 1 : 0;
  if (atom >= walk.count || FactsOf(&state)->firstAlternative != 0 ||
      state.captureCount != (isCaptured ? 2 : 1)) {
    return nullptr;
  }
  int32_t i = walk.AfterAtom(atom);
  const ProgramNode* const quantifier = walk.QuantifierAt(i);
  i += quantifier == nullptr ? 0 : 1;
  const bool isClosed = !isCaptured || (i < walk.count && walk.nodes[i].op == OpGroupEnd &&
                                        OpeningOf(walk.nodes[i]) == 0);
  LoneRun run = {nullptr,   nullptr, nullptr, 1, RunEnd::kAnything, quantifier == nullptr,
                 isCaptured};
  if (!isClosed || !SetEnd(walk, isCaptured ? i + 1 : i, &run) ||
      !SetRun(walk, atom, state.characterFormat != 0, room, &run)) {
    return nullptr;
  }
  // Where its longest fails, no shorter one may be before an end.
  const bool endsWithin = run.end != RunEnd::kAnything && run.member[kNewline] != 0;
  auto* const made = endsWithin ? nullptr : room->Take<LoneRun>();
  if (made != nullptr) {
    *made = run;
  }
  return made;
}

}  // namespace vekch::regexp
