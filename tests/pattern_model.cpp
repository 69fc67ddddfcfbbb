// SPDX-License-Identifier: MIT
#include "tests/pattern_model.h"

#include <algorithm>

namespace vekch::test {
namespace {

constexpr size_t kNowhere = std::string::npos;

// A fault is thrown as its Verdict.
class PatternReader {
 public:
  explicit PatternReader(const std::string& pattern) : text(pattern), size(pattern.size()) {}

  void Read() {
    CheckBrackets();
    at = 0;
    ReadSequence();
    if (at < size) {
      Fault(StatusRegExpSyntaxError, at);  // a ")" too many
    }
  }

 private:
  enum class Before { kNothing, kAtom, kQuantifier };

  [[noreturn]] static void Fault(vekStatus status, size_t offset) { throw Verdict{status, offset}; }

  char Peek(size_t ahead = 0) const { return at + ahead < size ? text[at + ahead] : '\0'; }
  bool Sees(const char* what) const {
    return text.compare(at, std::string(what).size(), what) == 0;
  }
  bool StartsName() const { return Peek() == '[' && (Peek(1) == ':' || Peek(1) == '.'); }

  size_t SkipDigits(size_t from, size_t most = kNowhere) const {
    return std::min({text.find_first_not_of('1', from), size, most});
  }

  // ---- The look at the whole pattern.

  void CheckBrackets() {
    size_t depth = 0;
    while (at < size) {
      if (Peek() == '[') {
        CheckClass();
      } else if (Sees("(?-")) {
        at = text.find_first_of(":)", at);
        if (at == kNowhere) {
          Fault(StatusRegExpSyntaxError, size);
        }
        depth += text[at++] == ':' ? 1 : 0;
      } else if (Peek() == ')') {
        if (depth-- == 0) {
          Fault(StatusRegExpSyntaxError, at);
        }
        ++at;
      } else {
        captures += Peek() == '(' && Peek(1) != '?' ? 1 : 0;
        depth += Sees("(?(") ? 2 : Peek() == '(' ? 1 : 0;
        at += Sees("(?(") ? 3 : Peek() == '\\' ? 2 : 1;
      }
    }
    if (depth != 0) {
      Fault(StatusRegExpSyntaxError, size);
    }
  }

  void CheckClass() {
    at += Peek(1) == '^' ? 2 : 1;
    at += Peek() == ']' ? 1 : 0;
    while (at < size && Peek() != ']') {
      if (StartsName() && Peek(2) != ']') {
        const size_t close = text.find(Peek(1) == ':' ? ":]" : ".]", at + 2);
        at = close == kNowhere ? size : close + 2;
      } else {
        at += Peek() == '\\' ? 2 : 1;
      }
    }
    if (at >= size) {
      Fault(StatusRegExpClassError, size);
    }
    ++at;
  }

  // ---- The constructs. A sequence ends at the pattern's end or at a ")".

  void ReadSequence() {
    while (at < size && Peek() != ')') {
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
        ++at;
      }
      alternatives += first == '|' ? 1 : 0;
      before = first == '|' ? Before::kNothing : Before::kAtom;
    }
  }

  size_t QuantifierEnd() const {
    if (Peek() == '*' || Peek() == '+' || Peek() == '?') {
      return at + 1;
    }
    size_t i = SkipDigits(at + 1);
    i = i < size && text[i] == ',' ? SkipDigits(i + 1) : i;
    return Peek() == '{' && i < size && text[i] == '}' ? i + 1 : kNowhere;
  }

  void ReadQuantifier() {
    const size_t start = at;
    at = QuantifierEnd();
    if (text[start] == '{') {
      const std::string inside = text.substr(start + 1, at - start - 2);
      const size_t comma = std::min(inside.find(','), inside.size());
      const bool hasMost = comma + 1 < inside.size();
      const long least = comma == 0 ? 0 : std::stol(inside);
      const long most = hasMost ? std::stol(inside.substr(comma + 1)) : least;
      if (least > 65535 || most > 65535 || most < least) {
        Fault(StatusRegExpQuantifierError, start + 1);
      }
    }
    at += Peek() == '?' ? 1 : 0;
    if (before == Before::kNothing || start == quantifierEnd) {
      Fault(StatusRegExpQuantifierError, start);
    }
    before = Before::kQuantifier;
    quantifierEnd = at;
  }

