// SPDX-License-Identifier: MIT

// Look-arounds, the conditions made of them, and atomic groups: programs in the program. When one
// has matched, its frames are dropped, so that no other way through it is tried; what its groups
// have captured stays.

#include "regexp/match/matcher.h"
#include "unicode/utf8.h"

namespace vekch::regexp {

// A program that ends where the record `end` is, and that begins at r.at.
void Matcher::PushSub(const Registers& r, Choice choice, const ProgramNode* end) {
  Frame* const frame = Push(r, choice);
  frame->sub.around = sub;
  frame->sub.end = IndexOf(programEnd);
  frame->sub.bodyAt = OffsetOf(r.at);
  frame->sub.alternative = FirstAlternativeOf(*r.node);
  sub = frame;
  programEnd = end;
}

void Matcher::LeaveSub(const Frame& frame) {
  sub = frame.sub.around;
  programEnd = program + frame.sub.end;
}

// The frame on top is that of the program that has matched.
Flow Matcher::SubMatched(Registers* r) {
  const Frame frame = Top();
  LeaveSub(frame);
  --top;
  switch (frame.choice) {
    case Choice::kCondition: {
      Restore(frame, r);
      return EnterBranch(r, *r->node, true);
    }
    case Choice::kAtomic:
      return AtomicMatched(r, frame);
    default: {
      Restore(frame, r);
      return IsNegative(*r->node) ? Flow::kFail : AfterLookaround(r, frame);
    }
  }
}

// An alternative in it has failed.
Flow Matcher::SubFailed(Registers* r) {
  Frame& frame = Top();
  Restore(frame, r);
  if (frame.sub.alternative != 0) {
    const ProgramNode& alternative = program[frame.sub.alternative];
    frame.sub.alternative = AlternativeNoteOf(alternative).next;
    r->node = &alternative + 1;
    EnterBodyAt(r, frame);
    return Flow::kNext;
  }
  LeaveSub(frame);
  --top;
  switch (frame.choice) {
    case Choice::kCondition:
      return EnterBranch(r, *r->node, false);
    case Choice::kAtomic:
      return AtomicFailed(r, frame);
    default:
      return IsNegative(*r->node) ? AfterLookaround(r, frame) : Flow::kFail;
  }
}

// ---- Look-arounds.

bool Matcher::IsNegative(const ProgramNode& opening) {
  return opening.op == OpNegLookbehind || opening.op == OpNegLookahead;
}

Flow Matcher::AfterLookaround(Registers* r, const Frame& frame) {
  r->node = GroupEndOf(*r->node) + 1;
  r->onAbort = frame.onAbort;
  return Flow::kNext;
}

// The body begins elsewhere than the look-around is, though slot 0 stays as it is.
void Matcher::EnterBodyAt(Registers* r, const Frame& frame) {
  r->skew = frame.skew + frame.at - frame.sub.bodyAt;
  r->at = subject + frame.sub.bodyAt;
}

Flow Matcher::LookAround(Registers* r) {
  const ProgramNode& opening = *r->node;
  const uint8_t* bodyAt = r->at;
  if (IsLookbehind(opening)) {
    if (r->at - subject < opening.c) {
      r->node = GroupEndOf(opening) + 1;
      return IsNegative(opening) ? Flow::kNext : Flow::kFail;
    }
    bodyAt = LookbehindStart(r->at, opening.c);
  }
  PushSub(*r, Choice::kLookaround, GroupEndOf(opening));
  Top().sub.bodyAt = OffsetOf(bodyAt);
  EnterBodyAt(r, Top());
  r->node = &opening + 1;
  r->onAbort = OnAbort();
  return Flow::kNext;
}

// So many characters before `at`, in either format; so many bytes, where there are fewer
// characters. There are at least so many bytes.
const uint8_t* Matcher::LookbehindStart(const uint8_t* at, int32_t length) const {
  const uint8_t* start = at;
  for (int32_t i = 0; i < length; ++i) {
    if (start == subject) {
      return at - length;
    }
    start = PreviousUtf8(start, subject, limit);
  }
  return start;
}

// ---- The look-around that a conditional depends on. r is at the record that is repeated or
// opened; the frame says where the conditional is.

Flow Matcher::EnterCondition(Registers* r, const ProgramNode& condition) {
  r->node = &condition - 1;
  PushSub(*r, Choice::kCondition, GroupEndOf(condition) + 1);
  Top().sub.alternative = 0;  // those of the conditional are no alternatives of its condition
  r->node = &condition;
  r->onAbort = OnAbort();
  return Flow::kNext;
}

// ---- Atomic groups. A repetition takes nothing of the budgets, and could be one of very many:
// those of one length that follow each other share a frame, and so do those of changing lengths
// that begin within some hundreds of bytes.

Flow Matcher::Atomic(Registers* r) {
  const ProgramNode* const quantifier = QuantifierAt(GroupEndOf(*r->node) + 1);
  atomicMinimum = quantifier == nullptr ? 1 : quantifier->a;
  atomicMaximum = quantifier == nullptr ? 1 : quantifier->b;
  return AtomicRepetition(r);
}

Flow Matcher::AtomicRepetition(Registers* r) {
  const int32_t minimum = atomicMinimum;
  const int32_t maximum = atomicMaximum;
  if (minimum < 1 && IsLazyAtomic(*r->node)) {
    Push(*r, Choice::kAtomicLazy)->count = maximum;
    r->onAbort = OnAbort();
    return AfterAtomic(r);
  }
  if (maximum < 1) {
    return AfterAtomic(r);
  }
  if (r->at > limit) {  // code points that counted more than their bytes
    return minimum < 1 ? AfterAtomic(r) : Flow::kFail;
  }
  EnterAtomicBody(r, minimum, maximum);
  return Flow::kNext;
}

void Matcher::EnterAtomicBody(Registers* r, int32_t minimum, int32_t maximum) {
  const ProgramNode& opening = *r->node;
  PushSub(*r, Choice::kAtomic, GroupEndOf(opening));
  Top().sub.minimum = minimum;
  Top().count = maximum;
  r->node = &opening + 1;
  r->onAbort = OnAbort();
}

bool Matcher::IsLazyAtomic(const ProgramNode& opening) const {
  const ProgramNode* const quantifier = QuantifierAt(GroupEndOf(opening) + 1);
  return quantifier != nullptr && quantifier->op == OpLazy;
}

Flow Matcher::AtomicMatched(Registers* r, const Frame& frame) {
  // By slot 0, which counts code points by their own length.
  const int64_t end = MatchLength(*r);
  Restore(frame, r);
  r->onAbort = frame.onAbort;
  int64_t length = end - MatchLength(*r);
  const bool isDue = frame.sub.minimum > 0;
  const bool isLazy = IsLazyAtomic(*r->node);
  if (length <= 0) {
    r->skew += length;
    return AfterAtomic(r);
  }
  // A position after the end is as good as any other: what is further counts for the length alone.
  const int64_t toAfterEnd = limit - r->at + 1;
  const int64_t excess = length > toAfterEnd ? length - toAfterEnd : 0;
  length -= excess;
  if (!isDue && !isLazy) {
    NoteAtomicRepeat(*r, static_cast<int32_t>(length));
    r->onAbort = OnAbort();
  }
  r->at += length;
  r->skew += excess;
  atomicMinimum = frame.sub.minimum - 1;
  atomicMaximum = frame.count - 1;
  return Flow::kRepeat;
}

Flow Matcher::AtomicFailed(Registers* r, const Frame& frame) {
  r->onAbort = frame.onAbort;
  const bool isDue = frame.sub.minimum > 0;
  return isDue || IsLazyAtomic(*r->node) ? Flow::kFail : AfterAtomic(r);
}

// A repetition of so many bytes from r.at on that may be given back.
void Matcher::NoteAtomicRepeat(const Registers& r, int32_t length) {
  Frame* last = Below(top);
  if (AtomicRepeatsOf(r, last) == nullptr) {
    PushAtomicRepeat(r, length);
    return;
  }
  if (last->choice == Choice::kAtomicRepeats) {
    if (last->sub.minimum == length) {
      ++last->count;
      return;
    }
    last = PositionsAbove(last, r);
  }
  const auto position = static_cast<int32_t>(OffsetOf(r.at) - last->at);
  if (position < Positions::kCount) {
    Positions(last).Add(position);
  } else {
    PushAtomicRepeat(r, length);  // what follows may all be of this length
  }
}

void Matcher::PushAtomicRepeat(const Registers& r, int32_t length) {
  Frame* const frame = Push(r, Choice::kAtomicRepeats);
  frame->sub.minimum = length;
  frame->count = 1;
}

// The frame with all that the repetitions noted in `last` have in common, if r's is one of them;
// else null. To come back to a group from elsewhere takes a frame above its last one.
Frame* Matcher::AtomicRepeatsOf(const Registers& r, Frame* last) const {
  if (last == nullptr) {
    return nullptr;
  }
  Frame* const repeats = last->choice == Choice::kAtomicPositions ? last->sub.around : last;
  const bool isOfThese =
      repeats->choice == Choice::kAtomicRepeats && repeats->node == IndexOf(r.node);
  return isOfThese ? repeats : nullptr;
}

// Positions for the repetition of another length that follows: those of the frame itself as well,
// if they are few and a frame below records the rest.
Frame* Matcher::PositionsAbove(Frame* repeats, const Registers& r) {
  Frame* common = AtomicRepeatsOf(r, Below(repeats));
  const int32_t length = repeats->sub.minimum;
  const int32_t count = repeats->count;
  const bool areFew = OffsetOf(r.at) - repeats->at < static_cast<uint32_t>(Positions::kCount);
  Frame* frame = repeats;
  if (common == nullptr || !areFew) {
    common = repeats;
    frame = Push(r, Choice::kAtomicPositions);
  }
  frame->choice = Choice::kAtomicPositions;
  frame->sub.around = common;
  Positions positions(frame);
  positions.Clear();
  for (int32_t i = 0; frame == repeats && i < count; ++i) {
    positions.Add(i * length);
  }
  return frame;
}

Flow Matcher::GiveBackAtomic(Registers* r) {
  Frame& frame = Top();
  Restore(frame, r);
  r->at += int64_t{--frame.count} * frame.sub.minimum;
  if (frame.count == 0) {
    --top;
    r->onAbort = frame.onAbort;
  }
  return AfterAtomic(r);
}

Flow Matcher::GiveBackAtomicPosition(Registers* r) {
  Frame& frame = Top();
  Restore(*frame.sub.around, r);
  const int32_t position = Positions(&frame).TakeLast();
  r->at = subject + frame.at + position;
  if (position == 0) {  // the first one that was added
    --top;
  }
  return AfterAtomic(r);
}

Flow Matcher::TakeAtomicAgain(Registers* r) {
  const Frame& frame = Top();
  Restore(frame, r);
  r->onAbort = frame.onAbort;
  --top;
  if (frame.count < 1 || r->at > limit) {
    return Flow::kFail;
  }
  EnterAtomicBody(r, 0, frame.count);
  return Flow::kNext;
}

Flow Matcher::AfterAtomic(Registers* r) {
  const ProgramNode* const after = GroupEndOf(*r->node) + 1;
  r->node = QuantifierAt(after) == nullptr ? after : after + 1;
  return r->at > limit && r->node != programEnd ? Flow::kFail : Flow::kNext;
}

}  // namespace vekch::regexp
