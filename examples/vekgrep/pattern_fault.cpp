// SPDX-License-Identifier: MIT
#include "pattern_fault.h"

#include <algorithm>

#include "common/bytes.h"
#include "vekch/regexp_help.h"

namespace examples::vekgrep {
namespace {

bool ContinuesCharacter(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

// The part of a long line that holds a position, with dots where it goes on; moves the position
// along.
std::string Around(const std::string& line, size_t* position) {
  constexpr size_t kMost = 60;
  constexpr size_t kBefore = 40;
  if (line.size() <= kMost) {
    return line;
  }
  size_t begin = std::min(*position > kBefore ? *position - kBefore : 0, line.size() - kMost);
  size_t end = begin + kMost;
  while (begin > 0 && ContinuesCharacter(line[begin])) {
    --begin;
  }
  while (end < line.size() && ContinuesCharacter(line[end])) {
    ++end;
  }
  const std::string before = begin > 0 ? "..." : "";
  *position = *position - begin + before.size();
  return before + line.substr(begin, end - begin) + (end < line.size() ? "..." : "");
}

}  // namespace

std::string DescribeFault(const std::string& pattern, const std::string& options, vekStatus status,
                          int32_t offset) {
  const char* cause = vekRegExpFaultText(Bytes(pattern), Bytes(options), status, offset);
  const auto at = static_cast<size_t>(offset);
  const size_t lineStart = at == 0 ? 0 : pattern.rfind('\n', at - 1) + 1;  // npos: 0
  size_t position = at - lineStart;
  const std::string line =
      Around(pattern.substr(lineStart, pattern.find('\n', at) - lineStart), &position);
  std::string caret;
  for (const char c : line.substr(0, position)) {
    // A tab moves the caret as it moves the pattern; what continues a character takes no room.
    if (!ContinuesCharacter(c)) {
      caret += c == '\t' ? '\t' : ' ';
    }
  }
  return std::string(cause) + "\n  " + line + "\n  " + caret + "^";
}

}  // namespace examples::vekgrep
