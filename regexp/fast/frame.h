// SPDX-License-Identifier: MIT

// Backtrack frames of the fast matcher, what may have to be tried or undone, and its registers,
// where it is.

#ifndef VEKCH_REGEXP_FAST_FRAME_H
#define VEKCH_REGEXP_FAST_FRAME_H

#include <stdint.h>

#include "regexp/fast/fast_program.h"

namespace vekch::regexp::fast {

enum class FrameKind : uint8_t {
  kWays,        // the ways of a choice that are left
  kBytes,       // a run that gives back a byte at a time
  kCharacters,  // a run that gives back a character at a time
  kTakesByte,   // a lazy repetition that takes one more
  kTakesCharacter,
  kSlot,   // undoes a slot
  kStart,  // undoes where a group began
  kLoop,   // undoes that and the counts
  kSub,    // where a sub-program began
};

struct Frame {
  const uint8_t* at;
  union {
    const uint8_t* bound;  // how far a run gives back, or a lazy repetition may go
    int64_t length;        // of a slot
    Frame* around;         // the sub-program around
    int32_t counts[2];     // of a loop; characters that a lazy repetition may take yet
  };
  uint16_t op;
  FrameKind kind;
  uint8_t ways;
  union {
    int32_t depth;   // levels that repetitions have been charged with
    uint32_t start;  // kStart, kLoop: offset where the group began
    int32_t slot;    // kSlot
  };
};
static_assert(sizeof(Frame) == 24);

struct Registers {
  const FastOp* op;
  const uint8_t* at;
  Frame* top;
  int32_t depth;  // levels that repetitions have been charged with
};

}  // namespace vekch::regexp::fast

#endif
