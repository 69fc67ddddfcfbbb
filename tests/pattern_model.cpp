#include "tests/pattern_model.h"

#include <algorithm>

namespace vekch::test {
namespace {

constexpr size_t kNowhere = std::string::npos;

// A fault is thrown as its Verdict.
class PatternReader {
 public:
  explicit PatternReader(const std::string& pattern) : text_(pattern), size_(pattern.size()) {}

  void Read() {
    CheckBrackets();
    at_ = 0;
    ReadSequence();
    if (at_ < size_) {
      Fault(StatusRegExpSyntaxError, at_);  // a ")" too many
    }
  }

 private:
  enum class Before { kNothing, kAtom, kQuantifier };

  [[noreturn]] static void Fault(vekStatus status, size_t offset) { throw Verdict{status, offset}; }

  char Peek(size_t ahead = 0) const { return at_ + ahead < size_ ? text_[at_ + ahead] : '\0'; }
  bool Sees(const char* what) const {
    return text_.compare(at_, std::string(what).size(), what) == 0;
  }
  bool StartsName() const { return Peek() == '[' && (Peek(1) == ':' || Peek(1) == '.'); }

  size_t SkipDigits(size_t from, size_t most = kNowhere) const {
    return std::min({text_.find_first_not_of('1', from), size_, most});
  }

  // ---- The look at the whole pattern.

  void CheckBrackets() {
    size_t depth = 0;
    while (at_ < size_) {
      if (Peek() == '[') {
        CheckClass();
      } else if (Sees("(?-")) {
        at_ = text_.find_first_of(":)", at_);
        if (at_ == kNowhere) {
          Fault(StatusRegExpSyntaxError, size_);
        }
        depth += text_[at_++] == ':' ? 1 : 0;
      } else if (Peek() == ')') {
        if (depth-- == 0) {
          Fault(StatusRegExpSyntaxError, at_);
        }
        ++at_;
      } else {
        captures_ += Peek() == '(' && Peek(1) != '?' ? 1 : 0;
        depth += Sees("(?(") ? 2 : Peek() == '(' ? 1 : 0;
        at_ += Sees("(?(") ? 3 : Peek() == '\\' ? 2 : 1;
      }
    }
    if (depth != 0) {
      Fault(StatusRegExpSyntaxError, size_);
    }
  }

  void CheckClass() {
    at_ += Peek(1) == '^' ? 2 : 1;
    at_ += Peek() == ']' ? 1 : 0;
    while (at_ < size_ && Peek() != ']') {
      if (StartsName() && Peek(2) != ']') {
        const size_t close = text_.find(Peek(1) == ':' ? ":]" : ".]", at_ + 2);
        at_ = close == kNowhere ? size_ : close + 2;
      } else {
        at_ += Peek() == '\\' ? 2 : 1;
      }
    }
    if (at_ >= size_) {
      Fault(StatusRegExpClassError, size_);
    }
    ++at_;
  }

  // ---- The constructs. A sequence ends at the pattern's end or at a ")".

  void ReadSequence() {
    while (at_ < size_ && Peek() != ')') {
      if (QuantifierEnd() != kNowhere) {
        ReadQuantifier();
        continue;
      }
      const char first = Peek();
      if (first == '(') {
        ReadGroup();
        continue;
      }
      if (first == '[') {
        ReadClass();
      } else if (first == '\\') {
        ReadEscape();
      } else {
        ++at_;
      }
      alternatives_ += first == '|' ? 1 : 0;
      before_ = first == '|' ? Before::kNothing : Before::kAtom;
    }
  }

  size_t QuantifierEnd() const {
    if (Peek() == '*' || Peek() == '+' || Peek() == '?') {
      return at_ + 1;
    }
    size_t i = SkipDigits(at_ + 1);
    i = i < size_ && text_[i] == ',' ? SkipDigits(i + 1) : i;
    return Peek() == '{' && i < size_ && text_[i] == '}' ? i + 1 : kNowhere;
  }

  void ReadQuantifier() {
    const size_t start = at_;
    at_ = QuantifierEnd();
    if (text_[start] == '{') {
      const std::string inside = text_.substr(start + 1, at_ - start - 2);
      const size_t comma = std::min(inside.find(','), inside.size());
      const bool hasMost = comma + 1 < inside.size();
      const long least = comma == 0 ? 0 : std::stol(inside);
      const long most = hasMost ? std::stol(inside.substr(comma + 1)) : least;
      if (least > 65535 || most > 65535 || most < least) {
        Fault(StatusRegExpQuantifierError, start + 1);
      }
    }
    at_ += Peek() == '?' ? 1 : 0;
    if (before_ == Before::kNothing || start == quantifierEnd_) {
      Fault(StatusRegExpQuantifierError, start);
    }
    before_ = Before::kQuantifier;
    quantifierEnd_ = at_;
  }

