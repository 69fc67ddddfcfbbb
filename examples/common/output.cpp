// SPDX-License-Identifier: MIT

// Buffered output. What is larger than the buffer is written from where it lies.

#include "common/output.h"

#include <cerrno>
#include <charconv>
#include <utility>

#include "common/platform.h"

namespace examples {
namespace {

constexpr size_t kBufferSize = 64 << 10;

}  // namespace

// Status and messages that can't be written have nowhere to go; the exit status still reports it.
void StandardStreams::Write(int file, const char* bytes, size_t size) {
  const std::lock_guard<std::mutex> lock(mutex);
  EraseLocked();
  if (file == kStandardError) {
    static_cast<void>(WriteAll(file, bytes, size));
  } else if (error == 0 && !WriteAll(file, bytes, size)) {
    error = errno;
  }
}

// One thread at a time comes here: it is whose turn it is to write.
void StandardStreams::WriteBetween(const char* bytes, size_t size) {
  if (std::exchange(hasGroups, true)) {
    Write(kStandardOutput, bytes, size);
  }
}

void StandardStreams::ShowStatus(const std::string& text) {
  const std::lock_guard<std::mutex> lock(mutex);
  const std::string line = std::string("\r") + name + ": " + text + "\33[K";
  static_cast<void>(WriteAll(kStandardError, line.data(), line.size()));
  showsStatus = true;
}

void StandardStreams::EraseStatus() {
  const std::lock_guard<std::mutex> lock(mutex);
  EraseLocked();
}

void StandardStreams::EraseLocked() {
  if (showsStatus) {
    static_cast<void>(WriteAll(kStandardError, "\r\33[K", 4));
    showsStatus = false;
  }
}

void Output::Append(const char* bytes, size_t size) {
  if (buffer.size() + size > kBufferSize) {
    Flush();
    if (size > kBufferSize) {
      sink.Write(kStandardOutput, bytes, size);
      return;
    }
  }
  buffer.append(bytes, size);
}

void Output::AppendNumber(int64_t number) {
  char digits[20];
  Append(digits,
         static_cast<size_t>(std::to_chars(digits, digits + sizeof digits, number).ptr - digits));
}

void Output::AppendBetween(const std::string& bytes) {
  Flush();
  sink.WriteBetween(bytes.data(), bytes.size());
}

void Output::Flush() {
  if (!buffer.empty()) {
    sink.Write(kStandardOutput, buffer.data(), buffer.size());
    buffer.clear();
  }
}

void Output::Complain(const std::string& message) {
  Flush();
  const std::string line = std::string(program) + ": " + message + "\n";
  sink.Write(kStandardError, line.data(), line.size());
}

}  // namespace examples
