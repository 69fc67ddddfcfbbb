// SPDX-License-Identifier: MIT
#include "line_filter.h"

#include <algorithm>
#include <limits>

#include "line_safety.h"

namespace examples::vekgrep {
namespace {

constexpr int32_t kAnyLength = std::numeric_limits<int32_t>::max();
constexpr int32_t kShortLine = 32;  // if lines may not even have that, it isn't worth it

bool IsOptional(const ProgramNode& quantifier) {
  return (quantifier.op == OpGreedy || quantifier.op == OpLazy) && quantifier.a < 1;
}

std::string Listed(const std::vector<std::string>& texts) {
  std::string list;
  for (const std::string& text : texts) {
    list += (list.empty() ? "\"" : " or \"") + text + "\"";
  }
  return list;
}

// Alternatives that are nothing but literal texts, whatever is around them.
std::vector<std::string> AlternativesOf(const CompiledPattern& compiled) {
  std::vector<std::string> texts;
  for (int32_t i = 0; i < compiled.Header().nodeCount; i += 2) {
    texts.push_back(LiteralBytes(compiled.Program()[i]));
  }
  return texts;
}

// Whether every line ends within so many bytes.
bool LinesAreShort(const uint8_t* text, int32_t length, int32_t longest, uint8_t lineEnd) {
  for (int32_t at = 0; length - at > longest;) {
    const int32_t end = FindLastByte(text, {at, at + longest + 1}, lineEnd);
    if (end < 0) {
      return false;
    }
    at = end + 1;
  }
  return true;
}

}  // namespace

// The first alternative that fits is the match of a pattern, the longest text that of texts: the
// same as long as none begins with another. A text may start inside a character, a pattern not.
bool IsPlainText(const std::string& pattern, const PatternSettings& settings, PlainTexts* plain) {
  CompiledPattern compiled;
  PatternSettings plainSettings = settings;
  plainSettings.bounds = Bounds::kNone;
  std::string fault;
  if (settings.limit >= 0 || !compiled.Compile(pattern, plainSettings, &fault)) {
    return false;
  }
  const RegExpState& state = compiled.Header();
  const bool isText = state.nodeCount == 1 &&
                      (compiled.Program()->op == OpChar || compiled.Program()->op == OpString);
  if (!isText && state.searchMode != 2 && state.nodeCount != 0) {
    return false;
  }
  std::vector<std::string> texts = AlternativesOf(compiled);
  if (state.nodeCount == 0) {
    texts.emplace_back();
  }
  for (const std::string& text : texts) {
    const bool insideCharacter = !text.empty() && (text[0] & 0xC0) == 0x80;
    const bool beginsOther = std::any_of(texts.begin(), texts.end(), [&](const std::string& other) {
      return &other != &text && other.compare(0, text.size(), text) == 0;
    });
    if (insideCharacter || beginsOther ||
        text.find(static_cast<char>(settings.lineEnd)) != std::string::npos) {
      return false;
    }
  }
  plain->texts.insert(plain->texts.end(), texts.begin(), texts.end());
  plain->ignoreCase = (state.compileFlags & RegExpOptionI) != 0;
  return true;
}

LineFilter::LineFilter(const std::string& pattern, const PatternSettings& settings,
                       const CompiledPattern& compiled)
    : lineEnd(settings.lineEnd) {
  longestLine = LongestSafeLine(compiled);
  limitIsAmple = longestLine == kAnyLength;
  if (limitIsAmple && FilterByLiterals(pattern, settings)) {
    way = Way::kLiterals;
  } else if (longestLine >= kShortLine && FilterByWhole(pattern, settings)) {
    way = Way::kWhole;
  }
}

// All literals, where the pattern is nothing but alternatives of them; else the one that ends the
// pattern or the one that begins it, the longer of the two. What must be around a match makes no
// difference to that.
bool LineFilter::FilterByLiterals(const std::string& pattern, const PatternSettings& settings) {
  CompiledPattern compiled;
  PatternSettings unbounded = settings;
  unbounded.bounds = Bounds::kNone;
  std::string fault;
  if (!compiled.Compile(pattern, unbounded, &fault)) {
    return false;
  }
  const RegExpState& state = compiled.Header();
  const ProgramNode* program = compiled.Program();
  bool ignoresCase = (state.compileFlags & RegExpOptionI) != 0;
  if (state.searchMode == 2) {
    literals = AlternativesOf(compiled);
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

// With zero bytes at the ends of lines the pattern stays as it is.
bool LineFilter::FilterByWhole(const std::string& pattern, const PatternSettings& settings) {
  wholeSettings = settings;
  if (lineEnd == '\n') {
    std::string& letters = wholeSettings.letters;
    letters.erase(std::remove(letters.begin(), letters.end(), 's'), letters.end());
    letters += 'm';
  }
  std::string fault;
  if (!whole.Compile(pattern, wholeSettings, &fault)) {
    return false;
  }
  const LineSafety safety = JudgeLines(whole, lineEnd);
  exact = safety.exact;
  longestLine = std::min(longestLine, safety.longestLine);
  // A text is narrowed to where a prefix literal is first, though an optional one need not be in
  // the line of the match, and to where a suffix literal is last, which look-arounds notice.
  return safety.keepsLines && whole.Header().searchMode == 0 &&
         whole.Header().requiredLiteralIndex < 0;
}

std::string LineFilter::Description() const {
  switch (way) {
    case Way::kLiterals:
      return "lines with the text " + Listed(literals);
    case Way::kWhole:
      return std::string("lines of matches in the whole text") +
             (longestLine == kAnyLength ? "" : ", while lines are short") +
             (exact ? "" : ", each then alone");
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
  wholeNow = way == Way::kWhole &&
             (longestLine == kAnyLength || LinesAreShort(text, length, longestLine, lineEnd));
}

int32_t LineFilter::Next(int32_t from, Range* match) {
  if (way == Way::kLiterals) {
    return literalSearcher->Next(from, match) == Outcome::kMatch ? match->begin : -1;
  }
  if (wholeNow) {
    RegExpFindResult found;
    int32_t count = 1;
    const vekStatus status =
        veksRegExpFind_8u(text + from, length - from, whole.State(), &found, &count);
    if (status >= StatusNoError) {
      const auto begin = static_cast<int32_t>(found.pointer - text);
      *match = {begin, begin + (count > 0 ? found.length : 0)};
      return count > 0 ? begin : -1;
    }
    wholeNow = false;  // nothing of the kind is expected; each line is searched from here on
  }
  return from;
}

}  // namespace examples::vekgrep
