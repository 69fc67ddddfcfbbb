// SPDX-License-Identifier: MIT
#include "explain.h"

#include <cstdio>
#include <string_view>
#include <vector>

#include "vekch/vekch.h"

namespace examples::vekgrep {
namespace {

struct Operation {
  const char* name;
  std::string_view a;
  std::string_view b;
  std::string_view c;
  std::string_view ptr;
};

#define VEKGREP_OPERATION(name, width, zeroWidth, a, b, c, ptr) {#name, a, b, c, ptr},
constexpr Operation kOperations[] = {VEKCH_REGEXP_OPERATIONS(VEKGREP_OPERATION)};
#undef VEKGREP_OPERATION

std::string Hex(uint32_t value) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%02X", value);
  return text;
}

std::string Character(int32_t value) {
  return value > ' ' && value < 0x7F ? std::string{'\'', static_cast<char>(value), '\''}
                                     : Hex(static_cast<uint32_t>(value));
}

std::string OptionLetters(int32_t options) {
  std::string letters;
  for (const char letter : {'s', 'm', 'i', 'x', 'g'}) {
    if ((options & 1) != 0) {
      letters += letter;
    }
    options >>= 1;
  }
  return letters;
}

std::string Quoted(const char* bytes, int32_t length) {
  std::string text = "\"";
  for (int32_t i = 0; i < length; ++i) {
    const auto byte = static_cast<unsigned char>(bytes[i]);
    text += byte < ' ' || byte == 0x7F ? "<" + Hex(byte) + ">" : std::string(1, bytes[i]);
  }
  return text + "\"";
}

bool IsCharacter(std::string_view label) {
  return label == "byte" || label == "letter" || label == "lowest" || label == "highest" ||
         label == "code point";
}

// "" where there is nothing to report.
std::string Operand(std::string_view label, int32_t value) {
  const bool onlyIfSet = label == "options" || label == "negated" || label == "flag";
  if (label.empty() || (onlyIfSet && value == 0)) {
    return "";
  }
  const std::string text = IsCharacter(label)         ? Character(value)
                           : label == "options"       ? OptionLetters(value)
                           : label == "mask"          ? Hex(static_cast<uint32_t>(value))
                           : value == RegExpUnbounded ? "unbounded"
                                                      : std::to_string(value);
  return " " + std::string(label) + "=" + text;
}

// What a shorthand or an assertion means, "" for any other record.
std::string Words(const ProgramNode& node) {
  struct Meaning {
    uint32_t op;
    int32_t letter;
    const char* words;
  };
#define VEKGREP_SHORTHAND(name, letter, ranges, isComplement, newline, words) \
  {OpCharType, letter, words},
#define VEKGREP_ASSERTION(name, letter, isOfLine, words) {OpAssert, letter, words},
  constexpr Meaning kMeanings[] = {VEKCH_REGEXP_SHORTHANDS(VEKGREP_SHORTHAND)
                                       VEKCH_REGEXP_ASSERTIONS(VEKGREP_ASSERTION)};
#undef VEKGREP_ASSERTION
#undef VEKGREP_SHORTHAND
  for (const Meaning& meaning : kMeanings) {
    if (meaning.op == node.op && meaning.letter == node.a) {
      return std::string("  (") + meaning.words + ")";
    }
  }
  return "";
}

bool IsOpening(uint32_t op) { return op >= OpLookbehind && op <= OpAtomic; }

std::string DescribeRecord(const ProgramNode& node, bool isItem) {
  const uint32_t index = node.op - RegExpFirstOperation;
  if (index >= RegExpOperationCount) {
    return "unknown operation " + Hex(node.op);
  }
  const Operation& operation = kOperations[index];
  std::string text = operation.name;
  text += Operand(operation.a, node.a);
  text += Operand(operation.b, node.b);
  text += Operand(isItem && node.op <= OpCharType ? "negated" : operation.c, node.c);
  if (node.op == OpString) {
    text += " " + Quoted(reinterpret_cast<const char*>(static_cast<uintptr_t>(node.ptr)), node.b);
  } else if (isItem && node.c != 0 && node.ptr != 0 && node.op != OpScript) {
    text += " together=" + std::to_string(node.ptr);
  }
  return text + Words(node);
}

bool IsQuantifier(const ProgramNode& node) { return node.op == OpGreedy || node.op == OpLazy; }

// What keeps a record from the fast matcher, or null.
const char* Obstacle(const ProgramNode& node, bool isQuantified, bool isCaseless) {
  switch (node.op) {
    case OpConditional:
      return "a conditional group";
    case OpGrapheme:
      return "\\X";
    case OpBackref:
      return isQuantified ? "a repeated back-reference" : nullptr;
    case OpAtomic:
      return isQuantified ? "a repeated atomic group" : nullptr;
    case OpLookahead:
    case OpNegLookahead:
    case OpLookbehind:
    case OpNegLookbehind:
      return isQuantified ? "a repeated look-around" : nullptr;
    case OpCodePoint:
      return isCaseless                         ? "a code point in both cases"
             : node.a >= 0x80 && node.a < 0x100 ? "a code point from 0x80 to 0xFF"
                                                : nullptr;
    default:
      return nullptr;
  }
}

}  // namespace