  void ReadEscape() {
    ++at_;
    if (at_ == size_) {
      Fault(StatusRegExpEscapeError, at_);
    }
    if (Peek() != '1') {
      ++at_;
      return;
    }
    const size_t digits = SkipDigits(at_, at_ + 3) - at_;
    if (digits == 1 && captures_ < 2) {
      Fault(StatusRegExpFormatError, at_);
    }
    at_ += digits;  // too few groups here for "\11": a code
  }

  void ReadGroup() {
    if (Sees("(?)")) {
      at_ += 3;
      return;
    }
    const bool isConditional = Sees("(?(");
    bool isValid = true;
    if (isConditional) {
      isValid = ReadCondition();
    } else if (Sees("(?-")) {
      at_ = std::min(text_.find_first_not_of('-', at_ + 2), size_);
      if (Peek() != ':' && Peek() != ')') {
        Fault(StatusRegExpSyntaxError, at_);
      }
      if (text_[at_++] == ')') {
        before_ = Before::kNothing;
        return;
      }
    } else if (Sees("(?")) {
      if (Peek(2) != ':') {
        Fault(StatusRegExpSyntaxError, at_ + 2);
      }
      at_ += 3;
    } else {
      ++at_;
    }
    const int around = alternatives_;
    alternatives_ = 0;
    before_ = isConditional && isValid ? Before::kAtom : Before::kNothing;
    isValid = isValid && !(isConditional && QuantifierEnd() != kNowhere);
    ReadSequence();
    if (at_ == size_ || (isConditional && (!isValid || alternatives_ > 1))) {
      Fault(StatusRegExpSyntaxError, at_);
    }
    ++at_;
    alternatives_ = around;
    before_ = Before::kAtom;
  }

  // Whether it is one: a group in its place is none, as no look-around is spelled here.
  bool ReadCondition() {
    const size_t start = at_ + 3;
    const size_t end = SkipDigits(start, start + 3);
    at_ = Peek(3) == '?' ? at_ + 2 : end + 1;
    if (Peek() == '(' && text_[start] == '?') {
      return false;
    }
    if (end == size_ || text_[end] != ')') {
      Fault(StatusRegExpSyntaxError, end);
    }
    if (end == start) {
      Fault(StatusRegExpFormatError, start);
    }
    return true;
  }

  // ---- Bracket classes; no name of a set can be spelled here.

  void ReadClass() {
    at_ += Peek(1) == '^' ? 2 : 1;
    const bool negated = text_[at_ - 1] == '^';
    int members = 0;
    int last = -1;  // the member that a "-" makes a range of, if it is not complete
    if (Peek() == ']' || Peek() == '-') {
      ++members;
      ++at_;
    }
    while (Peek() != ']') {
      ++members;
      if (at_ >= size_) {
        Fault(StatusRegExpClassError, size_);
      } else if (StartsName()) {
        ReadNoName();
        ++members;
        last = -1;
      } else if (Peek() == '-') {
        ++at_;
        const bool isRange = last >= 0 && Peek() != ']' && !StartsName() && at_ < size_;
        const size_t end = at_;
        if (isRange && ReadMember() < last) {
          Fault(StatusRegExpClassError, end);
        }
        last = -1;
      } else {
        last = ReadMember();
      }
    }
    if (members == 1 && last == '^' && !negated) {
      Fault(StatusRegExpSyntaxError, at_);
    }
    ++at_;
  }

  int ReadMember() {
    const size_t start = at_++;
    if (text_[start] != '\\') {
      return text_[start];
    }
    if (at_ == size_) {
      Fault(StatusRegExpEscapeError, at_);
    }
    const char letter = text_[at_];
    const size_t end = SkipDigits(at_, at_ + 3);
    const int octal = letter == '1' ? std::stoi(text_.substr(at_, end - at_), nullptr, 8) : 0;
    at_ = letter == '1' ? end : at_ + 1;
    return letter == 'a' ? 7 : letter == 'b' ? 8 : letter == '1' ? octal : letter;
  }

  void ReadNoName() {
    const size_t closing = text_.find(Peek(1), at_ + 2);
    if (Peek(2) != ']' && closing != kNowhere &&
        (closing + 1 == size_ || text_[closing + 1] == ']')) {
      Fault(StatusRegExpClassError, at_);
    }
    at_ += 2;
  }

  const std::string& text_;
  const size_t size_;
  size_t at_ = 0;
  int captures_ = 1;
  int alternatives_ = 0;
  Before before_ = Before::kNothing;
  size_t quantifierEnd_ = kNowhere;
};

}  // namespace

Verdict JudgePattern(const std::string& pattern) {
  try {
    PatternReader(pattern).Read();
    return {StatusNoError, 0};
  } catch (const Verdict& fault) {
    return fault;
  }
}

}  // namespace vekch::test
