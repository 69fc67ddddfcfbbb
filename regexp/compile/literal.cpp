// SPDX-License-Identifier: MIT

// Literal bytes are gathered into runs of the pattern's text. A run gets its record when anything
// else comes: one byte as OpChar, more as OpString.
//
// The last literal at top level is kept in mind, since every match must contain the suffix literal,
// which ends the pattern: a search looks for it first.

#include "regexp/compile/program_builder.h"

namespace vekch::regexp {

Fault ProgramBuilder::LiteralByte() {
  if (runLength == 0) {
    run = at;
  }
  ++runLength;
  ++at;
  return kNoFault;
}

void ProgramBuilder::FlushRun() {
  if (runLength == 0) {
    return;
  }
  if (runLength == 1) {
    Append(OpChar, *run, 0, options);
  } else {
    Append(OpString, 0, runLength, options, reinterpret_cast<uintptr_t>(run));
  }
  runLength = 0;
  lastOfRun = nodeCount - 1;
  NoteLiteral();
}

// Makes the last byte of a run a record of its own, for a quantifier that repeats only this byte:
// also where something that compiles to nothing has flushed the run already.
void ProgramBuilder::SplitRun() {
  FlushRun();
  if (nodeCount == 0 || Last().op != OpString) {
    return;
  }
  ProgramNode& head = Last();
  const uint8_t* text = RunOf(head);
  const uint8_t lastByte = text[--head.b];
  if (head.b == 1) {
    head = {OpChar, *text, 0, head.c, 0};
  }
  Append(OpChar, lastByte, 0, head.c);
  lastOfRun = nodeCount - 1;
  NoteLiteral();
}

// The byte that an escape stands for.
void ProgramBuilder::AppendByte(uint8_t byte) {
  Append(OpChar, byte, 0, options);
  NoteLiteral();
}

void ProgramBuilder::NoteLiteral() {
  if (AtTopLevel() && suffixLiteral != kAlternatives) {
    suffixLiteral = nodeCount - 1;
  }
}

// Only a literal that nothing but its own quantifier follows is where every match ends.
void ProgramBuilder::SettleSuffixLiteral() {
  if (suffixLiteral < 0) {
    return;
  }
  for (int32_t i = suffixLiteral + 1; i < nodeCount; ++i) {
    if (!IsQuantifier(nodes[i])) {
      suffixLiteral = kNoLiteral;
      return;
    }
  }
}

}  // namespace vekch::regexp
