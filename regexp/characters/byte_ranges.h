// SPDX-License-Identifier: MIT

// Tables of bytes as ranges, which blocks are tested with.

#ifndef VEKCH_REGEXP_CHARACTERS_BYTE_RANGES_H
#define VEKCH_REGEXP_CHARACTERS_BYTE_RANGES_H

#include <stdint.h>

#include "strings/kernels/range_set.h"

namespace vekch::regexp {

// The ranges of the bytes whose entry in a table of 256 has a bit: 1, 2 or 4 of them, 0 where there
// are more, or none.
int32_t RangesOf(const uint8_t* table, uint8_t bit, kernels::Ranges* ranges);

// The set of these bytes; of 0 ranges where neither they nor the others are few enough.
void FillRangeSet(const uint8_t* table, uint8_t bit, kernels::RangeSet* set);

}  // namespace vekch::regexp

#endif
