// SPDX-License-Identifier: MIT

// A loop over the operations, and a stack of frames for what may have to be tried or undone. A
// frame is put aside only where the next byte leaves more than one way open, and an undoing only
// while there is such a frame.

#ifndef VEKCH_REGEXP_FAST_MACHINE_LOOP_H
#define VEKCH_REGEXP_FAST_MACHINE_LOOP_H

#include <stdint.h>

#include "regexp/characters/bytes.h"
#include "regexp/fast/assertions.h"
#include "regexp/fast/fixed_bytes.h"
#include "regexp/fast/group.h"
#include "regexp/fast/machine.h"
#include "regexp/fast/repeat.h"
#include "regexp/fast/run_end.h"
#include "regexp/fast/sub_program.h"

namespace vekch::regexp::fast {

// One operation; false where it fails. Sets `isOver` at the end.
template <bool kRemembers>
VEK_INLINE bool Step(Machine<kRemembers>& m, Registers& r, bool* isOver) {
  const FastOp& now = *r.op;
  const uint8_t* const limit = m.text.limit;
  switch (now.code) {
    case FastCode::kByte:
      return r.at < limit && IsEither(*r.at, now.pair) && (++r.at, m.GoOn(r));
    case FastCode::kBytes:
      return limit - r.at >= now.length && SameBytes(r.at, now.bytes, now.length, false) &&
             (r.at += now.length, m.GoOn(r));
    case FastCode::kCaselessBytes:
      return limit - r.at >= now.length && SameBytes(r.at, now.bytes, now.length, true) &&
             (r.at += now.length, m.GoOn(r));
    case FastCode::kAnyByte:
      return r.at < limit && (++r.at, m.GoOn(r));
    case FastCode::kSet:
      return r.at < limit && now.bytes[*r.at] != 0 && (++r.at, m.GoOn(r));
    case FastCode::kOpenSet:
    case FastCode::kCharacter: {
      const int32_t length =
          r.at < limit ? LengthAt<FastCode::kOpenSet>(m.ops, now, r.at, limit) : 0;
      return length > 0 && (r.at += length, m.GoOn(r));
    }
    case FastCode::kCopy:
      return m.Aside(r, Copy<kRemembers>);
    case FastCode::kByteRun:
      return ByteRun<FastCode::kByteRun>(m, r);
    case FastCode::kAnyRun:
      return ByteRun<FastCode::kAnyRun>(m, r);
    case FastCode::kSetRun:
      return ByteRun<FastCode::kSetRun>(m, r);
    case FastCode::kSetSpan:
      return Span(m, r);
    case FastCode::kOptionalSet:
      r.at += r.at < limit && now.bytes[*r.at] != 0 ? 1 : 0;
      return m.GoOn(r);
    case FastCode::kOpenSetRun:
    case FastCode::kCharacterRun:
      return m.Aside(r, CharacterRun<kRemembers>);
    case FastCode::kLazySet:
      return m.Aside(r, LazySet<kRemembers>);
    case FastCode::kLazyOpenSet:
    case FastCode::kLazyCharacter:
      return m.Aside(r, LazyCharacter<kRemembers>);
    case FastCode::kOpen:
      return Open(m, r);
    case FastCode::kClose:
      return Close(m, r);
    case FastCode::kChoice:
      return Choose(m, r);
    case FastCode::kRepeat:
      r.depth += now.ways.cost;
      return r.depth > m.allowance ? m.GiveUp(r) : Choose(m, r);
    case FastCode::kEnterLoop:
      return m.Aside(r, EnterLoop<kRemembers>);
    case FastCode::kLoop:
      return EndRepetition(m, r);
    case FastCode::kAtStart:
      return r.at == m.text.subject && m.GoOn(r);
    case FastCode::kAtEnd:
      return IsAtEnd(m.text, r.at) && m.GoOn(r);
    case FastCode::kFixedTwo:
      return Fixed<2>(m, r);
    case FastCode::kFixedFour:
      return Fixed<4>(m, r);
    case FastCode::kFixedEight:
      return Fixed<8>(m, r);
    case FastCode::kFixed:
      return Fixed<kernels::kBlock>(m, r);
    case FastCode::kAssert:
      return Holds(m.text, r.at, now) && m.GoOn(r);
    case FastCode::kLookaround:
    case FastCode::kAtomic:
      return m.Aside(r, EnterSub<kRemembers>);
    case FastCode::kSubEnd:
      return m.Aside(r, LeaveSub<kRemembers>);
    case FastCode::kJump:
      return m.GoTo(r, now.next);
    case FastCode::kAccept:
      return *isOver = true;
  }
  __builtin_unreachable();  // those are all
}

// Goes back to the last frame with another way, undoing what lies between; false if there is none.
template <bool kRemembers>
VEK_INLINE bool Resume(Machine<kRemembers>& m, Registers& r) {
  if (--m.returnsLeft < 0) {
    return m.Stop(r, FastResult::kExhausted);
  }
  for (;;) {
    if (r.top == m.base) {
      return false;
    }
    Frame& frame = r.top[-1];
    const FastOp& source = m.ops[frame.op];
    switch (frame.kind) {
      case FrameKind::kWays: {
        r.at = frame.at;
        r.depth = frame.depth;
        const uint32_t ways = frame.ways;
        if (kRemembers && ways == 0) {
          m.Remember(source, r.at);
          --r.top;
          break;
        }
        const uint32_t others = ways & (ways - 1);
        frame.ways = static_cast<uint8_t>(others);
        r.top -= others == 0 && !kRemembers ? 1 : 0;
        return m.GoTo(r, source.targets[kernels::LowestBit(ways)]);
      }
      case FrameKind::kBytes:
        if (GiveBackByte(m, r, source, &frame)) {
          return true;
        }
        break;
      case FrameKind::kCharacters:
        if (m.Aside(r, GiveBackCharacter<kRemembers>, &frame)) {
          return true;
        }
        break;
      case FrameKind::kTakesByte:
        if (TakeByteMore(m, r, source, &frame)) {
          return true;
        }
        break;
      case FrameKind::kTakesCharacter:
        if (m.Aside(r, TakeCharacterMore<kRemembers>, &frame)) {
          return true;
        }
        break;
      case FrameKind::kSlot:
        m.slots[frame.slot] = {frame.at, static_cast<int32_t>(frame.length)};
        --r.top;
        break;
      case FrameKind::kStart:
        m.groups[source.serial].matching.start = frame.start;
        --r.top;
        break;
      case FrameKind::kLoop: {
        GroupEntry::Matching& entry = m.groups[source.serial].matching;
        entry.start = frame.start;
        entry.minimum = frame.counts[0];
        entry.maximum = frame.counts[1];
        --r.top;
        break;
      }
      case FrameKind::kSub:
        m.sub = frame.around;
        --r.top;
        if ((source.flags & kIsNegative) != 0 && source.code == FastCode::kLookaround) {
          r.at = frame.at;
          r.depth = frame.depth;
          return m.GoAfter(r, source);
        }
        break;
    }
  }
}

// A try from one position; on kMatch the slots hold the match.
template <bool kRemembers>
VEK_INLINE FastResult Run(Machine<kRemembers>& m, const uint8_t* start, int32_t entry) {
  Registers r = {m.ops + entry, start, m.base, 0};
  for (bool isOver = false; !isOver;) {
    if (!Step(m, r, &isOver) && !Resume(m, r)) {
      return FastResult::kFail;
    }
  }
  if (m.stopped != FastResult::kMatch) {
    return m.stopped;
  }
  m.slots[0].pointer = start;
  m.slots[0].length = static_cast<int32_t>(r.at - start);
  return FastResult::kMatch;
}

}  // namespace vekch::regexp::fast

#endif
