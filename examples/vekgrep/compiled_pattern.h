// SPDX-License-Identifier: MIT

// A pattern, compiled into memory of its own.

#ifndef VEKGREP_COMPILED_PATTERN_H
#define VEKGREP_COMPILED_PATTERN_H

#include <cstdint>
#include <string>
#include <vector>

#include "common/bytes.h"
#include "vekch/regexp_program.h"
#include "vekch/vekch.h"

namespace examples::vekgrep {

// What must be around a match: anything, no word character, or the ends of the line.
enum class Bounds { kNone, kWord, kLine };

// How patterns are meant.
struct PatternSettings {
  std::string letters;  // as veksRegExpInit takes them
  bool bytes = false;   // every byte is a character
  int32_t limit = -1;   // -1: as it is after compiling
  Bounds bounds = Bounds::kNone;
  uint8_t lineEnd = '\n';  // ends a line
};

class CompiledPattern {
 public:
  // After false, `fault` says what is wrong, with the position in the pattern.
  bool Compile(const std::string& pattern, const PatternSettings& settings, std::string* fault);

  RegExpState* State() { return reinterpret_cast<RegExpState*>(block.data()); }
  const RegExpState& Header() const { return *reinterpret_cast<const RegExpState*>(block.data()); }
  const ProgramNode* Program() const { return reinterpret_cast<const ProgramNode*>(&Header() + 1); }

  // Elements that describe a match: the whole of it and each group.
  int32_t Slots() const { return Header().captureCount; }

 private:
  bool CompileText(const std::string& pattern, const PatternSettings& settings, std::string* fault);

  std::vector<ProgramNode> block;
};

// The bytes of a literal record.
inline std::string LiteralBytes(const ProgramNode& node) {
  if (node.op == OpChar) {
    return std::string(1, static_cast<char>(node.a));
  }
  return std::string(reinterpret_cast<const char*>(static_cast<uintptr_t>(node.ptr)),
                     static_cast<size_t>(node.b));
}

}  // namespace examples::vekgrep

#endif
