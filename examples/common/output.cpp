// SPDX-License-Identifier: MIT

// Buffered output. What is larger than the buffer is written from where it lies.

#include "common/output.h"

#include <cerrno>

#include "common/platform.h"

namespace examples {
namespace {

constexpr size_t kBufferSize = 64 << 10;

}  // namespace

Output::Output(const char* programName)
    : program(programName), toTerminal(IsTerminal(kStandardOutput)) {}

void Output::Append(const char* bytes, size_t size) {
  if (buffer.size() + size > kBufferSize) {
    Flush();
    if (size > kBufferSize) {
      WriteOut(bytes, size);
      return;
    }
  }
  buffer.append(bytes, size);
}

void Output::Append(const uint8_t* text, Range range) {
  Append(reinterpret_cast<const char*>(text) + range.begin,
         static_cast<size_t>(range.end - range.begin));
}

void Output::Flush() {
  if (!buffer.empty()) {
    WriteOut(buffer.data(), buffer.size());
    buffer.clear();
  }
}

// Status and messages that can't be written have nowhere to go.
void Output::ShowStatus(const std::string& text) {
  const std::string line = std::string("\r") + program + ": " + text + "\33[K";
  static_cast<void>(Write(kStandardError, line.data(), line.size()));
  showsStatus = true;
}

void Output::EraseStatus() {
  if (showsStatus) {
    static_cast<void>(Write(kStandardError, "\r\33[K", 4));
    showsStatus = false;
  }
}

void Output::WriteOut(const void* bytes, size_t size) {
  EraseStatus();
  if (error == 0 && !Write(kStandardOutput, bytes, size)) {
    error = errno;
  }
}

void Output::FlushToTerminal() {
  if (toTerminal) {
    Flush();
  }
}

void Output::Complain(const std::string& message) {
  Flush();
  EraseStatus();
  const std::string line = std::string(program) + ": " + message + "\n";
  // The exit status still tells of it.
  static_cast<void>(Write(kStandardError, line.data(), line.size()));
}

}  // namespace examples
