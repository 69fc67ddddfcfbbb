// SPDX-License-Identifier: MIT

// What tests characters faster than one by one, made for the operations once they are in their
// places: sets of ranges, and sets of characters of several bytes.

#ifndef VEKCH_REGEXP_FAST_AIDS_H
#define VEKCH_REGEXP_FAST_AIDS_H

#include <stdint.h>

#include "regexp/fast/fast_program.h"
#include "regexp/fast/table_room.h"

namespace vekch::regexp {

// Operations for which there is no room go without.
void MakeAids(FastOp* placed, int32_t count, TableRoom* room);

}  // namespace vekch::regexp

#endif
