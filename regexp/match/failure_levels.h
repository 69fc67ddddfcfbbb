// SPDX-License-Identifier: MIT

// A memory of failures for the exact matcher: of what follows a repetition or the end of a group,
// at which positions it is known to fail, and how many levels of depth that took. It fails again
// where all is the same that its future depends on, and no fewer levels are left.
//
// What it depends on is the position, and for each repeated group that may match nothing whether
// its repetition has consumed anything yet. Programs for which other things count as well, such as
// copies, conditionals and groups that are counted, are not remembered; nor is a failure that one
// of the limits had a part in.

#ifndef VEKCH_REGEXP_MATCH_FAILURE_LEVELS_H
#define VEKCH_REGEXP_MATCH_FAILURE_LEVELS_H

#include <stdint.h>

#include "regexp/object/object_layout.h"
#include "regexp/object/program_walk.h"
#include "strings/kernels/clear_words.h"

namespace vekch::regexp {

class FailureLevels {
 public:
  // Forgets all, and remembers positions from `first` on, if the program is one for it. Takes the
  // half of the free room that the fast matcher's memory leaves.
  void Begin(RegExpState* state, uint32_t first) {
    if (levels == nullptr && !Examine(ProgramWalk(*state))) {
      return;
    }
    groups = GroupsOf(state);
    kinds = int64_t{state->nodeCount} << loopCount;
    const int64_t words = FreeRoom(state).Size() / 16;
    levels = reinterpret_cast<uint16_t*>(FreeRoom(state).Begin() + words * 8);
    positions = words * 4 / kinds;
    start = first;
    kernels::ClearWords(levels, static_cast<uint64_t>(words));
  }

  bool IsBegun() const { return levels != nullptr; }

  // Whether positions from here on are remembered.
  bool Reaches(uint32_t at) const { return at - start < positions / 2; }

  // Levels that a failure after a record takes at a position; -1 if none is known.
  int32_t Known(uint32_t node, uint32_t at) const {
    const int64_t position = PositionOf(node, at);
    return position < 0 ? -1 : levels[position] - 1;
  }

  void Note(uint32_t node, uint32_t at, int32_t needed) {
    const int64_t position = PositionOf(node, at);
    if (position >= 0 && needed < UINT16_MAX &&
        (levels[position] == 0 || levels[position] > needed)) {
      levels[position] = static_cast<uint16_t>(needed + 1);
    }
  }

 private:
  static constexpr int32_t kMostLoops = 3;

  bool Examine(const ProgramWalk& walk) {
    loopCount = 0;
    for (int32_t i = 0; i < walk.count; i = walk.AfterAtom(i)) {
      const ProgramNode& node = walk.nodes[i];
      if (node.op == OpBackref || IsLookaround(node) || node.op == OpAtomic ||
          node.op == OpConditional) {
        return false;
      }
      const ProgramNode* const quantifier =
          IsOpening(node) ? walk.QuantifierAt(walk.GroupEnd(i) + 1) : nullptr;
      if (quantifier == nullptr || quantifier->b < 2) {
        continue;
      }
      const bool isCounted = quantifier->a > 1 || quantifier->b != RegExpUnbounded;
      if (isCounted || (!Consumes(walk, i) && loopCount == kMostLoops)) {
        return false;
      }
      if (!Consumes(walk, i)) {
        loops[loopCount++] = SerialOf(node);
      }
    }
    return true;
  }

  // Whether every repetition of a group takes a byte: it is no choice, and has a literal or a class
  // that is not optional.
  static bool Consumes(const ProgramWalk& walk, int32_t opening) {
    const int32_t end = walk.GroupEnd(opening);
    for (int32_t i = opening + 1; i < end && !walk.HasAlternatives(opening);
         i = IsOpening(walk.nodes[i]) ? walk.GroupEnd(i) + 1 : walk.AfterAtom(i)) {
      const bool isAtom = IsLiteral(walk.nodes[i]) || HasSet(walk.nodes[i]);
      if (isAtom && walk.IsCertain(i)) {
        return true;
      }
    }
    return false;
  }

  int64_t PositionOf(uint32_t node, uint32_t at) const {
    const int64_t position = int64_t{at} - start;
    if (static_cast<uint64_t>(position) >= static_cast<uint64_t>(positions)) {  // before it as well
      return -1;
    }
    int64_t variant = 0;
    for (int32_t i = 0; i < loopCount; ++i) {
      variant |= int64_t{groups[loops[i]].matching.start == at} << i;
    }
    return position * kinds + (int64_t{node} << loopCount) + variant;
  }

  uint16_t* levels = nullptr;  // one more than needed, 0 where none is known
  const GroupEntry* groups = nullptr;
  uint32_t start = 0;
  int64_t positions = 0;
  int64_t kinds = 1;
  int32_t loopCount = 0;
  int32_t loops[kMostLoops] = {};  // serials of the groups that may match nothing, repeated
};

}  // namespace vekch::regexp

#endif
