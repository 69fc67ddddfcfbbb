// SPDX-License-Identifier: MIT

// Groups and conditionals.
//
// Alternatives are tried in order. At the end of a repetition the group has captured what that
// repetition consumed. If it consumed nothing, or was the last one allowed, the match goes on
// after the group; otherwise a greedy group tries a further repetition first and then what is
// after it, once enough repetitions are done, and a lazy group the other way round.

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
  const ProgramNode* const quantifier = QuantifierOf(opening);
  if (quantifier != nullptr && quantifier->b == 0) {
    r->node = quantifier + 1;
    return Flow::kNext;
  }
  Frame* const frame = Push(*r, Choice::kGroup);
  SaveGroup(opening, frame);
  GroupEntry::Matching& entry = EntryOf(opening);
  entry.minimum = quantifier != nullptr ? quantifier->a : 1;
  entry.maximum = quantifier != nullptr ? quantifier->b : 1;
  entry.start = OffsetOf(r->at);
  r->onAbort = OnAbort();
  if (quantifier != nullptr && quantifier->op == OpLazy && quantifier->a == 0) {
    frame->choice = Choice::kSkippedGroup;
    r->node = quantifier + 1;
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
  Top().group.alternative = FirstAlternativeOf(opening);
  r->node = &opening + 1;
  return Flow::kNext;
}

Flow Matcher::EnterBranch(Registers* r, const ProgramNode& opening, bool holds) {
  const ProgramNode& condition = *(&opening + 1);
  const int32_t alternative = FirstAlternativeOf(opening);
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
  const ProgramNode& alternative = program[frame.group.alternative];
  frame.group.alternative = AlternativeNoteOf(alternative).next;
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
  if (frame.group.alternative != 0) {
    return EnterAlternative(r, opening);
  }
  Undo(frame);
  Pop();
  const ProgramNode* const quantifier = QuantifierOf(opening);
  if (quantifier == nullptr || quantifier->op == OpLazy || quantifier->a > 0) {
    return Flow::kFail;
  }
  r->node = quantifier + 1;
  r->onAbort = frame.onAbort;
  return Flow::kNext;
}

// ---- Where a repetition ends.

// A group that is not repeated has this one repetition.
Flow Matcher::EndGroup(Registers* r) {
  const ProgramNode& opening = program[OpeningOf(*r->node)];
  const ProgramNode* const quantifier = QuantifierAt(r->node + 1);
  const bool isLazy = quantifier != nullptr && quantifier->op == OpLazy;
  if (IsKnown(*r, *r->node)) {
    return Flow::kFail;
  }
  Frame* const frame = Push(*r, Choice::kGroupEnd);
  SaveGroup(opening, frame);
  Capture(opening, r->at);
  GroupEntry::Matching& entry = EntryOf(opening);
  const bool isEmpty = entry.start == OffsetOf(r->at);
  --entry.minimum;
  --entry.maximum;
  entry.start = OffsetOf(r->at);
  r->onAbort = OnAbort();
  if (isEmpty || (entry.maximum < 1 && !isLazy)) {
    return GoAfter(r, EndPhase::kAfter);
  }
  HasBeen(r->budget.depth - 1);
  if (r->budget.depth < 1) {
    return FailGroupEnd();
  }
  if (isLazy && entry.minimum < 1) {
    return GoAfter(r, EndPhase::kAfterFirst);
  }
  frame->phase = EndPhase::kBody;
  return EnterBody(r, opening);
}

void Matcher::Capture(const ProgramNode& opening, const uint8_t* at) {
  if (opening.op == OpCapture) {
    const uint8_t* const start = subject + EntryOf(opening).start;
    slots[opening.c].pointer = start;
    slots[opening.c].length = static_cast<int32_t>(at - start);
  }
}

Flow Matcher::GoAfter(Registers* r, EndPhase phase) {
  Top().phase = phase;
  ++r->node;
  r->node += QuantifierAt(r->node) != nullptr ? 1 : 0;
  return Flow::kNext;
}

Flow Matcher::FailGroupEnd() {
  Undo(Top());
  NoteFailure(Top());
  Pop();
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
      return entry.minimum > 0 || isLazy ? FailGroupEnd() : GoAfter(r, EndPhase::kAfter);
    }
    case EndPhase::kAfterFirst:
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
