// Literal bytes are gathered into runs of the pattern's text. A run gets its record when anything
// else comes: one byte as OpChar, more as OpString.
//
// The last literal at top level is kept in mind, since every match must contain the literal that a
// pattern ends with: a search looks for it first.

#include "regexp/program_builder.h"

namespace vekch::regexp {

Fault ProgramBuilder::LiteralByte() {
  if (runLength_ == 0) {
    run_ = at_;
  }
  ++runLength_;
  ++at_;
  return kNoFault;
}

void ProgramBuilder::FlushRun() {
  if (runLength_ == 0) {
    return;
  }
  if (runLength_ == 1) {
    Append(OpChar, *run_, 0, options_);
  } else {
    Append(OpString, 0, runLength_, options_, reinterpret_cast<uintptr_t>(run_));
  }
  runLength_ = 0;
  lastOfRun_ = nodeCount_ - 1;
  NoteLiteral();
}

// Makes the last byte of a run a record of its own, for a quantifier that repeats only this byte:
// also where something that compiles to nothing has flushed the run already.
void ProgramBuilder::SplitRun() {
  FlushRun();
  if (nodeCount_ == 0 || Last().op != OpString) {
    return;
  }
  ProgramNode& head = Last();
  const auto* run = reinterpret_cast<const uint8_t*>(static_cast<uintptr_t>(head.ptr));
  const int32_t options = head.c;
  const uint8_t lastByte = run[--head.b];
  if (head.b == 1) {
    head = {OpChar, *run, 0, options, 0};
  }
  Append(OpChar, lastByte, 0, options);
  lastOfRun_ = nodeCount_ - 1;
  NoteLiteral();
}

// The byte that an escape stands for.
void ProgramBuilder::AppendByte(uint8_t byte) {
  Append(OpChar, byte, 0, options_);
  NoteLiteral();
}

void ProgramBuilder::NoteLiteral() {
  if (AtTopLevel() && requiredLiteral_ != kAlternatives) {
    requiredLiteral_ = nodeCount_ - 1;
  }
}

// Only a literal that nothing but its own quantifier follows is where every match ends.
void ProgramBuilder::SettleRequiredLiteral() {
  if (requiredLiteral_ < 0) {
    return;
  }
  for (int32_t i = requiredLiteral_ + 1; i < nodeCount_; ++i) {
    if (!IsQuantifier(nodes_[i])) {
      requiredLiteral_ = kNoLiteral;
      return;
    }
  }
}

}  // namespace vekch::regexp
