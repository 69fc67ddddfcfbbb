// SPDX-License-Identifier: MIT
#include "progress.h"

namespace examples::vekgrep {
namespace {

constexpr auto kPatience = std::chrono::seconds(1);
constexpr auto kInterval = std::chrono::milliseconds(200);
constexpr size_t kLongestLabel = 48;  // keeps the line within the width of a terminal

// The end of it, which says more than its beginning.
std::string Shortened(const std::string& label) {
  if (label.size() <= kLongestLabel) {
    return label;
  }
  size_t begin = label.size() - kLongestLabel;
  while (begin < label.size() && (static_cast<unsigned char>(label[begin]) & 0xC0) == 0x80) {
    ++begin;  // not inside a character
  }
  return "..." + label.substr(begin);
}

}  // namespace

Progress::Progress(StandardStreams& standardStreams, bool somebodyWatches)
    : streams(standardStreams), watched(somebodyWatches), due(Clock::now() + kPatience) {}

void Progress::Advance(int32_t bytes, const std::string& label) {
  if (!watched) {
    return;
  }
  searched += bytes;
  const std::lock_guard<std::mutex> lock(mutex);
  if (Clock::now() >= due) {
    streams.ShowStatus(std::to_string(searched >> 20) + " MiB searched, now in " +
                       Shortened(label));
    due = Clock::now() + kInterval;
  }
}

}  // namespace examples::vekgrep
