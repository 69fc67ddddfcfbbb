// SPDX-License-Identifier: MIT

// The last step of a translation: operations that follow one another become one where they can be
// done at once, and what is left of them gets its tables.

#ifndef VEKCH_REGEXP_FAST_FUSE_H
#define VEKCH_REGEXP_FAST_FUSE_H

#include <stdint.h>

#include "regexp/fast/following.h"
#include "regexp/fast/table_room.h"

namespace vekch::regexp {

// `marks` is room for a byte of each of the `used` operations. Those that `entry` does not lead to
// any more become jumps.
void Fuse(FastOp* ops, int32_t used, int32_t entry, const Following& following, TableRoom* room,
          uint8_t* marks);

}  // namespace vekch::regexp

#endif
