// SPDX-License-Identifier: MIT

// Tries: each first lightly, with few returns to choices and frames; then hard, with the memory of
// failures and all that the call may take.

#include "regexp/fast/fast_matcher.h"

#include "regexp/fast/machine.h"
#include "regexp/fast/machine_loop.h"
#include "regexp/fast/next_start.h"
#include "strings/kernels/taken.h"

namespace vekch::regexp {
namespace {

using fast::Frame;
using fast::Machine;
using fast::TryMemory;

constexpr int32_t kFirstFrames = 60;
constexpr int32_t kFewFrames = 1000;
constexpr int32_t kManyFrames = 6000;
// Returns to choices after which a try is done again with the memory, once there is something in
// it.
constexpr int32_t kSomeReturns = 64;
constexpr int32_t kFirstReturns = 500;
constexpr int64_t kForgetfulReturns = 20000;

void ClearSlots(RegExpState* state) {
  auto* const slots = SlotsOf(state);
  for (int32_t slot = 1; slot < state->captureCount; ++slot) {
    slots[slot] = {nullptr, -1};
  }
}

fast::Text TextOf(const FastCall& call, const uint8_t* limit) {
  return {call.subject, call.subjectEnd, limit};
}

VEK_INLINE FastResult TryLightly(FastCall* call, const uint8_t* start, const uint8_t* limit,
                                 Frame* frames) {
  if (call->program->clearsSlots) {
    ClearSlots(call->state);
  }
  const int32_t most = call->memory.IsBegun() ? kSomeReturns : call->lightReturns;
  Machine<false> machine(*call->program, call->state, TextOf(*call, limit),
                         {call->allowance, most, frames, kFewFrames, FastResult::kExhausted}, {});
  return fast::Run(machine, start, call->program->entry);
}

template <bool kRemembers>
FastResult TryHard(FastCall* call, const uint8_t* start, const uint8_t* limit, int32_t mostFrames,
                   Frame* frames, const TryMemory<kRemembers>& memory) {
  ClearSlots(call->state);
  // What is remembered may not serve where the depth could run out; the exact matcher knows how
  // much of it each failure took.
  const bool mayForget = kRemembers &&
                         (limit - start) * call->program->mostCost > call->allowance &&
                         call->returnsAllowed > kForgetfulReturns;
  const int64_t most = mayForget ? kForgetfulReturns : call->returnsAllowed;
  Machine<kRemembers> machine(*call->program, call->state, TextOf(*call, limit),
                              {call->allowance, most, frames, mostFrames, FastResult::kGivesUp},
                              memory);
  const FastResult result = fast::Run(machine, start, call->program->entry);
  call->returnsAllowed -= most - machine.returnsLeft;
  return mayForget && result == FastResult::kExhausted ? FastResult::kGivesUp : result;
}

template <int32_t kMostFrames>
[[gnu::noinline]] FastResult TryWith(FastCall* call, const uint8_t* start, const uint8_t* limit) {
  Frame frames[kMostFrames];
  return call->program->remembers
             ? TryHard<true>(call, start, limit, kMostFrames, frames, {call, start})
             : TryHard<false>(call, start, limit, kMostFrames, frames, {});
}

// A try that has come back to its choices too often, or has used up its frames: with the memory,
// and with more frames where the limit's share of the stack allows them.
[[gnu::noinline]] FastResult TryAgain(FastCall* call, const uint8_t* start, const uint8_t* limit) {
  call->returnsAllowed -= call->lightReturns;
  if (call->program->remembers && (!call->memory.IsBegun() || !call->memory.Reaches(start))) {
    VEKCH_TAKEN("memory of failures");
    call->memory.Begin(*call->program, FreeRoom(call->state), start);
    call->furthest = start;
  }
  constexpr int32_t kStackOfLevel = 72;  // that the header of the search promises to keep to
  constexpr int32_t kLevelsForMany =
      kManyFrames * static_cast<int32_t>(sizeof(Frame)) / kStackOfLevel;
  if (call->state->matchLimit / RegExpDepthShare < kLevelsForMany) {
    return TryWith<kFewFrames>(call, start, limit);
  }
  VEKCH_TAKEN("many frames");
  return TryWith<kManyFrames>(call, start, limit);
}

}  // namespace

FastResult MatchFirst(const FastProgram& program, RegExpState* state, const uint8_t* subject,
                      int32_t length) {
  const uint8_t* const end = subject + length;
  const int32_t allowance = AllowanceOf(program, *state);
  if (allowance < 0) {
    return FastResult::kGivesUp;
  }
  if (!fast::CanBegin(program, subject, end)) {
    return FastResult::kFail;
  }
  if (program.clearsSlots) {
    ClearSlots(state);
  }
  Frame frames[kFirstFrames];
  Machine<false> machine(program, state, {subject, end, end},
                         {allowance, kFirstReturns, frames, kFirstFrames, FastResult::kExhausted},
                         {});
  return fast::Run(machine, subject, program.entryAtStart);
}

FastResult MatchFast(FastCall* call, const uint8_t* start, const uint8_t* limit) {
  if (!fast::CanBegin(*call->program, start, limit)) {
    return FastResult::kFail;
  }
  Frame frames[kFewFrames];
  const FastResult result = TryLightly(call, start, limit, frames);
  return result == FastResult::kExhausted ? TryAgain(call, start, limit) : result;
}

FastResult FindFast(FastCall* call, const uint8_t* start, const uint8_t* limit) {
  Frame frames[kFewFrames];
  for (const uint8_t* at = fast::NextStart(*call, start, limit, start); at != nullptr;
       at = fast::NextStart(*call, start, limit, at + 1)) {
    FastResult result = TryLightly(call, at, limit, frames);
    if (result == FastResult::kExhausted) {
      result = TryAgain(call, at, limit);
    }
    if (result != FastResult::kFail) {
      return result;
    }
  }
  return FastResult::kFail;
}

}  // namespace vekch::regexp
