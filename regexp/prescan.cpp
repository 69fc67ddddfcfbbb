// The pre-scan: one pass that knows just enough of the language to find groups and classes. What
// it lets through may still fail to compile.
//
// It must know where "#" starts a comment, so it follows option x through the groups: one byte for
// each level of nesting holds what the option was outside. It sees the extent of a class in a
// simpler way than the compiler does ("\c" takes one byte in here, a POSIX name runs to its end
// whatever it is), so in rare patterns the two disagree about what is inside a class; the compiler
// checks for itself that groups are balanced.

#include "regexp/prescan.h"

#include "regexp/pattern_text.h"

namespace vekch::regexp {
namespace {

constexpr int32_t kDeepest = RegExpTableSize - 1;
constexpr int32_t kMostCaptures = RegExpTableSize;

class PrescanPass {
 public:
  PrescanPass(const uint8_t* pattern, int32_t options)
      : at_(pattern), extended_((options & RegExpOptionX) != 0) {}

  Fault Run() {
    while (*at_ != 0) {
      const Fault fault = Step();
      if (Failed(fault)) {
        return fault;
      }
    }
    return depth_ == 0 ? kNoFault : Fault{StatusRegExpSyntaxError, at_};
  }

  int32_t CaptureCount() const { return captureCount_; }

 private:
  Fault Step() {
    switch (*at_) {
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
        at_ = extended_ ? SkipLine(at_) : at_ + 1;
        return kNoFault;
      default:
        ++at_;
        return kNoFault;
    }
  }

  Fault Open() {
    const uint8_t* bracket = at_;
    if (depth_ >= kDeepest) {
      return {StatusRegExpSyntaxError, bracket};
    }
    Enter();
    if (bracket[1] != '?') {
      ++at_;
      return ++captureCount_ > kMostCaptures + 1 ? Fault{StatusRegExpSyntaxError, bracket}
                                                 : kNoFault;
    }
    at_ += 2;
    if (*at_ == '#') {
      at_ = FindInPattern(at_, ')');
      return *at_ == 0 ? Fault{StatusRegExpSyntaxError, at_} : Close();
    }
    if (*at_ == '(') {  // a conditional and its condition: two levels
      Enter();
      ++at_;
    } else if (StartsInlineOptions(*at_)) {
      return ReadInlineOptions();
    }
    return kNoFault;
  }

  // Any byte is taken for a letter here, and any but x for one of no concern.
  Fault ReadInlineOptions() {
    bool sets = true;
    for (; *at_ != ':' && *at_ != ')'; ++at_) {
      if (*at_ == 0) {
        return {StatusRegExpSyntaxError, at_};
      }
      if (*at_ == '-') {
        sets = false;
      } else if (*at_ == 'x') {
        extended_ = sets;
      }
    }
    if (*at_ == ')') {
      --depth_;  // what was set holds on in the group around
    }
    ++at_;
    return kNoFault;
  }

  void Enter() { outside_[++depth_] = extended_; }

  Fault Close() {
    if (depth_ == 0) {
      return {StatusRegExpSyntaxError, at_};
    }
    extended_ = outside_[depth_--];
    ++at_;
    return kNoFault;
  }

  void SkipEscape() {
    ++at_;
    if (*at_ == 'Q') {
      SkipQuote();
      return;
    }
    if (*at_ == 'c') {
      ++at_;
    }
    if (*at_ != 0) {
      ++at_;
    }
  }

  // From the "Q" to behind "\E", or to the end.
  void SkipQuote() {
    at_ = FindPair(at_, '\\', 'E');
    if (*at_ != 0) {
      at_ += 2;
    }
  }

  Fault SkipClass() {
    ++at_;
    if (*at_ == '^') {
      ++at_;
    }
    if (*at_ == ']') {
      ++at_;
    }
    while (*at_ != ']') {
      if (*at_ == '[' && OpensPosixName(at_[1]) && at_[2] != ']') {
        at_ = FindPair(at_ + 2, at_[1], ']');
        at_ += *at_ == 0 ? 0 : 2;
      } else if (*at_ == '\\') {
        ++at_;
        if (*at_ == 'Q') {
          SkipQuote();
        } else if (*at_ != 0) {
          ++at_;
        }
      } else if (*at_ != 0) {
        ++at_;
      }
      if (*at_ == 0) {
        return {StatusRegExpClassError, at_};
      }
    }
    ++at_;
    return kNoFault;
  }

  const uint8_t* at_;
  int32_t depth_ = 0;
  int32_t captureCount_ = 1;
  bool extended_;
  // A condition may stand one level below the deepest group.
  bool outside_[kDeepest + 2];
};

}  // namespace

Fault Prescan(const uint8_t* pattern, int32_t options, int32_t* captureCount) {
  PrescanPass pass(pattern, options);
  const Fault fault = pass.Run();
  *captureCount = pass.CaptureCount();
  return fault;
}

}  // namespace vekch::regexp
