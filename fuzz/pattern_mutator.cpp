// SPDX-License-Identifier: MIT

// Mutations that know of the grammar: a pattern is changed by pieces that mean something, a group,
// a class, an escape, a quantifier, so that more of what comes out compiles. Every third time bytes
// are changed blindly, for what does not compile.

#include <array>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "fuzz/fuzz_input.h"
#include "fuzz/pattern_mutator.h"

extern "C" size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t maxSize);

namespace vekch::fuzz {
namespace {

constexpr const char* kAtoms[] = {
    "a",        "b",         "(a)",      "(?:ab)",      "(a|b)",
    "(?:|b)",   "(?>a*)",    "(?=a)",    "(?!b)",       "(?<=a)",
    "(?<!ab)",  "(?(1)a|b)", "(?i)",     "(?-i:a)",     "(?#x)",
    "[ab]",     "[^a]",      "[a-c\\d]", "[[:alpha:]]", "[[:^digit:]]",
    "\\1",      "\\2",       "\\d",      "\\W",         "\\s",
    "\\b",      "\\B",       "^",        "$",           "\\A",
    "\\Z",      "\\z",       "\\G",      ".",           ".*",
    "\\X",      "\\C",       "\\p{L}",   "\\P{Lu}",     "\\p{Greek}",
    "\\x{E9}",  "\\x{3B1}",  "\\xC3",    "\\101",       "\\Qa*\\E",
    "\xC3\xA9", "\n",        "|"};
constexpr const char* kQuantifiers[] = {"*",  "+",     "?",     "*?",    "+?",   "??",   "{2}",
                                        "{}", "{1,2}", "{0,3}", "{2,}?", "{,2}", "{1,}", "{3,60}"};
constexpr std::pair<const char*, const char*> kGroups[] = {
    {"(", ")"},    {"(?:", ")"},  {"(?>", ")"},  {"(?=", ")"},   {"(?!", ")"},
    {"(?<=", ")"}, {"(?i:", ")"}, {"(?:", "|)"}, {"(?(1)", ")"}, {"(", "|a)"}};

class PatternMutator {
 public:
  PatternMutator(std::string pattern, unsigned seed) : text_(std::move(pattern)), random_(seed) {}

  void Change() {
    const Piece one = Any();
    const Piece other = Any();
    switch (Below(8)) {
      case 0:
        text_.erase(one.begin, one.end - one.begin);
        break;
      case 1:
        text_.insert(one.begin, kAtoms[Below(std::size(kAtoms))]);
        break;
      case 2:
        Swap(std::min(one, other), std::max(one, other));
        break;
      case 3:
        text_.replace(one.atomEnd, one.end - one.atomEnd,
                      kQuantifiers[Below(std::size(kQuantifiers))]);
        break;
      case 4:
        text_.insert(one.begin, TextOf(other));
        break;
      case 5:
        text_.replace(one.begin, one.end - one.begin, TextOf(other));
        break;
      case 6: {
        const auto& [opening, closing] = kGroups[Below(std::size(kGroups))];
        text_.insert(one.end, closing);
        text_.insert(one.begin, opening);
        break;
      }
      default:
        text_.replace(one.begin, one.end - one.begin, kAtoms[Below(std::size(kAtoms))]);
    }
  }

  // Puts a piece of another pattern before one of this.
  void Splice(const std::string& pattern) {
    PatternMutator donor(pattern, static_cast<unsigned>(random_()));
    text_.insert(Any().begin, donor.TextOf(donor.Any()));
  }

  size_t Below(size_t limit) { return random_() % limit; }

  const std::string& Text() const { return text_; }

 private:
  struct Piece {  // an atom and its quantifier, if there is one
    size_t begin;
    size_t atomEnd;
    size_t end;

    bool operator<(const Piece& other) const { return begin < other.begin; }
  };

  std::string TextOf(const Piece& piece) const {
    return text_.substr(piece.begin, piece.end - piece.begin);
  }

  void Swap(const Piece& first, const Piece& second) {
    if (first.end <= second.begin) {  // else one lies in the other
      const std::string moved = TextOf(first);
      const std::string movedBack = TextOf(second);
      text_.replace(second.begin, movedBack.size(), moved);
      text_.replace(first.begin, moved.size(), movedBack);
    }
  }

  // One of the pieces, at any depth, or the end.
  Piece Any() {
    std::vector<Piece> pieces = {{text_.size(), text_.size(), text_.size()}};
    for (size_t i = 0; i < text_.size();) {
      const size_t atomEnd = AtomEnd(i);
      if (text_[i] != ')') {
        pieces.push_back({i, atomEnd, QuantifierEnd(atomEnd)});
      }
      i = text_[i] == '(' ? OpeningEnd(i) : QuantifierEnd(atomEnd);
    }
    return pieces[Below(pieces.size())];
  }

