// SPDX-License-Identifier: MIT

// Groups and conditionals.
//
// Alternatives are tried in order. At the end of a repetition the group has captured what that
// repetition consumed. If it consumed nothing, or was the last one allowed, the match goes on
// behind the group; otherwise a greedy group tries a further repetition first and then what is
// behind it, once enough repetitions are done, and a lazy group the other way round.

#include "regexp/match/matcher.h"

namespace vekch::regexp {

// Puts aside what a group's records are about to change.
void Matcher::SaveGroup(const ProgramNode& opening, Frame* frame) {
  const GroupEntry::Matching& entry = EntryOf(opening);
  Frame::GroupPart& part = frame->group;
  part.minimum = entry.minimum;
  part.maximum = entry.maximum;
  part.start = entry.start;
  part.alternative = 0;
  if (opening.op == OpCapture) {
    const RegExpFindResult& slot = slots[opening.c];
    part.captureLength = slot.length;
    part.captureStart = slot.length < 0 ? 0 : OffsetOf(slot.pointer);
  }
}

Flow Matcher::OpenGroup(Registers* r) {
  const ProgramNode& opening = *r->node;
  const GroupNote note = GroupNoteOf(opening);
  const ProgramNode& behind = *(GroupEndOf(opening) + 1);  // the quantifier of one that is repeated
  switch (note.way) {
    case GroupWay::kPassedOver:
      r->node = &behind + 1;
      return Flow::kNext;
    case GroupWay::kTransparent:
      ++r->node;
      return Flow::kNext;
    case GroupWay::kCertain:
      if (undoesLess) {
        EntryOf(opening).start = OffsetOf(r->at);
        ++r->node;
        return Flow::kNext;
      }
      break;
    default:
      break;
  }
  Frame* const frame = Push(*r, Choice::kGroup);
  SaveGroup(opening, frame);
  GroupEntry::Matching& entry = EntryOf(opening);
  entry.minimum = IsRepeated(note.way) ? behind.a : 1;
  entry.maximum = IsRepeated(note.way) ? behind.b : 1;
  entry.start = OffsetOf(r->at);
  if (note.way == GroupWay::kSkippedFirst) {
    frame->choice = Choice::kSkippedGroup;
    r->node = &behind + 1;
    r->onAbort = OnAbort();
    return Flow::kNext;
  }
  BeginCapture(opening, r->at);
  return EnterBody(r, opening);
}

// Until a group's first repetition ends, it has captured nothing.
void Matcher::BeginCapture(const ProgramNode& opening, const uint8_t* at) {
  if (opening.op == OpCapture) {
    slots[opening.c].pointer = at;
    slots[opening.c].length = 0;
  }
}

Flow Matcher::EnterSkippedGroup(Registers* r) {
  Frame& frame = Top();
  Restore(frame, r);
  frame.choice = Choice::kGroup;
  BeginCapture(*r->node, r->at);
  return EnterBody(r, *r->node);
}

// Goes on with the first alternative of a repetition; its frame lies on top.
Flow Matcher::EnterBody(Registers* r, const ProgramNode& opening) {
  r->onAbort = OnAbort();
  if (opening.op == OpConditional) {
    Top().group.alternative = 0;
    const ProgramNode& condition = *(&opening + 1);
    if (condition.op != OpBackref) {
      return EnterCondition(r, condition);
    }
    const bool isSet = condition.a < state->captureCount && slots[condition.a].length != -1;
    return EnterBranch(r, opening, isSet);
  }
  Top().group.alternative = GroupNoteOf(opening).firstAlternative;
  r->node = &opening + 1;
  if (undoesLess && Top().group.alternative != 0 && FailsAtOnce(r->node, r->at, limit)) {
    return Flow::kFail;
  }
  return Flow::kNext;
}

Flow Matcher::EnterBranch(Registers* r, const ProgramNode& opening, bool holds) {
  const ProgramNode& condition = *(&opening + 1);
  const int32_t alternative = GroupNoteOf(opening).firstAlternative;
  if (holds) {
    r->node = condition.op == OpBackref ? &condition + 1 : GroupEndOf(condition) + 1;
  } else {
    r->node = alternative == 0 ? GroupEndOf(opening) : program + alternative + 1;
  }
  r->onAbort = OnAbort();
  return Flow::kNext;
}

// Goes on with the alternative that is next in the frame on top.
Flow Matcher::EnterAlternative(Registers* r, const ProgramNode& opening) {
  Frame& frame = Top();
  int32_t index = frame.group.alternative;
  int32_t next = AlternativeNoteOf(program[index]).next;
  while (undoesLess && next != 0 && FailsAtOnce(program + index + 1, r->at, limit)) {
    index = next;
    next = AlternativeNoteOf(program[index]).next;
  }
  const ProgramNode& alternative = program[index];
  frame.group.alternative = next;
  // What code points added beyond their bytes is forgotten here.
  r->skew = 0;
  frame.skew = 0;
  EntryOf(opening).start = OffsetOf(r->at);
  r->node = &alternative + 1;
  return Flow::kNext;
}

// An alternative has failed.
Flow Matcher::NextAlternative(Registers* r) {
  Frame& frame = Top();
  Restore(frame, r);
  const ProgramNode& opening = *r->node;
  const GroupWay way = GroupNoteOf(opening).way;
  if (frame.group.alternative != 0) {
    const Flow flow = EnterAlternative(r, opening);
    const bool undoesNothing =
        way == GroupWay::kChoice || (way == GroupWay::kCertainChoice && undoesLess);
    if (frame.group.alternative == 0 && undoesNothing) {
      --top;  // nor is another choice left
      r->onAbort = frame.onAbort;
    }
    return flow;
  }
  Undo(frame);
  --top;
  if (way != GroupWay::kOptional) {
    return Flow::kFail;
  }
  r->node = GroupEndOf(opening) + 2;
  r->onAbort = frame.onAbort;
  return Flow::kNext;
}

// ---- Where a repetition ends.

Flow Matcher::EndGroup(Registers* r) {
  const ProgramNode& opening = program[OpeningOf(*r->node)];
  if (IsRepeated(GroupNoteOf(opening).way)) {
    return EndRepetition(r, opening, *(r->node + 1));
  }
  if (opening.op == OpCapture) {
    if (!undoesLess) {
      Frame* const frame = Push(*r, Choice::kGroupEnd);
      SaveGroup(opening, frame);
      frame->phase = EndPhase::kBehind;
    }
    Capture(opening, r->at);
  }
  r->onAbort = OnAbort(OnAbort::kFails);
  ++r->node;
  return Flow::kNext;
}

void Matcher::Capture(const ProgramNode& opening, const uint8_t* at) {
  if (opening.op == OpCapture) {
    const uint8_t* const start = subject + EntryOf(opening).start;
    slots[opening.c].pointer = start;
    slots[opening.c].length = static_cast<int32_t>(at - start);
  }
}

Flow Matcher::EndRepetition(Registers* r, const ProgramNode& opening,
                            const ProgramNode& quantifier) {
  Frame* const frame = Push(*r, Choice::kGroupEnd);
  SaveGroup(opening, frame);
  Capture(opening, r->at);
  GroupEntry::Matching& entry = EntryOf(opening);
  const bool isEmpty = entry.start == OffsetOf(r->at);
  --entry.minimum;
  --entry.maximum;
  entry.start = OffsetOf(r->at);
  const bool isLazy = quantifier.op == OpLazy;
  r->onAbort = OnAbort();
  if (isEmpty || (entry.maximum < 1 && !isLazy)) {
    return GoBehind(r, EndPhase::kBehind);
  }
  if (r->budget.Depth() < 1) {
    return FailGroupEnd();
  }
  if (isLazy && entry.minimum < 1) {
    return GoBehind(r, EndPhase::kBehindFirst);
  }
  frame->phase = EndPhase::kBody;
  return EnterBody(r, opening);
}

Flow Matcher::GoBehind(Registers* r, EndPhase phase) {
  Top().phase = phase;
  r->node += 2;  // the end, and the quantifier
  return Flow::kNext;
}

Flow Matcher::FailGroupEnd() {
  Undo(Top());
  --top;
  return Flow::kFail;
}

// What was tried at the end of a repetition has failed, or was aborted.
Flow Matcher::ResumeGroupEnd(Registers* r, bool aborted) {
  Frame& frame = Top();
  Restore(frame, r);
  const ProgramNode& opening = program[OpeningOf(*r->node)];
  GroupEntry::Matching& entry = EntryOf(opening);
  switch (frame.phase) {
    case EndPhase::kBody: {
      if (aborted) {
        return FailGroupEnd();
      }
      if (frame.group.alternative != 0) {
        return EnterAlternative(r, opening);
      }
      const bool isLazy = (r->node + 1)->op == OpLazy;
      return entry.minimum > 0 || isLazy ? FailGroupEnd() : GoBehind(r, EndPhase::kBehind);
    }
    case EndPhase::kBehindFirst:
      if (entry.maximum < 1) {
        return FailGroupEnd();
      }
      frame.phase = EndPhase::kBody;
      return EnterBody(r, opening);
    default:
      return FailGroupEnd();
  }
}

}  // namespace vekch::regexp
