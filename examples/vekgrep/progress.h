// SPDX-License-Identifier: MIT

// A line on the terminal of standard error that tells how far a long run has come.

#ifndef VEKGREP_PROGRESS_H
#define VEKGREP_PROGRESS_H

#include <chrono>
#include <cstdint>
#include <string>

#include "common/output.h"

namespace examples::vekgrep {

class Progress {
 public:
  // Nothing is ever shown where nobody watches.
  Progress(Output& output, bool watched);

  // Bytes that were searched, and the file that they are of.
  void Advance(int32_t bytes, const std::string& label);

 private:
  using Clock = std::chrono::steady_clock;

  Output& output;
  const bool watched;
  Clock::time_point due;  // the next time to show something
  int64_t searched = 0;
};

}  // namespace examples::vekgrep

#endif
