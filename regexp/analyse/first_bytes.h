// SPDX-License-Identifier: MIT

// The bytes that a match can begin with, position by position, found by following every way through
// the program at once: a byte, then the epsilon closure.

#ifndef VEKCH_REGEXP_ANALYSE_FIRST_BYTES_H
#define VEKCH_REGEXP_ANALYSE_FIRST_BYTES_H

#include <stdint.h>

#include "regexp/object/program_walk.h"

namespace vekch::regexp {

constexpr int32_t kMostWindow = 8;  // bits of a prefilter's byte

struct FirstBytes {
  int32_t window;  // positions whose bytes are known: no match is shorter
  // That the matcher may use up before it has tested these bytes; -1 if that depends on the
  // subject.
  int32_t levels;
};

// Sets bit k of prefilter[value] for each byte that may be at position k. `firstAlternative` is
// that at top level, 0 for none; `marks` has room for two bytes for each record and two more;
// `prefilter` has 256 entries, all 0.
FirstBytes FindFirstBytes(const ProgramWalk& walk, int32_t firstAlternative, uint8_t* marks,
                          uint8_t* prefilter);

}  // namespace vekch::regexp

#endif
