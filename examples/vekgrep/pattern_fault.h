// SPDX-License-Identifier: MIT

// What is wrong with a pattern that does not compile: for people, who act on the cause and not on
// its kind.

#ifndef VEKGREP_PATTERN_FAULT_H
#define VEKGREP_PATTERN_FAULT_H

#include <cstdint>
#include <string>

#include "vekch/status.h"

namespace examples::vekgrep {

// The cause, and what is around it in its line of the pattern, with a caret under the position.
// `options` are the letters that it was compiled with.
std::string DescribeFault(const std::string& pattern, const std::string& options, vekStatus status,
                          int32_t offset);

}  // namespace examples::vekgrep

#endif
