// SPDX-License-Identifier: MIT

// The pre-scan: one pass that knows just enough of the language to find groups and classes. What
// it lets through may still fail to compile.
//
// It must know where "#" starts a comment, so it follows option x through the groups: one byte for
// each level of nesting holds what the option was outside. It sees the extent of a class in a
// simpler way than the compiler does ("\c" takes one byte in here, a POSIX name runs to its end
// whatever it is), so in rare patterns the two disagree about what is inside a class; the compiler
// checks for itself that groups are balanced, and captures that were not counted are hidden ones.

#include "regexp/compile/prescan.h"

#include "regexp/compile/pattern_text.h"

namespace vekch::regexp {
namespace {

constexpr int32_t kDeepest = RegExpTableSize - 1;
constexpr int32_t kMostCaptures = RegExpTableSize;

class PrescanPass {
 public:
  PrescanPass(const uint8_t* pattern, int32_t options)
      : at(pattern), extended((options & RegExpOptionX) != 0) {}

  Fault Run() {
    while (*at != 0) {
      const Fault fault = Step();
      if (Failed(fault)) {
        return fault;
      }
    }
    return depth == 0 ? kNoFault : Fault{StatusRegExpSyntaxError, at};
  }

  int32_t CaptureCount() const { return captureCount; }

 private:
  Fault Step() {
    switch (*at) {
      case '(':
        return Open();
      case ')':
        return Close();
      case '[':
        return SkipClass();
      case '\\':
        SkipEscape();
        return kNoFault;
      case '#':
        at = extended ? SkipLine(at) : at + 1;
        return kNoFault;
      default:
        ++at;
        return kNoFault;
    }
  }

  Fault Open() {
    const uint8_t* bracket = at;
    if (depth >= kDeepest) {
      return {StatusRegExpSyntaxError, bracket};
    }
    Enter();
    if (bracket[1] != '?') {
      ++at;
      return ++captureCount > kMostCaptures + 1 ? Fault{StatusRegExpSyntaxError, bracket}
                                                : kNoFault;
    }
    at += 2;
    if (*at == '#') {
      at = FindInPattern(at, ')');
      return *at == 0 ? Fault{StatusRegExpSyntaxError, at} : Close();
    }
    if (*at == '(') {  // a conditional and its condition: two levels
      Enter();
      ++at;
    } else if (StartsInlineOptions(*at)) {
      return ReadInlineOptions();
    }
    return kNoFault;
  }

  // Any byte is taken for a letter here, and any but x for one of no concern.
  Fault ReadInlineOptions() {
    bool sets = true;
    for (; *at != ':' && *at != ')'; ++at) {
      if (*at == 0) {
        return {StatusRegExpSyntaxError, at};
      }
      if (*at == '-') {
        sets = false;
      } else if (*at == 'x') {
        extended = sets;
      }
    }
    if (*at == ')') {
      --depth;  // what was set holds on in the group around
    }
    ++at;
    return kNoFault;
  }

  void Enter() { outside[++depth] = extended; }

  Fault Close() {
    if (depth == 0) {
      return {StatusRegExpSyntaxError, at};
    }
    extended = outside[depth--];
    ++at;
    return kNoFault;
  }

  void SkipEscape() {
    ++at;
    if (*at == 'Q') {
      at = SkipQuotation(at);
      return;
    }
    if (*at == 'c') {
      ++at;
    }
    if (*at != 0) {
      ++at;
    }
  }

  Fault SkipClass() {
    ++at;
    if (*at == '^') {
      ++at;
    }
    if (*at == ']') {
      ++at;
    }
    while (*at != ']') {
      if (*at == '[' && OpensPosixName(at[1]) && at[2] != ']') {
        at = FindPair(at + 2, at[1], ']');
        at += *at == 0 ? 0 : 2;
      } else if (*at == '\\') {
        ++at;
        if (*at == 'Q') {
          at = SkipQuotation(at);
        } else if (*at != 0) {
          ++at;
        }
      } else if (*at != 0) {
        ++at;
      }
      if (*at == 0) {
        return {StatusRegExpClassError, at};
      }
    }
    ++at;
    return kNoFault;
  }

  const uint8_t* at;
  int32_t depth = 0;
  int32_t captureCount = 1;
  bool extended;
  // A condition may be one level below the deepest group.
  bool outside[kDeepest + 2];
};

}  // namespace

Fault Prescan(const uint8_t* pattern, int32_t options, int32_t* captureCount) {
  PrescanPass pass(pattern, options);
  const Fault fault = pass.Run();
  *captureCount = pass.CaptureCount();
  return fault;
}

}  // namespace vekch::regexp
