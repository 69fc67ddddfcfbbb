// SPDX-License-Identifier: MIT

// The frame of a program: nothing that goes wrong ends without a message and status.

#include "common/program.h"

#include <cstring>
#include <new>

#include "common/platform.h"

namespace examples {

int RunWork(const char* program, const std::vector<std::string>& arguments,
            int (*work)(const std::vector<std::string>& arguments)) {
  PrepareStreams();
  try {
    return work(arguments);
  } catch (const std::bad_alloc&) {
    // Piece by piece: there may be no memory to put them together.
    for (const char* part : {program, ": not enough memory\n"}) {
      static_cast<void>(Write(kStandardError, part, std::strlen(part)));
    }
    return kTrouble;
  }
}

int Finish(Output& output, int status) {
  output.Flush();
  output.EraseStatus();
  if (output.Error() != 0) {
    output.Complain("standard output", std::strerror(output.Error()));
    return kTrouble;
  }
  return status;
}

}  // namespace examples
