// SPDX-License-Identifier: MIT

// Groups: what they capture, the ways between their alternatives, and their repetitions.

#ifndef VEKCH_REGEXP_FAST_GROUP_H
#define VEKCH_REGEXP_FAST_GROUP_H

#include <stdint.h>

#include "regexp/characters/bytes.h"
#include "regexp/fast/machine.h"
#include "regexp/object/record_notes.h"

namespace vekch::regexp::fast {

VEK_INLINE uint32_t OffsetOf(const Text& text, const uint8_t* at) {
  return static_cast<uint32_t>(at - text.subject);
}

// ---- What is captured.

// Sets a slot; false where that would have to be undone and no frame is left.
template <bool kRemembers>
VEK_INLINE bool Capture(const Machine<kRemembers>& m, Registers& r, int32_t index, uint32_t flags,
                        const uint8_t* begin, const uint8_t* end) {
  RegExpFindResult& slot = m.slots[index];
  if ((flags & kIsUndone) != 0 && r.top > m.base) {
    if (!m.HasRoom(r)) {
      return false;
    }
    Frame* const frame = m.Push(r, FrameKind::kSlot, slot.pointer);
    frame->length = slot.length;
    frame->slot = index;
  }
  slot.pointer = begin;
  slot.length = static_cast<int32_t>(end - begin);
  return true;
}

template <bool kRemembers>
VEK_INLINE bool Open(Machine<kRemembers>& m, Registers& r) {
  GroupEntry::Matching& entry = m.groups[r.op->serial].matching;
  if ((r.op->flags & kIsUndone) != 0 && r.top > m.base) {
    if (!m.HasRoom(r)) {
      return m.Stop(r, m.whenFull);
    }
    m.Push(r, FrameKind::kStart, r.at)->start = entry.start;
  }
  entry.start = OffsetOf(m.text, r.at);
  return m.GoOn(r);
}

template <bool kRemembers>
VEK_INLINE bool Close(Machine<kRemembers>& m, Registers& r) {
  const uint8_t* const start = m.text.subject + m.groups[r.op->serial].matching.start;
  return Capture(m, r, r.op->end.slot, r.op->flags, start, r.at) ? m.GoOn(r)
                                                                 : m.Stop(r, m.whenFull);
}

template <bool kRemembers>
[[gnu::noinline]] bool Copy(Machine<kRemembers>& m, Registers& r) {
  const ProgramNode& record = *r.op->record;
  const RegExpFindResult& slot = m.slots[record.a];
  const bool caseless = IsCaseless(OptionsOf(record));
  return r.at < m.text.limit && slot.length >= 0 && slot.length <= m.text.limit - r.at &&
         SameBytes(r.at, slot.pointer, slot.length, caseless) && (r.at += slot.length, m.GoOn(r));
}

// ---- Ways.

template <bool kRemembers>
VEK_INLINE bool Choose(Machine<kRemembers>& m, Registers& r) {
  const FastOp& choice = *r.op;
  uint32_t ways = (1U << choice.ways.count) - 1;
  if (r.at == m.text.limit) {
    ways = choice.ways.atEnd;
  } else if (choice.waysOf != nullptr) {
    ways = choice.waysOf[*r.at];
  }
  if (ways == 0) {
    return false;
  }
  const uint32_t others = ways & (ways - 1);
  if (others != 0) {
    if (m.IsKnown(choice, r.at)) {
      return false;
    }
    if (!m.HasRoom(r)) {
      return m.Stop(r, m.whenFull);
    }
    m.Push(r, FrameKind::kWays, r.at)->ways = static_cast<uint8_t>(others);
  }
  return m.GoTo(r, choice.targets[kernels::LowestBit(ways)]);
}

// ---- Repetitions.

// Puts aside what a loop is about to change.
template <bool kRemembers>
VEK_INLINE bool KeepLoop(Machine<kRemembers>& m, Registers& r, const GroupEntry::Matching& entry) {
  if (r.top > m.base) {
    if (!m.HasRoom(r)) {
      m.Stop(r, m.whenFull);
      return false;
    }
    Frame* const frame = m.Push(r, FrameKind::kLoop, r.at);
    frame->start = entry.start;
    frame->counts[0] = entry.minimum;
    frame->counts[1] = entry.maximum;
  }
  return true;
}

template <bool kRemembers>
[[gnu::noinline]] bool EnterLoop(Machine<kRemembers>& m, Registers& r) {
  GroupEntry::Matching& entry = m.groups[r.op->serial].matching;
  if (!KeepLoop(m, r, entry)) {
    return true;
  }
  entry.minimum = r.op->loop.minimum;
  entry.maximum = r.op->loop.maximum;
  entry.start = OffsetOf(m.text, r.at);
  return m.GoOn(r);
}

template <bool kRemembers>
VEK_INLINE bool EndRepetition(Machine<kRemembers>& m, Registers& r) {
  const FastOp& loop = *r.op;
  r.depth += loop.loop.cost;
  if (r.depth > m.allowance) {
    return m.GiveUp(r);
  }
  GroupEntry::Matching& entry = m.groups[loop.serial].matching;
  const bool isEmpty = entry.start == OffsetOf(m.text, r.at);
  if (!KeepLoop(m, r, entry)) {
    return true;
  }
  entry.start = OffsetOf(m.text, r.at);
  if ((loop.flags & kIsCounted) != 0) {
    --entry.minimum;
    --entry.maximum;
    if (!isEmpty && entry.maximum > 0 && entry.minimum > 0) {
      return m.GoTo(r, loop.loop.again);
    }
    return m.GoTo(r, isEmpty || entry.maximum < 1 ? loop.loop.exit : loop.loop.againOrExit);
  }
  return m.GoTo(r, isEmpty ? loop.loop.exit : loop.loop.againOrExit);
}

}  // namespace vekch::regexp::fast

#endif
