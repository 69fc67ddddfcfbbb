// SPDX-License-Identifier: MIT

// A line on the terminal of standard error that shows how far a long run has come.

#ifndef VEKGREP_PROGRESS_H
#define VEKGREP_PROGRESS_H

#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>

#include "common/output.h"

namespace examples::vekgrep {

class Progress {
 public:
  // Nothing is ever shown where nobody watches.
  Progress(StandardStreams& streams, bool watched);

  // Bytes that were searched, and the file that they are of; any thread may report.
  void Advance(int32_t bytes, const std::string& label);

 private:
  using Clock = std::chrono::steady_clock;

  StandardStreams& streams;
  const bool watched;
  std::atomic<int64_t> searched{0};
  std::mutex mutex;
  Clock::time_point due;  // the next time to show something
};

}  // namespace examples::vekgrep

#endif
