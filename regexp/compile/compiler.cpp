// SPDX-License-Identifier: MIT

// The compiler's stages, in the order in which they run.
//
//   1  the anchor before a leading ".*" or ".+"
//   2  the options string
//   3  the pre-scan (prescan.cpp)
//   4  the pass that builds the program (program_builder.h)
//   5  the suffix literal, which every match ends with
//   6  the copies of the literals
//   7  the search mode

#include "regexp/compile/compiler.h"

#include "regexp/compile/pattern_text.h"
#include "regexp/compile/prescan.h"
#include "regexp/compile/program_builder.h"
#include "regexp/object/record.h"
#include "strings/kernels/block_kernels.h"

namespace vekch::regexp {
namespace {

// Stage 1. Whether the pattern begins with a greedy run of any characters: what it matches can only
// begin where a line does, since a match from further right would have begun there as well.
bool LeadsWithWildcard(const uint8_t* pattern) {
  if (StartsWith(pattern, ".*") || StartsWith(pattern, ".+")) {
    return pattern[2] != '?';
  }
  return StartsWith(pattern, "(?:.*)") || StartsWith(pattern, "(?:.+)");
}

// Stage 2. The option bits of the letters, or -1 if one of them is none.
int32_t ReadOptions(const uint8_t* letters) {
  int32_t options = 0;
  for (; letters != nullptr && *letters != 0; ++letters) {
    const int32_t bit = *letters == 'g' ? RegExpOptionG : InlineOption(*letters);
    if (bit == 0) {
      return -1;
    }
    options |= bit;
  }
  return options;
}

// Stage 7.
bool IsPlainAlternation(const ProgramNode* nodes, int32_t count) {
  if (count < 3 || count % 2 == 0) {
    return false;
  }
  for (int32_t i = 0; i < count; ++i) {
    if (i % 2 == 0 ? !IsLiteral(nodes[i]) : nodes[i].op != OpAlternative) {
      return false;
    }
  }
  return true;
}

bool BeginsWithPrefixLiteral(const ProgramNode* nodes, int32_t count) {
  if (count == 0 || !IsLiteral(nodes[0])) {
    return false;
  }
  // A lazy quantifier does not count here, whatever its minimum.
  if (count >= 2 && nodes[1].op == OpGreedy && nodes[1].a < 1) {
    return false;
  }
  for (int32_t i = 0; i < count; ++i) {
    if (nodes[i].op == OpAlternative) {
      return false;
    }
  }
  return true;
}

int32_t SearchMode(const ProgramNode* nodes, int32_t count, int32_t suffixLiteral) {
  if (suffixLiteral != kAlternatives && BeginsWithPrefixLiteral(nodes, count)) {
    return 1;
  }
  return IsPlainAlternation(nodes, count) ? 2 : 0;
}

}  // namespace

Fault Compile(const uint8_t* pattern, uint32_t length, const uint8_t* options, RegExpState* state) {
  ProgramNode* nodes = ProgramOf(state);
  int32_t nodeCount = 0;
  if (LeadsWithWildcard(pattern)) {
    nodes[nodeCount++] = {OpAssert, RegExpAssertLineStart, 0, 0, 0};
  }

  const int32_t compileFlags = ReadOptions(options);
  if (compileFlags < 0) {
    return {StatusRegExpOptionError, pattern};
  }

  int32_t captureCount = 0;
  const Fault structure = Prescan(pattern, compileFlags, &captureCount);
  if (Failed(structure)) {
    return structure;
  }
  state->captureCount = captureCount;
  state->regExpTag = RegExpTag;
  state->compileFlags = static_cast<uint32_t>(compileFlags);
  state->characterFormat = 1;

  ProgramBuilder builder(pattern, pattern + length, state, nodeCount);
  const Fault construct = builder.Run();
  if (Failed(construct)) {
    return construct;
  }
  builder.Finish();
  state->nodeCount = builder.NodeCount();
  state->requiredLiteralIndex = builder.SuffixLiteral();
  state->matchLimit = RegExpDefaultMatchLimit;
  state->searchMode = SearchMode(nodes, state->nodeCount, state->requiredLiteralIndex);
  return kNoFault;
}

// ---- Stages 4 to 6: what is not a matter of one construct.

Fault ProgramBuilder::Run() {
  while (*at != 0) {
    const Fault fault = Construct();
    if (Failed(fault)) {
      return fault;
    }
  }
  FlushRun();
  if (!AtTopLevel()) {
    return Fail(StatusRegExpSyntaxError, at);
  }
  SettleSuffixLiteral();
  return kNoFault;
}

Fault ProgramBuilder::Construct() {
  const bool extended = (options & RegExpOptionX) != 0;
  const uint8_t byte = *at;
  if (extended && (IsPatternSpace(byte) || byte == '#')) {
    FlushRun();
    at = byte == '#' ? SkipLine(at) : at + 1;
    return kNoFault;
  }
  switch (byte) {
    case '^':
    case '$':
      FlushRun();
      Append(OpAssert, byte);
      ++at;
      return kNoFault;
    case '.':
      return CharType(byte, at + 1);
    case '[':
      return BracketClass();
    case '(':
      return OpenBracket();
    case ')':
      return CloseGroup();
    case '|':
      return Alternative();
    case '\\':
      return Escape();
    default:
      return IsQuantifierAt(at) ? Quantifier() : LiteralByte();
  }
}

void ProgramBuilder::Finish() {
  auto* free = reinterpret_cast<uint8_t*>(nodes + nodeCount);
  for (int32_t i = 0; i < nodeCount; ++i) {
    ProgramNode& node = nodes[i];
    if (node.op == OpString) {
      kernels::Copy(RunOf(node), free, node.b);
      node.ptr = reinterpret_cast<uintptr_t>(free);
      free += node.b;
    }
  }
}

}  // namespace vekch::regexp
