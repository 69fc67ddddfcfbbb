// SPDX-License-Identifier: MIT

// Repeated characters: how many are taken at once, and which are given back, or taken, after a
// failure.

#ifndef VEKCH_REGEXP_FAST_REPEAT_H
#define VEKCH_REGEXP_FAST_REPEAT_H

#include <stdint.h>

#include "regexp/fast/group.h"
#include "regexp/fast/machine.h"
#include "regexp/fast/run_end.h"
#include "unicode/utf8.h"

namespace vekch::regexp::fast {

// ---- As many as possible.

// Goes on where a run has ended that gives nothing back.
template <bool kRemembers>
VEK_INLINE bool EndFinalRun(Machine<kRemembers>& m, Registers& r, const FastOp& run,
                            const uint8_t* begin) {
  if ((run.flags & (kTakesByte | kCaptures)) == 0) {
    return m.GoOn(r);
  }
  const uint8_t* const end = r.at;
  if ((run.flags & kTakesByte) != 0) {
    if (end == m.text.limit || !IsEither(*end, run.end.byte)) {
      return false;
    }
    ++r.at;
  }
  if ((run.flags & kCaptures) != 0 && !Capture(m, r, run.end.slot, run.flags, begin, end)) {
    return m.Stop(r, m.whenFull);
  }
  return m.GoOn(r);
}

// Goes on where a run ends that gives back down to `lowest`.
template <bool kRemembers>
VEK_INLINE bool EndRun(Machine<kRemembers>& m, Registers& r, FrameKind kind, const uint8_t* end,
                       const uint8_t* lowest) {
  if (kRemembers || end > lowest) {
    if (!m.HasRoom(r)) {
      return m.Stop(r, m.whenFull);
    }
    m.Push(r, kind, end)->bound = lowest;
  }
  r.at = end;
  return m.GoOn(r);
}

template <FastCode kCode, bool kRemembers>
VEK_INLINE bool ByteRun(Machine<kRemembers>& m, Registers& r) {
  const FastOp& run = *r.op;
  const uint8_t* const limit = m.text.limit;
  const int64_t room = limit - r.at;
  const uint8_t* const bound = run.run.maximum < room ? r.at + run.run.maximum : limit;
  const uint8_t* end = EndOfRun<kCode>(run, r.at, bound);
  const int64_t length = end - r.at;
  m.Reach(end);
  if (length < run.run.minimum) {
    return false;
  }
  const uint8_t* const begin = r.at;
  if ((run.flags & kGivesNothingBack) != 0) {
    r.at = end;
    return EndFinalRun(m, r, run, begin);
  }
  const uint8_t* const lowest = begin + run.run.minimum;
  while (!CanFollow(run, end, limit) || m.IsKnown(run, end)) {
    if (end == lowest) {
      return false;
    }
    --end;
  }
  if ((run.flags & kCaptures) != 0 && !Capture(m, r, run.end.slot, run.flags, begin, end)) {
    return m.Stop(r, m.whenFull);
  }
  return EndRun(m, r, FrameKind::kBytes, end, lowest);
}

template <bool kRemembers>
VEK_INLINE bool Span(Machine<kRemembers>& m, Registers& r) {
  const FastOp& run = *r.op;
  const uint8_t* const begin = r.at;
  r.at = EndOfRun<FastCode::kSetRun>(run, begin, m.text.limit);
  m.Reach(r.at);
  return r.at - begin >= run.run.minimum && EndFinalRun(m, r, run, begin);
}

template <bool kRemembers>
[[gnu::noinline]] bool CharacterRun(Machine<kRemembers>& m, Registers& r) {
  const FastOp& run = *r.op;
  const uint8_t* const limit = m.text.limit;
  const uint8_t* end = r.at;
  const uint8_t* lowest = end;
  int32_t count = 0;
  const bool isEndless = run.code == FastCode::kOpenSetRun && run.run.maximum == RegExpUnbounded;
  while (count < run.run.maximum && end < limit) {
    if (isEndless && count >= run.run.minimum) {
      end = EndOfMembers(m.ops, run, end, limit);  // whole characters, as all of them are members
      break;
    }
    const int32_t length = LengthAt<FastCode::kOpenSetRun>(m.ops, run, end, limit);
    if (length == 0) {
      break;
    }
    end += length;
    ++count;
    lowest = count <= run.run.minimum ? end : lowest;
  }
  if (count < run.run.minimum) {
    return false;
  }
  const bool isOnly = (run.flags & kGivesNothingBack) != 0;
  while (!CanFollow(run, end, limit) || m.IsKnown(run, end)) {
    if (isOnly || end == lowest) {
      return false;
    }
    end = PreviousUtf8(end, lowest, limit);
  }
  if (isOnly) {
    r.at = end;
    return m.GoOn(r);
  }
  return EndRun(m, r, FrameKind::kCharacters, end, lowest);
}

template <bool kRemembers>
VEK_INLINE bool GiveBackByte(Machine<kRemembers>& m, Registers& r, const FastOp& run,
                             Frame* frame) {
  const uint8_t* end = frame->at;
  const uint8_t* const follow = FollowersOf(run);
  m.Remember(run, end);
  do {
    if (end == frame->bound) {
      --r.top;
      return false;
    }
    --end;
  } while ((follow != nullptr && follow[*end] == 0) || m.IsKnown(run, end));
  if ((run.flags & kCaptures) != 0) {
    const uint8_t* const begin = frame->bound - run.run.minimum;
    m.slots[run.end.slot] = {begin, static_cast<int32_t>(end - begin)};
  }
  r.at = end;
  r.depth = frame->depth;
  frame->at = end;
  r.top -= end == frame->bound && !kRemembers ? 1 : 0;
  return m.GoAfter(r, run);
}

template <bool kRemembers>
[[gnu::noinline]] bool GiveBackCharacter(Machine<kRemembers>& m, Registers& r, Frame* frame) {
  const FastOp& run = m.ops[frame->op];
  const uint8_t* const limit = m.text.limit;
  const uint8_t* end = frame->at;
  m.Remember(run, end);
  do {
    if (end == frame->bound) {
      --r.top;
      return false;
    }
    end = PreviousUtf8(end, frame->bound, limit);
  } while (!CanFollow(run, end, limit) || m.IsKnown(run, end));
  r.at = end;
  r.depth = frame->depth;
  frame->at = end;
  r.top -= end == frame->bound && !kRemembers ? 1 : 0;
  return m.GoAfter(r, run);
}

// ---- As few as possible. The repetition's frame is on top, or there is none.

VEK_INLINE bool Drop(Registers& r, const Frame* frame) {
  r.top -= frame == nullptr ? 0 : 1;
  return false;
}

// Takes bytes until what follows can match.
template <bool kRemembers>
VEK_INLINE bool TakeBytes(Machine<kRemembers>& m, Registers& r, const FastOp& run,
                          const uint8_t* bound, Frame* frame) {
  r.at = SkipBlocks(m.ops, run, r.at, bound);
  while (!CanFollow(run, r.at, m.text.limit) || m.IsKnown(run, r.at)) {
    if (r.at == bound || run.bytes[*r.at] == 0) {
      return Drop(r, frame);
    }
    ++r.at;
  }
  if (r.at == bound || run.bytes[*r.at] == 0 || (run.flags & kGivesNothingBack) != 0) {
    Drop(r, frame);
  } else if (frame != nullptr) {
    frame->at = r.at;
  } else if (m.HasRoom(r)) {
    m.Push(r, FrameKind::kTakesByte, r.at)->bound = bound;
  } else {
    return m.Stop(r, m.whenFull);
  }
  return m.GoAfter(r, run);
}

template <bool kRemembers>
[[gnu::noinline]] bool LazySet(Machine<kRemembers>& m, Registers& r) {
  const FastOp& run = *r.op;
  const uint8_t* const limit = m.text.limit;
  const int64_t room = limit - r.at;
  if (run.run.minimum > room) {
    return false;
  }
  const uint8_t* const bound = run.run.maximum < room ? r.at + run.run.maximum : limit;
  for (int32_t count = 0; count < run.run.minimum; ++count, ++r.at) {
    if (run.bytes[*r.at] == 0) {
      return false;
    }
  }
  return TakeBytes(m, r, run, bound, nullptr);
}

template <bool kRemembers>
VEK_INLINE bool TakeByteMore(Machine<kRemembers>& m, Registers& r, const FastOp& run,
                             Frame* frame) {
  m.Remember(run, frame->at);
  r.at = frame->at + 1;
  r.depth = frame->depth;
  return TakeBytes(m, r, run, frame->bound, frame);
}

template <bool kRemembers>
VEK_INLINE bool TakeCharacters(Machine<kRemembers>& m, Registers& r, const FastOp& run,
                               Frame* frame, int32_t left) {
  const uint8_t* const limit = m.text.limit;
  if (run.code == FastCode::kLazyOpenSet && run.run.maximum == RegExpUnbounded) {
    const uint8_t* const from = r.at;
    r.at = SkipBlocks(m.ops, run, from, limit);
    while (r.at > from && r.at < limit && IsUtf8Continuation(*r.at)) {  // within a character
      --r.at;
    }
  }
  for (; !CanFollow(run, r.at, limit) || m.IsKnown(run, r.at); --left) {
    const int32_t length =
        left > 0 && r.at < limit ? LengthAt<FastCode::kLazyOpenSet>(m.ops, run, r.at, limit) : 0;
    if (length == 0) {
      return Drop(r, frame);
    }
    r.at += length;
  }
  if (frame == nullptr) {
    if (!m.HasRoom(r)) {
      return m.Stop(r, m.whenFull);
    }
    frame = m.Push(r, FrameKind::kTakesCharacter, r.at);
  }
  frame->at = r.at;
  frame->counts[0] = left;
  return m.GoAfter(r, run);
}

template <bool kRemembers>
[[gnu::noinline]] bool LazyCharacter(Machine<kRemembers>& m, Registers& r) {
  const FastOp& run = *r.op;
  const uint8_t* const limit = m.text.limit;
  for (int32_t count = 0; count < run.run.minimum; ++count) {
    const int32_t length =
        r.at < limit ? LengthAt<FastCode::kLazyOpenSet>(m.ops, run, r.at, limit) : 0;
    if (length == 0) {
      return false;
    }
    r.at += length;
  }
  return TakeCharacters(m, r, run, nullptr, run.run.maximum - run.run.minimum);
}

template <bool kRemembers>
[[gnu::noinline]] bool TakeCharacterMore(Machine<kRemembers>& m, Registers& r, Frame* frame) {
  const FastOp& run = m.ops[frame->op];
  const uint8_t* const limit = m.text.limit;
  m.Remember(run, frame->at);
  r.at = frame->at;
  r.depth = frame->depth;
  const int32_t length = frame->counts[0] > 0 && r.at < limit
                             ? LengthAt<FastCode::kLazyOpenSet>(m.ops, run, r.at, limit)
                             : 0;
  if (length == 0) {
    return Drop(r, frame);
  }
  r.at += length;
  return TakeCharacters(m, r, run, frame, frame->counts[0] - 1);
}

}  // namespace vekch::regexp::fast

#endif
