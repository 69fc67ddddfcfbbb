// SPDX-License-Identifier: MIT
#include "compiled_pattern.h"

#include "explain.h"

namespace examples::vekgrep {

bool CompiledPattern::Compile(const std::string& pattern, const PatternSettings& settings,
                              std::string* fault) {
  int32_t size = 0;
  veksRegExpGetSize(Bytes(pattern), &size);
  block.resize((static_cast<size_t>(size) + sizeof(ProgramNode) - 1) / sizeof(ProgramNode));
  int32_t offset = 0;
  const vekStatus status =
      veksRegExpInit(Bytes(pattern), Bytes(settings.letters), State(), &offset);
  if (status != StatusNoError) {
    *fault = DescribeFault(pattern, status, offset);
    return false;
  }
  veksRegExpSetFormat(settings.bytes ? 0 : 1, State());
  if (settings.limit >= 0) {
    veksRegExpSetMatchLimit(settings.limit, State());
  }
  return true;
}

}  // namespace examples::vekgrep
