// SPDX-License-Identifier: MIT

// What holds for every compiled program, whatever its pattern: for tests that compile patterns of
// which they can't report to the program.

#ifndef VEKCH_TESTS_PROGRAM_CHECKS_H
#define VEKCH_TESTS_PROGRAM_CHECKS_H

#include <cstddef>
#include <string>

#include "vekch/regexp_program.h"

namespace vekch::test {

// "" if the program of a pattern of `length` bytes is well formed, else what is wrong with it.
std::string FindFlaw(const RegExpState& state, size_t length);

}  // namespace vekch::test

#endif
