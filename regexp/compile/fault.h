// SPDX-License-Identifier: MIT

// What ends a compilation: the status, and the position in the pattern that it concerns.

#ifndef VEKCH_REGEXP_COMPILE_FAULT_H
#define VEKCH_REGEXP_COMPILE_FAULT_H

#include <stdint.h>

#include "vekch/status.h"

namespace vekch::regexp {

struct Fault {
  vekStatus status;
  const uint8_t* position;
};

constexpr Fault kNoFault = {StatusNoError, nullptr};

constexpr bool Failed(const Fault& fault) { return fault.status != StatusNoError; }

}  // namespace vekch::regexp

#endif
