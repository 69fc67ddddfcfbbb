// SPDX-License-Identifier: MIT

// What must follow a repetition, told by the first byte.

#ifndef VEKCH_REGEXP_ANALYSE_FOLLOWER_H
#define VEKCH_REGEXP_ANALYSE_FOLLOWER_H

#include <stdint.h>

#include "regexp/object/program_walk.h"
#include "regexp/object/record_notes.h"

namespace vekch::regexp {

// The note for the quantifier of the atom at an index; what follows it begins at `next`. Sets and
// groups must have been noted.
FollowNote FollowerOf(const ProgramWalk& walk, int32_t atom, int32_t next);

}  // namespace vekch::regexp

#endif