  size_t After(char closing, size_t from) const {
    const size_t at = text_.find(closing, from);
    return at == std::string::npos ? text_.size() : at + 1;
  }

  // After "(", "(?:", "(?<=" and the like.
  size_t OpeningEnd(size_t i) const {
    return i + 1 < text_.size() && text_[i + 1] == '?'
               ? std::min(text_.size(), text_.find_first_not_of("?<>=!:imsx-", i + 1))
               : i + 1;
  }

  size_t QuantifierEnd(size_t i) const {
    size_t end = i;
    if (i < text_.size() && std::strchr("*+?{", text_[i]) != nullptr) {
      end = text_[i] == '{' ? After('}', i) : i + 1;
      end += text_.compare(end, 1, "?") == 0 ? 1 : 0;
    }
    return end;
  }

  size_t AtomEnd(size_t i) const {
    switch (text_[i]) {
      case '\\':
        return EscapeEnd(i);
      case '[':
        return ClassEnd(i);
      case '(':
        return GroupEnd(i);
      default:
        return i + 1;
    }
  }

  size_t EscapeEnd(size_t i) const {
    const size_t end = std::min(i + 2, text_.size());
    const bool hasBraces = end < text_.size() && text_[end] == '{';
    return hasBraces && std::strchr("pPx", text_[i + 1]) != nullptr ? After('}', end) : end;
  }

  size_t ClassEnd(size_t i) const {
    ++i;
    i += text_.compare(i, 1, "^") == 0 ? 1 : 0;
    i += text_.compare(i, 1, "]") == 0 ? 1 : 0;
    while (i < text_.size() && text_[i] != ']') {
      i = text_[i] == '\\' ? EscapeEnd(i) : text_.compare(i, 2, "[:") == 0 ? After(']', i) : i + 1;
    }
    return std::min(i + 1, text_.size());
  }

  size_t GroupEnd(size_t i) const {
    for (i = OpeningEnd(i); i < text_.size() && text_[i] != ')';) {
      i = AtomEnd(i);
    }
    return std::min(i + 1, text_.size());
  }

  std::string text_;
  std::minstd_rand random_;
};

std::string StringOf(const uint8_t* data, size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

// Where one of an input's patterns lies. There is one if the input has a head.
struct Extent {
  size_t begin = kHeadSize;
  size_t length;
};

Extent ExtentOf(const std::string& input, size_t number) {
  Extent extent = {};
  for (; number > 0; --number) {
    const size_t end = input.find('\0', extent.begin);
    extent.begin = end == std::string::npos ? extent.begin : end + 1;
  }
  extent.length = std::min(input.find('\0', extent.begin), input.size()) - extent.begin;
  return extent;
}

std::string PatternOf(const std::string& input, size_t number) {
  const Extent extent = ExtentOf(input, number);
  return input.substr(extent.begin, extent.length);
}

// The input with another pattern, if there is room for it.
size_t Store(std::string input, size_t number, const std::string& pattern, uint8_t* to,
             size_t maxSize) {
  const Extent extent = ExtentOf(input, number);
  if (input.size() - extent.length + pattern.size() <= maxSize) {
    input.replace(extent.begin, extent.length, pattern);
  }
  std::copy(input.begin(), input.end(), to);
  return input.size();
}

}  // namespace
}  // namespace vekch::fuzz

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize,
                                          unsigned seed) {
  using namespace vekch::fuzz;
  if (seed % 3 == 0 || size < kHeadSize) {
    return LLVMFuzzerMutate(data, size, maxSize);
  }
  const std::string input = StringOf(data, size);
  const size_t number = seed / 3 % kPatternsOfInput;
  PatternMutator mutator(PatternOf(input, number), seed);
  for (size_t changes = 1 + mutator.Below(4); changes > 0; --changes) {
    mutator.Change();
  }
  return Store(input, number, mutator.Text(), data, maxSize);
}

extern "C" size_t LLVMFuzzerCustomCrossOver(const uint8_t* data, size_t size, const uint8_t* other,
                                            size_t otherSize, uint8_t* to, size_t maxSize,
                                            unsigned seed) {
  using namespace vekch::fuzz;
  const std::string input = StringOf(data, std::min(size, maxSize));
  if (size < kHeadSize || otherSize < kHeadSize) {
    std::copy(input.begin(), input.end(), to);
    return input.size();
  }
  const size_t number = seed % kPatternsOfInput;
  PatternMutator mutator(PatternOf(input, number), seed);
  mutator.Splice(PatternOf(StringOf(other, otherSize), seed / 3 % kPatternsOfInput));
  return Store(input, number, mutator.Text(), to, maxSize);
}
