// SPDX-License-Identifier: MIT

// Which groups may consume nothing, and how deep the exact matcher goes in them.

#ifndef VEKCH_REGEXP_FAST_GROUP_SHAPES_H
#define VEKCH_REGEXP_FAST_GROUP_SHAPES_H

#include <stdint.h>

#include "regexp/object/program_walk.h"

namespace vekch::regexp {

// What is noted of a group while the records are walked.
struct GroupShape {
  int16_t around;
  bool consumes;    // the alternative that is open takes a byte at least
  bool allConsume;  // and so do those before it
  bool mayBeEmpty;
  // Levels that the exact matcher takes at most for the records of the alternative that is open,
  // and for those of any; every record takes one, and a class or a repetition one more.
  int32_t levels;
  int32_t mostLevels;
};

// Notes the shape of each group under its serial, and that of the whole pattern under 0. False
// where there is no room for one: `shapes` is for one more than there are records, and groups that
// were dropped count as well.
bool FindGroupShapes(const ProgramWalk& walk, GroupShape* shapes);

}  // namespace vekch::regexp

#endif
