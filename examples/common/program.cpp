// SPDX-License-Identifier: MIT

// The frame of a program: nothing that goes wrong ends without a message and status.

#include "common/program.h"

#include <cerrno>
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
      static_cast<void>(WriteAll(kStandardError, part, std::strlen(part)));
    }
    return kTrouble;
  }
}

int Finish(StandardStreams& streams, Output& output, int status) {
  output.Flush();
  streams.EraseStatus();
  if (streams.Error() == 0) {
    return status;
  }
  // Whoever read has left; where the system doesn't end us for that, we end as silently.
  if (streams.Error() != EPIPE || !EndsOnBrokenPipe()) {
    output.Complain("standard output",
                    streams.Error() == EBADF ? "it is closed" : std::strerror(streams.Error()));
  }
  return kTrouble;
}

}  // namespace examples
