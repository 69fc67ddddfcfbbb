// The library tells the kind of a fault and where it met it. The cause is read from the pattern
// around that place; groups are followed from the start, as one that was never closed is noticed at
// the end.

#include "pattern_fault.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "vekch/vekch.h"

namespace examples::vekgrep {
namespace {

constexpr size_t kMostGroups = 999;
constexpr int kMostRepetitions = 65535;

struct Cause {
  std::string text;
  size_t place;
};

// The groups of a pattern up to a place, as they nest there.
struct Groups {
  std::vector<size_t> open;         // where the brackets are that are not closed yet
  size_t last = std::string::npos;  // the bracket of the group that is closed at the place
  size_t count = 0;
  bool stray = false;  // the bracket at the place closes nothing
};

// Behind the bracket expression at `at`.
size_t BehindClass(const std::string& pattern, size_t at) {
  at += pattern.compare(at, 2, "[^") == 0 ? 2 : 1;
  for (bool first = true; at < pattern.size() && (pattern[at] != ']' || first); first = false) {
    const bool named = pattern.compare(at, 2, "[:") == 0;
    const size_t end = named ? pattern.find(":]", at + 2) : std::string::npos;
    at = end != std::string::npos ? end + 2 : at + (pattern[at] == '\\' ? 2 : 1);
  }
  return std::min(at + 1, pattern.size());
}

Groups GroupsUpTo(const std::string& pattern, size_t place) {
  Groups groups;
  for (size_t at = 0; at < std::min(place + 1, pattern.size());) {
    if (pattern.compare(at, 2, "\\Q") == 0) {
      const size_t end = pattern.find("\\E", at);
      at = end == std::string::npos ? pattern.size() : end + 2;
    } else if (pattern[at] == '\\') {
      at += 2;
    } else if (pattern[at] == '[') {
      at = BehindClass(pattern, at);
    } else if (pattern.compare(at, 3, "(?#") == 0) {
      const size_t end = pattern.find(')', at);
      if (end == std::string::npos) {
        groups.open.push_back(at);
      }
      at = std::min(end, pattern.size() - 1) + 1;
    } else {
      if (pattern[at] == '(') {
        groups.open.push_back(at);
        ++groups.count;
      } else if (pattern[at] == ')') {
        groups.stray = groups.open.empty();
        if (!groups.stray) {
          groups.last = groups.open.back();
          groups.open.pop_back();
        }
      }
      ++at;
    }
  }
  return groups;
}

bool StartsWith(const std::string& pattern, size_t at, const std::string& start) {
  return pattern.compare(at, start.size(), start) == 0;
}

// The group that begins at `open` is what is wrong, or something at `place` in it.
Cause GroupCause(const std::string& pattern, size_t open, size_t place) {
  const auto starts = [&](const char* start) { return StartsWith(pattern, open, start); };
  if (starts("(?<=") || starts("(?<!")) {
    return {"what a look-behind looks for must be of one length", open};
  }
  if (starts("(?(")) {
    return {place > open + 3 && pattern[place] == ')'
                ? "a condition has two alternatives at most"
                : "a condition is the number of a group or a look-around",
            open};
  }
  if (starts("(?P") || starts("(?<") || starts("(?'")) {
    return {"groups have no names", open};
  }
  return starts("(?") ? Cause{"unknown kind of group: " + pattern.substr(open, 3), open}
                      : Cause{"malformed group", place};
}

Cause SyntaxCause(const std::string& pattern, size_t place) {
  const Groups groups = GroupsUpTo(pattern, place);
  if (groups.count > kMostGroups) {
    return {"more than " + std::to_string(kMostGroups) + " groups", place};
  }
  if (groups.stray) {
    return {"stray )", place};
  }
  if (groups.last != std::string::npos && place < pattern.size() && pattern[place] == ')') {
    return GroupCause(pattern, groups.last, place);
  }
  if (groups.open.empty()) {
    return {"malformed pattern", place};
  }
  size_t open = groups.open.back();
  if (open >= 2 && StartsWith(pattern, open - 2, "(?(")) {
    open -= 2;  // of a condition, the group that it is for
  }
  if (StartsWith(pattern, open, "(?#")) {
    return {"unclosed comment (?#", open};
  }
  return place >= pattern.size() ? Cause{"unclosed (", open} : GroupCause(pattern, open, place);
}

Cause ClassCause(const std::string& pattern, size_t place) {
  if (place >= pattern.size()) {
    return {"unclosed [", place};
  }
  if (StartsWith(pattern, place, "[:")) {
    const size_t end = pattern.find(":]", place);
    return {
        "unknown class " + pattern.substr(place, end == std::string::npos ? end : end + 2 - place),
        place};
  }
  if (StartsWith(pattern, place, "[.") || StartsWith(pattern, place, "[=")) {
    return {"collating elements are not supported", place};
  }
  if (place > 0 && pattern[place - 1] == '-') {
    return {pattern[place] == '\\' ? "a range can't end in a set of characters"
                                   : "a range that ends before it begins",
            place};
  }
  return {"malformed class", place};
}

Cause EscapeCause(const std::string& pattern, size_t place) {
  const size_t escape = place == 0 ? std::string::npos : pattern.rfind('\\', place - 1);
  if (escape == std::string::npos || escape + 1 >= pattern.size()) {
    return {"a backslash at the end", pattern.size() - 1};
  }
  const char letter = pattern[escape + 1];
  if (letter == 'p' || letter == 'P') {
    const bool braced = StartsWith(pattern, escape + 2, "{");
    const size_t end = braced ? pattern.find('}', escape) : escape + 2;
    return end == std::string::npos
               ? Cause{"unclosed \\p{", escape}
               : Cause{"unknown property " + pattern.substr(escape, end + 1 - escape), escape};
  }
  if (letter == 'x') {
    return {"\\x{ needs a hexadecimal number up to 7FFFFFFF and }", escape};
  }
  return {letter == 'c' ? "\\c needs a character behind it" : "malformed escape", escape};
}

Cause QuantifierCause(const std::string& pattern, size_t place) {
  place -= place > 0 && pattern[place - 1] == '{' ? 1 : 0;
  const std::string quantifier = pattern[place] == '{'
                                     ? pattern.substr(place, pattern.find('}', place) + 1 - place)
                                     : pattern.substr(place, 1);
  if (pattern[place] == '{') {
    const int64_t least = std::atoll(quantifier.c_str() + 1);
    const size_t comma = quantifier.find(',');
    const int64_t most =
        comma == std::string::npos ? least : std::atoll(quantifier.c_str() + comma + 1);
    if (std::max(least, most) > kMostRepetitions) {
      return {"more than " + std::to_string(kMostRepetitions) + " repetitions", place};
    }
    if (comma != std::string::npos && quantifier[comma + 1] != '}' && most < least) {
      return {"at most fewer than at least: " + quantifier, place};
    }
  }
  const bool atStart = place == 0 || pattern[place - 1] == '(' || pattern[place - 1] == '|';
  return {(atStart ? "nothing to repeat for " : "a second quantifier: ") + quantifier, place};
}

Cause CauseOf(const std::string& pattern, vekStatus status, size_t place) {
  switch (status) {
    case StatusRegExpSyntaxError:
      return SyntaxCause(pattern, place);
    case StatusRegExpClassError:
      return ClassCause(pattern, place);
    case StatusRegExpEscapeError:
      return EscapeCause(pattern, place);
    case StatusRegExpQuantifierError:
      return place < pattern.size() ? QuantifierCause(pattern, place)
                                    : Cause{vekStatusText(status), place};
    case StatusRegExpFormatError: {
      const size_t end = std::min(pattern.find_first_not_of("0123456789", place), pattern.size());
      return {"no group " + pattern.substr(place, end - place), place};
    }
    default:
      return {vekStatusText(status), place};
  }
}

bool ContinuesCharacter(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

// The part of a long line that holds a place, with dots where it goes on; moves the place along.
std::string Around(const std::string& line, size_t* place) {
  constexpr size_t kMost = 60;
  constexpr size_t kBefore = 40;
  if (line.size() <= kMost) {
    return line;
  }
  size_t begin = std::min(*place > kBefore ? *place - kBefore : 0, line.size() - kMost);
  size_t end = begin + kMost;
  while (begin > 0 && ContinuesCharacter(line[begin])) {
    --begin;
  }
  while (end < line.size() && ContinuesCharacter(line[end])) {
    ++end;
  }
  const std::string before = begin > 0 ? "..." : "";
  *place = *place - begin + before.size();
  return before + line.substr(begin, end - begin) + (end < line.size() ? "..." : "");
}

}  // namespace

std::string DescribeFault(const std::string& pattern, vekStatus status, int32_t offset) {
  const Cause cause = CauseOf(pattern, status, static_cast<size_t>(offset));
  const size_t lineStart = cause.place == 0 ? 0 : pattern.rfind('\n', cause.place - 1) + 1;
  size_t place = cause.place - lineStart;
  const std::string line =
      Around(pattern.substr(lineStart, pattern.find('\n', cause.place) - lineStart), &place);
  std::string caret;
  for (const char c : line.substr(0, place)) {
    // A tab moves the caret as it moves the pattern; what continues a character takes no room.
    if (!ContinuesCharacter(c)) {
      caret += c == '\t' ? '\t' : ' ';
    }
  }
  return cause.text + "\n  " + line + "\n  " + caret + "^";
}

}  // namespace examples::vekgrep