  void ReadEscape() {
    ++at;
    if (at == size) {
      Fault(StatusRegExpEscapeError, at);
    }
    if (Peek() != '1') {
      ++at;
      return;
    }
    const size_t digits = SkipDigits(at, at + 3) - at;
    if (digits == 1 && captures < 2) {
      Fault(StatusRegExpFormatError, at);
    }
    at += digits;  // too few groups here for "\11": a code
  }

  void ReadGroup() {
    if (Sees("(?)")) {
      at += 3;
      return;
    }
    const bool isConditional = Sees("(?(");
    bool isValid = true;
    if (isConditional) {
      isValid = ReadCondition();
    } else if (Sees("(?-")) {
      at = std::min(text.find_first_not_of('-', at + 2), size);
      if (Peek() != ':' && Peek() != ')') {
        Fault(StatusRegExpSyntaxError, at);
      }
      if (text[at++] == ')') {
        before = Before::kNothing;
        return;
      }
    } else if (Sees("(?")) {
      if (Peek(2) != ':') {
        Fault(StatusRegExpSyntaxError, at + 2);
      }
      at += 3;
    } else {
      ++at;
    }
    const int around = alternatives;
    alternatives = 0;
    before = isConditional && isValid ? Before::kAtom : Before::kNothing;
    while (isConditional && Sees("(?)")) {  // leaves nothing between the condition and what follows
      at += 3;
    }
    isValid = isValid && !(isConditional && QuantifierEnd() != kNowhere);
    ReadSequence();
    if (at == size || (isConditional && (!isValid || alternatives > 1))) {
      Fault(StatusRegExpSyntaxError, at);
    }
    ++at;
    alternatives = around;
    before = Before::kAtom;
  }

  // Whether it is one: a group in its place is none, as no look-around is spelled here.
  bool ReadCondition() {
    const size_t start = at + 3;
    const size_t end = SkipDigits(start, start + 3);
    at = Peek(3) == '?' ? at + 2 : end + 1;
    if (Peek() == '(' && text[start] == '?') {
      return false;
    }
    if (end == size || text[end] != ')') {
      Fault(StatusRegExpSyntaxError, end);
    }
    if (end == start) {
      Fault(StatusRegExpFormatError, start);
    }
    return true;
  }

  // ---- Bracket classes; no name of a set can be spelled here.

  void ReadClass() {
    at += Peek(1) == '^' ? 2 : 1;
    const bool negated = text[at - 1] == '^';
    int members = 0;
    int last = -1;  // the member that a "-" makes a range of, if it is not complete
    if (Peek() == ']' || Peek() == '-') {
      ++members;
      ++at;
    }
    while (Peek() != ']') {
      ++members;
      if (at >= size) {
        Fault(StatusRegExpClassError, size);
      } else if (StartsName()) {
        ReadNoName();
        ++members;
        last = -1;
      } else if (Peek() == '-') {
        ++at;
        const bool isRange = last >= 0 && Peek() != ']' && !StartsName() && at < size;
        const size_t end = at;
        if (isRange && ReadMember() < last) {
          Fault(StatusRegExpClassError, end);
        }
        last = -1;
      } else {
        last = ReadMember();
      }
    }
    if (members == 1 && last == '^' && !negated) {
      Fault(StatusRegExpSyntaxError, at);
    }
    ++at;
  }

  int ReadMember() {
    const size_t start = at++;
    if (text[start] != '\\') {
      return text[start];
    }
    if (at == size) {
      Fault(StatusRegExpEscapeError, at);
    }
    const char letter = text[at];
    const size_t end = SkipDigits(at, at + 3);
    const int octal = letter == '1' ? std::stoi(text.substr(at, end - at), nullptr, 8) : 0;
    at = letter == '1' ? end : at + 1;
    return letter == 'a' ? 7 : letter == 'b' ? 8 : letter == '1' ? octal : letter;
  }

  void ReadNoName() {
    const size_t closing = text.find(Peek(1), at + 2);
    if (Peek(2) != ']' && closing != kNowhere &&
        (closing + 1 == size || text[closing + 1] == ']')) {
      Fault(StatusRegExpClassError, at);
    }
    at += 2;
  }

  const std::string& text;
  const size_t size;
  size_t at = 0;
  int captures = 1;
  int alternatives = 0;
  Before before = Before::kNothing;
  size_t quantifierEnd = kNowhere;
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
