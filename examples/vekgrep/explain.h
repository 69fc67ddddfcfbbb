// SPDX-License-Identifier: MIT

// What a pattern has been compiled to, and what is wrong with one that does not compile: for
// people who wonder why a pattern matches, or does not.

#ifndef VEKGREP_EXPLAIN_H
#define VEKGREP_EXPLAIN_H

#include <cstdint>
#include <string>

#include "vekch/regexp_program.h"
#include "vekch/status.h"

namespace examples::vekgrep {

// One record a line: its index, its operation and its operands by name, indented by groups and
// classes; options, negations and flags only where they are set. The last line tells what a search
// knows of the whole.
//
//      0  OpString length=3 "abc"
//      search mode 1, required literal 0, captures 1
std::string ListProgram(const RegExpState& state);

// What the fault is, and the line of the pattern that it is in, with a caret under its place.
std::string DescribeFault(const std::string& pattern, vekStatus status, int32_t offset);

}  // namespace examples::vekgrep

#endif
