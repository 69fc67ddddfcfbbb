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
  WriteOut(buffer.data(), buffer.size());
  buffer.clear();
}

void Output::WriteOut(const void* bytes, size_t size) {
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
  const std::string line = std::string(program) + ": " + message + "\n";
  // A message that can't be written has nowhere to go; the exit status still tells of it.
  static_cast<void>(Write(kStandardError, line.data(), line.size()));
}

}  // namespace examples
