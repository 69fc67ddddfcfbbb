// SPDX-License-Identifier: MIT

// For kWhole the pattern is compiled with option m and without s, so that "^", "$" and "." see each
// line of the text as if it stood alone. If then no record can consume a newline or look beyond
// one, the tries at a place of a line are the same in the text as in the line alone, and so is what
// comes of them. Not taken, though they might do: repeated groups, as they may nest deep enough to
// run out of the limit, which the object keeps an account of over the lines; look-arounds, atomic
// groups, conditions and back-references, which ask what does not match or what ends the subject.

#include "line_filter.h"

#include <algorithm>

namespace examples::vekgrep {
namespace {

// Whether no search can run out of the limit by the length of the program alone: a record nests
// tries twice at most, and the object allows a fourth of the limit.
bool LimitIsAmple(const RegExpState& state) {
  constexpr int32_t kDepthPerRecord = 4;
  constexpr int32_t kSpare = 16;
  return state.nodeCount <= (state.matchLimit / RegExpDepthShare - kSpare) / kDepthPerRecord;
}

bool IsOptional(const ProgramNode& quantifier) {
  return (quantifier.op == OpGreedy || quantifier.op == OpLazy) && quantifier.a < 1;
}

enum class Holds { kNo, kYes, kUnknown };  // whether a newline is among what a record matches

// Where option s is not in force.
Holds ShorthandHoldsNewline(int32_t letter) {
  switch (letter) {
#define VEKGREP_SHORTHAND(name, letter, ranges, isComplement, newline, words) \
  case letter:                                                                \
    return (newline) == RegExpNewlineAlways ? Holds::kYes : Holds::kNo;
    VEKCH_REGEXP_SHORTHANDS(VEKGREP_SHORTHAND)
#undef VEKGREP_SHORTHAND
    default:
      return Holds::kUnknown;
  }
}

bool AssertsOfLine(int32_t letter) {
  switch (letter) {
#define VEKGREP_ASSERTION(name, letter, isOfLine, words) \
  case letter:                                           \
    return (isOfLine) != 0;
    VEKCH_REGEXP_ASSERTIONS(VEKGREP_ASSERTION)
#undef VEKGREP_ASSERTION
    default:
      return false;
  }
}

Holds HoldsNewline(const ProgramNode& node) {
  const auto answer = [](bool holds) { return holds ? Holds::kYes : Holds::kNo; };
  switch (node.op) {
    case OpChar:
    case OpCodePoint:
      return answer(node.a == '\n');
    case OpString:
      return answer(LiteralBytes(node).find('\n') != std::string::npos);
    case OpClassRange:
      return answer(node.a <= '\n' && '\n' <= node.b);
    case OpCharType:
      return ShorthandHoldsNewline(node.a);
    default:
      return Holds::kUnknown;
  }
}

// `node` is an OpClass, its items behind it. Items of a negated name are not looked at closely.
Holds ClassHoldsNewline(const ProgramNode* node) {
  Holds any = Holds::kNo;
  for (const ProgramNode* item = node + 1; item <= node + node->b; ++item) {
    const Holds one = item->c != 0 ? Holds::kUnknown : HoldsNewline(*item);
    any = any == Holds::kYes || one == Holds::kNo ? any : one;
  }
  if (node->a == 0 || any == Holds::kUnknown) {
    return any;
  }
  return any == Holds::kYes ? Holds::kNo : Holds::kYes;
}

bool KeepsLines(int32_t options) {
  return (options & RegExpOptionM) != 0 && (options & RegExpOptionS) == 0;
}

bool StaysInLine(const ProgramNode* node) {
  switch (node->op) {
    case OpClass:
      return ClassHoldsNewline(node) == Holds::kNo;
    case OpAssert:
      return AssertsOfLine(node->a);
    case OpGreedy:
    case OpLazy:
      return node[-1].op != OpGroupEnd;
    case OpSetOptions:
      return KeepsLines(node->a);
    case OpOptionGroup:
      return KeepsLines(node->c);
    case OpAlternative:
    case OpCapture:
    case OpGroup:
    case OpGroupEnd:
      return true;
    default:
      return HoldsNewline(*node) == Holds::kNo;
  }
}

bool StaysInLine(const CompiledPattern& compiled) {
  const ProgramNode* end = compiled.Program() + compiled.Header().nodeCount;
  for (const ProgramNode* node = compiled.Program(); node < end; ++node) {
    if (!StaysInLine(node)) {
      return false;
    }
    node += node->op == OpClass ? node->b : 0;
  }
  return true;
}

std::string Listed(const std::vector<std::string>& texts) {
  std::string list;
  for (const std::string& text : texts) {
    list += (list.empty() ? "\"" : " or \"") + text + "\"";
  }
  return list;
}

}  // namespace

LineFilter::LineFilter(const std::string& pattern, const PatternSettings& settings,
                       const CompiledPattern& compiled) {
  if (!LimitIsAmple(compiled.Header())) {
    return;
  }
  if (FilterByLiterals(compiled)) {
    way = Way::kLiterals;
  } else if (FilterByWhole(pattern, settings)) {
    way = Way::kWhole;
  }
}

// All literals, where the pattern is nothing but alternatives of them; else the one that ends the
// pattern or the one that begins it, the longer of the two.
bool LineFilter::FilterByLiterals(const CompiledPattern& compiled) {
  const RegExpState& state = compiled.Header();
  const ProgramNode* program = compiled.Program();
  bool ignoresCase = (state.compileFlags & RegExpOptionI) != 0;
  if (state.searchMode == 2) {
    for (int32_t i = 0; i < state.nodeCount; i += 2) {
      literals.push_back(LiteralBytes(program[i]));
    }
  }
  // The object calls a literal leading also where it is optional and lazy, as in "a*?b".
  if (state.searchMode == 1 && !(state.nodeCount > 1 && IsOptional(program[1]))) {
    literals = {LiteralBytes(*program)};
  }
  if (state.requiredLiteralIndex >= 0) {
    const ProgramNode& node = program[state.requiredLiteralIndex];
    if (literals.empty() || LiteralBytes(node).size() > literals.front().size()) {
      literals = {LiteralBytes(node)};
      ignoresCase = (node.c & RegExpOptionI) != 0;
    }
  }
  if (literals.empty()) {
    return false;
  }
  literalSearcher = std::make_unique<TextSearcher>(literals, ignoresCase);
  return true;
}

bool LineFilter::FilterByWhole(const std::string& pattern, const PatternSettings& settings) {
  PatternSettings wholeSettings = settings;
  std::string& letters = wholeSettings.letters;
  letters.erase(std::remove(letters.begin(), letters.end(), 's'), letters.end());
  letters += 'm';
  std::string fault;
  // A text is narrowed to where a leading literal stands first, though an optional one need not
  // stand in the line of the match.
  return whole.Compile(pattern, wholeSettings, &fault) && whole.Header().searchMode != 1 &&
         StaysInLine(whole);
}

std::string LineFilter::Description() const {
  switch (way) {
    case Way::kLiterals:
      return "lines with the text " + Listed(literals);
    case Way::kWhole:
      return "lines of matches in the whole text";
    case Way::kEvery:
      break;
  }
  return "every line";
}

void LineFilter::Begin(const uint8_t* newText, int32_t newLength) {
  text = newText;
  length = newLength;
  if (way == Way::kLiterals) {
    literalSearcher->Begin(text, length);
  }
}

int32_t LineFilter::Next(int32_t from) {
  if (way == Way::kLiterals) {
    Range found;
    return literalSearcher->Next(from, &found) == Outcome::kMatch ? found.begin : -1;
  }
  if (way == Way::kWhole) {
    RegExpFindResult found;
    int32_t count = 1;
    const vekStatus status =
        veksRegExpFind_8u(text + from, length - from, whole.State(), &found, &count);
    if (status >= StatusNoError) {
      return count > 0 ? static_cast<int32_t>(found.pointer - text) : -1;
    }
  }
  return from;
}

}  // namespace examples::vekgrep
