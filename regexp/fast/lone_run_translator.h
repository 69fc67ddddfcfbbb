// SPDX-License-Identifier: MIT

// Whether a pattern is one run of a set, or one of its members: a group around it at most, and an
// end after it at most.

#ifndef VEKCH_REGEXP_FAST_LONE_RUN_TRANSLATOR_H
#define VEKCH_REGEXP_FAST_LONE_RUN_TRANSLATOR_H

#include <stdint.h>

#include "regexp/fast/fast_program.h"
#include "regexp/fast/table_room.h"
#include "regexp/object/program_walk.h"

namespace vekch::regexp {

// Null where it is more, or there is no room.
const LoneRun* TranslateLoneRun(const RegExpState& state, const ProgramWalk& walk, TableRoom* room);

}  // namespace vekch::regexp

#endif
