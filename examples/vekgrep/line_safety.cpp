// SPDX-License-Identifier: MIT

// Two questions are asked of each record.
//
// Can it see beyond the line? The pattern is compiled with option m and without s, so that "^", "$"
// and "." see each line of the text as if it were alone. Where no record can consume the byte that
// ends a line, or assert anything about what is beyond it, the tries at a position of a line are
// the same in the text as in the line alone, and so is what comes of them: a look-around's body
// that would need a byte of another line fails where the line alone has none. Where single
// characters may be that byte ("\s", "[^a]"), a match of the line is still a way to match in the
// text, as long as nothing in the pattern asks what does *not* match; the line is then searched
// again, alone. Such characters may not be repeated often, or each line would be the start of a
// long search.
//
// Can the match limit run out? Where it does, what is found depends on all that was tried before,
// in other lines. A record takes a few levels each time that it is passed on one way through the
// program: once, or as often as the groups around it repeat, and each repetition of an unbounded
// group takes a byte of the line.

#include "line_safety.h"

#include <algorithm>
#include <limits>
#include <vector>

namespace examples::vekgrep {
namespace {

constexpr int64_t kLevelsPerRecord = 4;  // that a record takes each time it is passed, at most
constexpr int64_t kSpareLevels = 16;
constexpr int64_t kOften = 1000;  // repetitions from here on count as unbounded
constexpr int64_t kFewRepetitions = 8;

enum class Holds { kNo, kYes, kUnknown };  // whether a byte is among what a record matches

Holds Answer(bool holds) { return holds ? Holds::kYes : Holds::kNo; }

// The bit that all categories share of which control characters are one: of "\p{C}".
int32_t ControlMask() {
  static const int32_t mask = [] {
    CompiledPattern property;
    std::string fault;
    return property.Compile("\\p{C}", {}, &fault) ? property.Program()->a : -1;
  }();
  return mask;
}

bool InScript(const ProgramNode& node, int32_t character) {
  const auto* ranges = reinterpret_cast<const int32_t*>(static_cast<uintptr_t>(node.ptr));
  for (int32_t i = 0; i < node.c; ++i) {
    if (ranges[2 * i] <= character && character <= ranges[2 * i + 1]) {
      return true;
    }
  }
  return false;
}

// `ranges` are pairs of a first and a last byte.
bool InRanges(const char* ranges, uint8_t byte) {
  for (; *ranges != 0; ranges += 2) {
    if (static_cast<uint8_t>(ranges[0]) <= byte && byte <= static_cast<uint8_t>(ranges[1])) {
      return true;
    }
  }
  return false;
}

// Where option s is not in force for newlines.
Holds ShorthandHolds(int32_t letter, uint8_t byte) {
  switch (letter) {
#define VEKGREP_SHORTHAND(name, letter, ranges, isComplement, newline, words) \
  case letter:                                                                \
    return Answer(InRanges(ranges, byte) != (isComplement));
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

Holds HoldsByte(const ProgramNode& node, uint8_t byte) {
  switch (node.op) {
    case OpChar:
    case OpCodePoint:
      return Answer(node.a == byte);
    case OpString:
      return Answer(LiteralBytes(node).find(static_cast<char>(byte)) != std::string::npos);
    case OpClassRange:
      return Answer(node.a <= byte && byte <= node.b);
    case OpCharType:
      return ShorthandHolds(node.a, byte);
    case OpRange:
      return Answer((node.a <= byte && byte <= node.b) != (node.c != 0));
    case OpCategory:
      return (node.a & ControlMask()) != 0 ? Holds::kUnknown : Answer(node.b != 0);
    case OpScript:
      return Answer(InScript(node, byte) != (node.b != 0));
    default:
      return Holds::kUnknown;
  }
}

// `node` is an OpClass, its items after it. Items of a negated name are not looked at closely.
Holds ClassHoldsByte(const ProgramNode* node, uint8_t byte) {
  Holds any = Holds::kNo;
  for (const ProgramNode* item = node + 1; item <= node + node->b; ++item) {
    const bool ofNegatedName = item->op != OpRange && item->op != OpScript && item->c != 0;
    const Holds one = ofNegatedName ? Holds::kUnknown : HoldsByte(*item, byte);
    any = any == Holds::kYes || one == Holds::kNo ? any : one;
  }
  if (node->a == 0 || any == Holds::kUnknown) {
    return any;
  }
  return any == Holds::kYes ? Holds::kNo : Holds::kYes;
}

bool IsQuantifier(const ProgramNode& node) { return node.op == OpGreedy || node.op == OpLazy; }

bool IsGroup(const ProgramNode& node) { return node.op >= OpLookbehind && node.op <= OpAtomic; }

// Goes through a program with the groups around each record.
class Walk {
 public:
  Walk(const CompiledPattern& compiled, uint8_t endOfLine)
      : program(compiled.Program()),
        count(compiled.Header().nodeCount),
        limit(compiled.Header().matchLimit),
        lineEnd(endOfLine) {
    groups.push_back({count, 1, 0});
    for (int32_t i = 0; i < count; ++i) {
      while (i > groups.back().end) {
        groups.pop_back();
      }
      Look(i);
      i += program[i].op == OpClass ? program[i].b : 0;
    }
  }

  bool KeepsLines() const { return keeps && !(loose && asksForFailure); }
  bool Exact() const { return KeepsLines() && !loose; }

  int32_t LongestLine() const {
    constexpr int64_t kMost = std::numeric_limits<int32_t>::max();
    const int64_t levels = limit / RegExpDepthShare - kSpareLevels - fixedLevels;
    if (levels < 0) {
      return 0;
    }
    return static_cast<int32_t>(levelsPerByte == 0 ? kMost : levels / levelsPerByte - 2);
  }

 private:
  struct Group {
    int32_t end;        // its last record
    int64_t repeats;    // times that it is passed; where it is unbounded, by its bounds alone
    int64_t unbounded;  // groups around it, itself included, that repeat without bound
  };

  // How often a quantifier repeats; 1 where there is none.
  int64_t Repeats(int32_t quantifier) const {
    return quantifier < count && IsQuantifier(program[quantifier]) ? program[quantifier].b : 1;
  }

  void Look(int32_t i) {
    const ProgramNode& node = program[i];
    const Group& around = groups.back();
    (around.unbounded > 0 ? levelsPerByte : fixedLevels) +=
        kLevelsPerRecord * around.repeats * std::max<int64_t>(around.unbounded, 1);
    if (IsGroup(node)) {
      LookAtGroup(i);
    } else if (node.op == OpClass) {
      LookAtCharacter(ClassHoldsByte(&node, lineEnd), Repeats(i + node.b + 1));
    } else if (node.op == OpAssert) {
      LookAtAssertion(node.a);
    } else if (node.op == OpSetOptions) {
      keeps = keeps && SeesLines(node.a);
    } else if (node.op == OpBackref) {
      loose = loose || !NeverEmpty(node.a);
    } else if (node.op != OpAlternative && node.op != OpGroupEnd && !IsQuantifier(node)) {
      LookAtCharacter(HoldsByte(node, lineEnd), Repeats(i + 1));
    }
  }

  void LookAtGroup(int32_t i) {
    const ProgramNode& node = program[i];
    Group group = groups.back();
    const int64_t repeats = Repeats(i + node.b + 2);
    if (repeats >= kOften) {
      ++group.unbounded;
    } else {
      group.repeats = std::min(group.repeats * std::max<int64_t>(repeats, 1), kOften * kOften);
    }
    group.end = i + node.b + 1;
    groups.push_back(group);
    keeps = keeps && node.op != OpConditional && (node.op != OpOptionGroup || SeesLines(node.c));
    asksForFailure = asksForFailure || node.op == OpNegLookahead || node.op == OpNegLookbehind ||
                     node.op == OpAtomic;
  }

  void LookAtCharacter(Holds holds, int64_t repeats) {
    if (holds != Holds::kNo) {
      const Group& around = groups.back();
      loose = true;
      keeps = keeps && around.unbounded == 0 && repeats * around.repeats <= kFewRepetitions;
    }
  }

  // What a word is, is the same whatever ends lines.
  void LookAtAssertion(int32_t letter) {
    const bool ofWords = letter == RegExpAssertWordBoundary || letter == RegExpAssertNoWordBoundary;
    keeps = keeps && (ofWords || (lineEnd == '\n' && AssertsOfLine(letter)));
  }

  // Whether "^", "$" and "." are meant for lines under these options.
  bool SeesLines(int32_t options) const {
    return lineEnd != '\n' || ((options & RegExpOptionM) != 0 && (options & RegExpOptionS) == 0);
  }

  // Whether what a group captured has a byte for certain. At the end of a line, which is no end in
  // a text, a reference to nothing fails.
  bool NeverEmpty(int32_t slot) const {
    const ProgramNode* group = std::find_if(program, program + count, [=](const ProgramNode& node) {
      return node.op == OpCapture && node.c == slot;
    });
    if (group == program + count) {
      return false;
    }
    bool consumes = false;
    for (const ProgramNode* node = group + 1; node <= group + group->b; ++node) {
      const ProgramNode* next = node + 1 + (node->op == OpClass ? node->b : 0);
      if (IsGroup(*node) || node->op == OpAlternative) {
        return false;
      }
      const bool isCharacter = node->op != OpAssert && node->op != OpSetOptions &&
                               node->op != OpBackref && !IsQuantifier(*node);
      consumes = consumes || (isCharacter && !(IsQuantifier(*next) && next->a < 1));
      node = next - 1;
    }
    return consumes;
  }

  const ProgramNode* program;
  const int32_t count;
  const int32_t limit;
  const uint8_t lineEnd;
  std::vector<Group> groups;
  bool keeps = true;
  bool loose = false;           // a match in the text may be none in the line
  bool asksForFailure = false;  // for something not to match, or not in another way
  int64_t fixedLevels = 0;
  int64_t levelsPerByte = 0;
};

}  // namespace

LineSafety JudgeLines(const CompiledPattern& whole, uint8_t lineEnd) {
  const Walk walk(whole, lineEnd);
  return {walk.KeepsLines(), walk.Exact(), walk.LongestLine()};
}

int32_t LongestSafeLine(const CompiledPattern& compiled) {
  return Walk(compiled, '\n').LongestLine();
}

}  // namespace examples::vekgrep
