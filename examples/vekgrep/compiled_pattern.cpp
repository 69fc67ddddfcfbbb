// SPDX-License-Identifier: MIT
#include "compiled_pattern.h"

#include "pattern_fault.h"

namespace examples::vekgrep {
namespace {

// The pattern with what must be around a match. What the pattern leaves open at its end, quoted
// text or a comment, is closed.
std::string Bounded(const std::string& pattern, const PatternSettings& settings) {
  const size_t quote = pattern.rfind("\\Q");
  const bool quoting =
      quote != std::string::npos && pattern.find("\\E", quote) == std::string::npos;
  const bool comments = settings.letters.find('x') != std::string::npos;
  const std::string group = "(?:" + pattern + (quoting ? "\\E" : "") + (comments ? "\n)" : ")");
  if (settings.bounds == Bounds::kWord) {
    return "(?<!\\w)" + group + "(?!\\w)";
  }
  return settings.lineEnd == '\n' ? "^" + group + "$" : "\\A" + group + "\\z";
}

}  // namespace

// A pattern at fault is reported as it was written.
bool CompiledPattern::Compile(const std::string& pattern, const PatternSettings& settings,
                              std::string* fault) {
  return CompileText(pattern, settings, fault) &&
         (settings.bounds == Bounds::kNone ||
          CompileText(Bounded(pattern, settings), settings, fault));
}

// A zero byte would end the pattern; it is what "\x00" is for, in a class as well.
bool CompiledPattern::CompileText(const std::string& given, const PatternSettings& settings,
                                  std::string* fault) {
  std::string pattern;
  for (const char c : given) {
    pattern += c == 0 ? "\\x00" : std::string(1, c);
  }
  int32_t size = 0;
  veksRegExpGetSize(Bytes(pattern), &size);
  block.resize((static_cast<size_t>(size) + sizeof(ProgramNode) - 1) / sizeof(ProgramNode));
  int32_t offset = 0;
  const vekStatus status =
      veksRegExpInit(Bytes(pattern), Bytes(settings.letters), State(), &offset);
  if (status != StatusNoError) {
    *fault = DescribeFault(pattern, settings.letters, status, offset);
    return false;
  }
  veksRegExpSetFormat(settings.bytes ? 0 : 1, State());
  if (settings.limit >= 0) {
    veksRegExpSetMatchLimit(settings.limit, State());
  }
  return true;
}

}  // namespace examples::vekgrep
