// SPDX-License-Identifier: MIT
#include "name_rules.h"

#include <algorithm>

#include "common/folder.h"

namespace examples::vekgrep {
namespace {

// The position after the bracket expression that starts at `at`, or 0 if there is none; `matches`
// is set to whether it matches the byte.
size_t MatchBrackets(const std::string& glob, size_t at, char byte, bool* matches) {
  size_t next = at + 1;
  const bool negated = next < glob.size() && (glob[next] == '!' || glob[next] == '^');
  next += negated ? 1 : 0;
  bool any = false;
  for (const size_t first = next; next < glob.size() && (glob[next] != ']' || next == first);) {
    const auto low = static_cast<unsigned char>(glob[next]);
    const bool isRange = next + 2 < glob.size() && glob[next + 1] == '-' && glob[next + 2] != ']';
    const auto high = static_cast<unsigned char>(glob[next + (isRange ? 2 : 0)]);
    const auto value = static_cast<unsigned char>(byte);
    any = any || (low <= value && value <= high);
    next += isRange ? 3 : 1;
  }
  *matches = any != negated;
  return next < glob.size() ? next + 1 : 0;
}

// The position after what matches one byte at `at` of the glob, if that matches `byte`; else 0.
size_t MatchOne(const std::string& glob, size_t at, char byte) {
  if (at == glob.size()) {
    return 0;
  }
  if (glob[at] == '[') {
    bool matches = false;
    const size_t next = MatchBrackets(glob, at, byte, &matches);
    if (next != 0) {
      return matches ? next : 0;
    }
  }
  const bool escapes = glob[at] == '\\' && at + 1 < glob.size();
  at += escapes ? 1 : 0;
  return glob[at] == byte || (glob[at] == '?' && !escapes) ? at + 1 : 0;
}

// The name itself, and where it was named each of its ends that follow a "/".
template <typename Test>
bool AnyEnd(const std::string& name, bool wasNamed, Test test) {
  if (!wasNamed) {
    return test(BaseName(name));
  }
  for (size_t begin = 0; begin != std::string::npos;) {
    if (test(name.substr(begin))) {
      return true;
    }
    begin = name.find('/', begin);
    begin = begin == std::string::npos ? begin : name.find_first_not_of('/', begin);
  }
  return false;
}

}  // namespace

// Only the last "*" is ever gone back to: one before it has no better position.
bool MatchesGlob(const std::string& glob, const std::string& name) {
  size_t at = 0;
  size_t star = std::string::npos;
  size_t starName = 0;
  for (size_t i = 0; i < name.size();) {
    if (at < glob.size() && glob[at] == '*') {
      star = ++at;
      starName = i;
      continue;
    }
    const size_t next = MatchOne(glob, at, name[i]);
    if (next != 0) {
      at = next;
      ++i;
    } else if (star != std::string::npos) {
      at = star;
      i = ++starName;
    } else {
      return false;
    }
  }
  return glob.find_first_not_of('*', at) == std::string::npos;
}

// A file that no rule matches is searched unless the first rule includes.
bool AllowsFile(const Options& options, const std::string& name, bool wasNamed) {
  const auto& rules = options.fileRules;
  const auto last = std::find_if(rules.rbegin(), rules.rend(), [&](const NameRule& rule) {
    return AnyEnd(name, wasNamed,
                  [&](const std::string& end) { return MatchesGlob(rule.glob, end); });
  });
  return last != rules.rend() ? last->includes : rules.empty() || !rules.front().includes;
}

bool AllowsFolder(const Options& options, const std::string& name, bool wasNamed) {
  const auto& globs = options.leftOutFolders;
  return std::none_of(globs.begin(), globs.end(), [&](const std::string& glob) {
    return AnyEnd(name, wasNamed, [&](const std::string& end) { return MatchesGlob(glob, end); });
  });
}

}  // namespace examples::vekgrep
