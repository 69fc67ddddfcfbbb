// SPDX-License-Identifier: MIT

// Which patterns compile, and where the others are at fault, answered by a slow and obvious reader:
// for patterns over the characters in kModelAlphabet, without options.

#ifndef VEKCH_TESTS_PATTERN_MODEL_H
#define VEKCH_TESTS_PATTERN_MODEL_H

#include <string>

#include "vekch/status.h"

namespace vekch::test {

constexpr char kModelAlphabet[] = "ab()[]{}*+?|\\^$.,1-:";

struct Verdict {
  vekStatus status;
  size_t offset;  // of a fault
};

Verdict JudgePattern(const std::string& pattern);

}  // namespace vekch::test

#endif
