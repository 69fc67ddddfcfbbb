// SPDX-License-Identifier: MIT

// Levels of depth that a match may take beside those of its records.

#ifndef VEKCH_REGEXP_ANALYSE_LEVELS_H
#define VEKCH_REGEXP_ANALYSE_LEVELS_H

#include <stdint.h>

namespace vekch::regexp {

// Of the search itself, of a loop, and of the last test.
constexpr int32_t kSlackLevels = 4;

}  // namespace vekch::regexp

#endif
