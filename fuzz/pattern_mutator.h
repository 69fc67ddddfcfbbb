// SPDX-License-Identifier: MIT

// What a target reports to the mutator of its inputs.

#ifndef VEKCH_FUZZ_PATTERN_MUTATOR_H
#define VEKCH_FUZZ_PATTERN_MUTATOR_H

#include <cstddef>

namespace vekch::fuzz {

// How many of the strings of an input are patterns, from the first on.
extern const size_t kPatternsOfInput;

}  // namespace vekch::fuzz

#endif
