// SPDX-License-Identifier: MIT

// The pass that looks over a whole pattern before any of it is compiled.

#ifndef VEKCH_REGEXP_COMPILE_PRESCAN_H
#define VEKCH_REGEXP_COMPILE_PRESCAN_H

#include <stdint.h>

#include "regexp/compile/fault.h"

namespace vekch::regexp {

// Checks that groups and bracket classes are closed and not too many, and counts the capturing
// groups: `*captureCount` becomes 1 more than their number. Of the options only x matters here.
Fault Prescan(const uint8_t* pattern, int32_t options, int32_t* captureCount);

}  // namespace vekch::regexp

#endif
