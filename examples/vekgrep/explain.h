// SPDX-License-Identifier: MIT

// What a pattern has been compiled to: for people who wonder why a pattern matches, or does not.

#ifndef VEKGREP_EXPLAIN_H
#define VEKGREP_EXPLAIN_H

#include <cstdint>
#include <string>

#include "vekch/regexp_program.h"

namespace examples::vekgrep {

// One record a line: its index, its operation and its operands by name, indented by groups and
// classes; options, negations and flags only where they are set. The last line says what a search
// knows of the whole.
//
//      0  OpString length=3 "abc"
//      search mode 1, required literal 0, captures 1
std::string ListProgram(const RegExpState& state);

// What in the pattern the library's fast matcher does not know, so that its exact one does all the
// matching; "" where there is nothing. The fast one takes over when a pattern has been used some
// times, or for a subject of 128 bytes and more.
std::string LeftToExact(const RegExpState& state);

}  // namespace examples::vekgrep

#endif
