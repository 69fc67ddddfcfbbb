// SPDX-License-Identifier: MIT
#include "regexp/fast/group_shapes.h"

#include "regexp/fast/record_questions.h"

namespace vekch::regexp {
namespace {

void AddAtom(const ProgramWalk& walk, int32_t i, GroupShape* shape) {
  const ProgramNode& node = walk.nodes[i];
  const ProgramNode* const quantifier = walk.QuantifierAt(walk.AfterAtom(i));
  shape->consumes |= node.op != OpBackref && IsDue(quantifier);
  shape->levels += node.op == OpClass || quantifier != nullptr ? 2 : 1;
}

// The record that ends it takes a level as well.
void EndAlternative(GroupShape* shape) {
  shape->allConsume &= shape->consumes;
  shape->consumes = false;
  ++shape->levels;
  shape->mostLevels = shape->levels > shape->mostLevels ? shape->levels : shape->mostLevels;
  shape->levels = 0;
}

// Returns the serial of the group around.
int32_t EndShape(const ProgramWalk& walk, int32_t end, int32_t serial, GroupShape* shapes) {
  GroupShape& shape = shapes[serial];
  EndAlternative(&shape);
  shape.mayBeEmpty = !shape.allConsume;
  GroupShape& around = shapes[shape.around];
  const ProgramNode& opening = walk.nodes[OpeningOf(walk.nodes[end])];
  const bool isLookaround = IsLookaround(opening);
  around.consumes |= !shape.mayBeEmpty && !isLookaround && IsDue(walk.QuantifierAt(end + 1));
  around.levels += (opening.op == OpAtomic ? 2 : 1) + shape.mostLevels;
  return shape.around;
}

}  // namespace

bool FindGroupShapes(const ProgramWalk& walk, GroupShape* shapes) {
  int32_t innermost = 0;
  shapes[0] = {0, false, true, false, 0, 0};
  for (int32_t i = 0; i < walk.count; ++i) {
    const ProgramNode& node = walk.nodes[i];
    if (IsOpening(node)) {
      const int32_t serial = SerialOf(node);
      if (serial > walk.count) {  // groups that were dropped count as well
        return false;
      }
      shapes[serial] = {static_cast<int16_t>(innermost), false, true, false, 0, 0};
      innermost = serial;
    } else if (node.op == OpAlternative) {
      EndAlternative(&shapes[innermost]);
    } else if (node.op == OpGroupEnd) {
      innermost = EndShape(walk, i, innermost, shapes);
    } else if (IsAtom(node)) {
      AddAtom(walk, i, &shapes[innermost]);
      i = walk.AfterAtom(i) - 1;
    } else if (!IsQuantifier(node)) {
      ++shapes[innermost].levels;
    }
  }
  EndAlternative(&shapes[0]);
  return true;
}

}  // namespace vekch::regexp
