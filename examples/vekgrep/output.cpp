// Buffered output. What is larger than the buffer is written from where it lies.

#include "output.h"

#include <cerrno>
#include <cstring>

#include "platform.h"

namespace vekgrep {
namespace {

constexpr size_t kBufferSize = 64 << 10;
constexpr char kStyleEnd[] = "\33[m";

const char* StyleStart(Style style) {
  switch (style) {
    case Style::kMatch:
      return "\33[01;31m";
    case Style::kFileName:
      return "\33[35m";
    case Style::kLineNumber:
      return "\33[32m";
    case Style::kSeparator:
      return "\33[36m";
  }
  return "";
}

}  // namespace

Output::Output(bool color) : hasColor(color), toTerminal(IsTerminal(kStandardOutput)) {}

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

void Output::AppendStyled(Style style, const uint8_t* text, Range range) {
  if (hasColor) {
    Append(StyleStart(style), std::strlen(StyleStart(style)));
  }
  Append(text, range);
  if (hasColor) {
    Append(kStyleEnd, std::strlen(kStyleEnd));
  }
}

void Output::AppendStyled(Style style, const std::string& bytes) {
  AppendStyled(style, reinterpret_cast<const uint8_t*>(bytes.data()),
               {0, static_cast<int32_t>(bytes.size())});
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
  const std::string line = "vekgrep: " + message + "\n";
  // A message that can't be written has nowhere to go; the exit status still tells of it.
  static_cast<void>(Write(kStandardError, line.data(), line.size()));
}

}  // namespace vekgrep
