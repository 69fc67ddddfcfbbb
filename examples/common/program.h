// SPDX-License-Identifier: MIT

// What every program does around its work.

#ifndef EXAMPLES_COMMON_PROGRAM_H
#define EXAMPLES_COMMON_PROGRAM_H

#include <string>
#include <vector>

#include "common/output.h"

namespace examples {

constexpr int kTrouble = 2;  // the exit status after any error

// Prepares the streams and runs the work with the program's arguments; its result is the exit
// status. Memory that runs out is reported on standard error.
int RunWork(const char* program, const std::vector<std::string>& arguments,
            int (*work)(const std::vector<std::string>& arguments));

// Writes what is left and turns a write that failed into the status of a failure.
int Finish(StandardStreams& streams, Output& output, int status);

}  // namespace examples

#endif