std::string LeftToExact(const RegExpState& state) {
  constexpr int32_t kMostRecords = 400;
  const auto* nodes = reinterpret_cast<const ProgramNode*>(&state + 1);
  if (state.nodeCount > kMostRecords) {
    return "more than 400 records";
  }
  if (state.nodeCount > 0 && nodes[0].op == OpAlternative) {
    return "nothing before the first |";
  }
  std::vector<bool> isClosed(static_cast<size_t>(state.captureCount));
  std::vector<size_t> slots;  // of the groups that are open, 0 for none
  int32_t options = static_cast<int32_t>(state.compileFlags);
  for (int32_t i = 0; i < state.nodeCount; ++i) {
    const ProgramNode& node = nodes[i];
    const int32_t after = i + (IsOpening(node.op)   ? node.b + 2
                               : node.op == OpClass ? node.b + 1
                                                    : 1);
    const bool isQuantified = after < state.nodeCount && IsQuantifier(nodes[after]);
    const auto group = static_cast<size_t>(node.a);
    if (node.op == OpBackref && node.a < state.captureCount && !isClosed[group]) {
      return "a reference to a group before its end";
    }
    if (const char* obstacle = Obstacle(node, isQuantified, (options & RegExpOptionI) != 0)) {
      return obstacle;
    }
    if (IsOpening(node.op)) {
      slots.push_back(node.op == OpCapture ? static_cast<size_t>(node.c) : 0);
    } else if (node.op == OpGroupEnd) {
      isClosed[slots.back()] = slots.back() != 0;
      slots.pop_back();
    }
    i = node.op == OpClass ? after - 1 : i;
    options = node.op == OpSetOptions                             ? node.a
              : node.op == OpOptionGroup                          ? node.c
              : node.op == OpAlternative || node.op == OpGroupEnd ? node.b
                                                                  : options;
  }
  return "";
}

std::string ListProgram(const RegExpState& state) {
  const auto* nodes = reinterpret_cast<const ProgramNode*>(&state + 1);
  std::string listing;
  size_t depth = 0;
  int32_t itemsEnd = 0;
  for (int32_t i = 0; i < state.nodeCount; ++i) {
    const ProgramNode& node = nodes[i];
    depth -= node.op == OpGroupEnd && depth > 0 ? 1 : 0;
    const bool isItem = i < itemsEnd;
    char number[16];
    std::snprintf(number, sizeof number, "%4d  ", i);
    listing += number + std::string(2 * (depth + (isItem ? 1 : 0)), ' ');
    listing += DescribeRecord(node, isItem) + "\n";
    depth += IsOpening(node.op) ? 1 : 0;
    itemsEnd = node.op == OpClass ? i + node.b + 1 : itemsEnd;
  }
  return listing + "   search mode " + std::to_string(state.searchMode) + ", required literal " +
         std::to_string(state.requiredLiteralIndex) + ", captures " +
         std::to_string(state.captureCount) + "\n";
}

}  // namespace examples::vekgrep
