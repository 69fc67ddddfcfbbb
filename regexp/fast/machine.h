// SPDX-License-Identifier: MIT

// What the operations of a translated program work on while a try is under way: the text, the
// object's slots and groups, the stack of frames, the memory of failures. The registers are apart,
// in the hands of the loop, so that they stay in those of the processor.

#ifndef VEKCH_REGEXP_FAST_MACHINE_H
#define VEKCH_REGEXP_FAST_MACHINE_H

#include <stdint.h>

#include "regexp/fast/fast_matcher.h"
#include "regexp/fast/frame.h"

namespace vekch::regexp::fast {

// What is searched. A try ends at the limit; the bytes from there to the subject's end are seen by
// word boundaries alone.
struct Text {
  const uint8_t* subject;
  const uint8_t* subjectEnd;
  const uint8_t* limit;
};

// What a try is given to work with.
struct Means {
  int32_t allowance;  // levels that the repetitions of groups may take
  int64_t returns;    // to choices
  Frame* frames;
  int32_t frameCount;
  FastResult withoutFrames;
};

// With the memory of failures, or without.
template <bool kRemembers>
struct TryMemory {
  FastCall* call;
  const uint8_t* tryStart;
};
template <>
struct TryMemory<false> {};

template <bool kRemembers>
struct Machine {
  Machine(const FastProgram& program, RegExpState* state, const Text& searched, const Means& means,
          const TryMemory<kRemembers>& failures)
      : memory(failures),
        ops(program.ops),
        allowance(means.allowance),
        slots(program.slots),
        groups(GroupsOf(state)),
        text(searched),
        base(means.frames),
        framesEnd(means.frames + means.frameCount),
        whenFull(means.withoutFrames),
        returnsLeft(means.returns) {}

  // ---- Where to go on: what an operation returns, true but where it fails.

  VEK_INLINE bool GoTo(Registers& r, uint32_t index) const {
    r.op = ops + index;
    return true;
  }

  VEK_INLINE static bool GoAfter(Registers& r, const FastOp& op) {
    r.op = &op + 1;
    return true;
  }

  VEK_INLINE static bool GoOn(Registers& r) { return GoAfter(r, *r.op); }

  VEK_INLINE bool Stop(Registers& r, FastResult result) {
    static constexpr FastOp kStop = {FastCode::kAccept, 0, 0, {}, {}, {}};
    stopped = result;
    r.op = &kStop;
    return true;
  }

  VEK_INLINE bool GiveUp(Registers& r) { return Stop(r, FastResult::kGivesUp); }

  // What is rarely needed is called with the registers aside, so that they are no memory elsewhere.
  template <class Function, class... Arguments>
  VEK_INLINE bool Aside(Registers& r, Function function, Arguments... arguments) {
    Registers copy = r;
    const bool goesOn = function(*this, copy, arguments...);
    r = copy;
    return goesOn;
  }

  // ---- Frames.

  VEK_INLINE bool HasRoom(const Registers& r) const { return r.top < framesEnd; }

  VEK_INLINE Frame* Push(Registers& r, FrameKind kind, const uint8_t* position) const {
    Frame* const frame = r.top++;
    frame->at = position;
    frame->op = static_cast<uint16_t>(r.op - ops);
    frame->kind = kind;
    frame->depth = r.depth;
    return frame;
  }

  // ---- The memory of failures. Of a choice it holds that no way leads on; of a repetition that
  // what follows it does not.

  static int64_t VariantsOf(const FastProgram& program) {
    return int64_t{1} << program.emptyLoopCount;
  }

  int64_t VariantAt(const FastProgram& program, const uint8_t* at) const {
    int64_t variant = 0;
    for (int32_t i = 0; i < program.emptyLoopCount; ++i) {
      const uint32_t start = groups[program.emptyLoops[i]].matching.start;
      variant |= int64_t{start == static_cast<uint32_t>(at - text.subject)} << i;
    }
    return variant;
  }

  // Whether a choice or repetition is known to fail where the registers are, or would be.
  VEK_INLINE bool IsKnown(const FastOp& choice, const uint8_t* at) {
    if constexpr (kRemembers) {
      Reach(at);
      const FastProgram& program = *memory.call->program;
      return memory.call->memory.Knows(&choice - ops, at, VariantsOf(program),
                                       VariantAt(program, at)) &&
             (memory.call->furthest - memory.tryStart) * program.mostCost <= allowance;
    }
    return false;
  }

  // The tries have come to a position.
  VEK_INLINE void Reach(const uint8_t* at) {
    if constexpr (kRemembers) {
      memory.call->furthest = at > memory.call->furthest ? at : memory.call->furthest;
    }
  }

  VEK_INLINE void Remember(const FastOp& choice, const uint8_t* at) {
    if constexpr (kRemembers) {
      const FastProgram& program = *memory.call->program;
      memory.call->memory.Note(&choice - ops, at, VariantsOf(program), VariantAt(program, at));
    }
  }

  const TryMemory<kRemembers> memory;
  const FastOp* const ops;
  const int32_t allowance;
  RegExpFindResult* const slots;
  GroupEntry* const groups;
  const Text text;
  Frame* const base;
  Frame* const framesEnd;
  const FastResult whenFull;  // no frame is left

  Frame* sub = nullptr;  // of the innermost sub-program
  int64_t returnsLeft;
  FastResult stopped = FastResult::kMatch;
};

}  // namespace vekch::regexp::fast

#endif
