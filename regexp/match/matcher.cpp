// SPDX-License-Identifier: MIT

// The loop over the records, and what happens where it can't go on.

#include "regexp/match/matcher.h"

#include "regexp/characters/bytes.h"

namespace vekch::regexp {
namespace {

// One level is the search's own.
inline int32_t OwnDepth(const RegExpState& state) { return DepthLimit(state) - 1; }

// No more frames than levels are ever needed, but for conditions within conditions, of which the
// number of groups allows some hundreds, and for repetitions of atomic groups, which take no level:
// where they change their lengths, a frame holds the positions of some hundreds of bytes, and past
// the last frame the depth counts as used up.
constexpr int32_t kChunksAhead = 16;

}  // namespace

// Beyond the lowest.
int32_t Matcher::MostChunks(const RegExpState& state) {
  return OwnDepth(state) / (kFramesInChunk - kSpareFrames) + kChunksAhead;
}

Matcher::Matcher(RegExpState* patternState, const uint8_t* text, int32_t length)
    : state(patternState),
      program(ProgramOf(patternState)),
      slots(SlotsOf(patternState)),
      groups(GroupsOf(patternState)),
      subject(text),
      subjectEnd(text + length),
      isUtf8(patternState->characterFormat != 0),
      fullBudget{OwnDepth(*patternState), patternState->matchLimit} {}

void Matcher::ClearSlots() {
  for (int32_t slot = 1; slot < SlotCount(state); ++slot) {
    slots[slot].pointer = nullptr;
    slots[slot].length = -1;
  }
}

MatchResult Matcher::Match(const ProgramNode* first, const uint8_t* start, const uint8_t* end) {
  matchStart = start;
  limit = end;
  programEnd = program + state->nodeCount;
  sub = nullptr;
  static_assert(sizeof(Chunk) < 4000, "no page of the stack is stepped over untouched");
  Chunk lowest;
  lowest.below = nullptr;
  lowest.above = nullptr;
  chunkInUse = &lowest;
  top = lowest.frames;
  deepest = fullBudget.depth;
  if (failures.IsBegun() && !failures.Reaches(OffsetOf(start))) {
    failures.Begin(state, OffsetOf(start));
  }
  Registers r = {first, start, fullBudget, OnAbort(), 0};
  Flow flow = Run(&r, Flow::kNext);
  for (int64_t chunks = 0; flow != Flow::kFinished; flow = Run(&r, flow)) {
    // The chunk is full. What it leads to lies in the frame of this function, until that returns.
    if (chunkInUse->above == nullptr) {
      if (chunks == MostChunks(*state)) {
        flow = Flow::kAbort;
        continue;
      }
      ++chunks;
      auto* const chunk = static_cast<Chunk*>(__builtin_alloca(sizeof(Chunk)));
      chunk->below = chunkInUse;
      chunk->above = nullptr;
      chunkInUse->above = chunk;
    }
    chunkInUse->top = top;
    chunkInUse = chunkInUse->above;
    top = chunkInUse->frames;
  }
  return result;
}

// Goes on until the match is over or the chunk is full; returns with what to go on then.
Flow Matcher::Run(Registers* registers, Flow flow) {
  Registers r = *registers;
  for (;;) {
    switch (flow) {
      case Flow::kNext:
        flow = Execute(&r);
        if (flow == Flow::kGrow) {
          *registers = r;
          return Flow::kNext;
        }
        break;
      case Flow::kFail:
        flow = Fail(&r);
        break;
      case Flow::kAbort:
        flow = Abort(&r);
        break;
      case Flow::kEnd:
        flow = EndOfProgram(&r);
        break;
      case Flow::kRepeat:
        if (!HasRoom()) {
          *registers = r;
          return flow;
        }
        flow = AtomicRepetition(&r);
        break;
      default:
        return Flow::kFinished;
    }
  }
}

// ---- The loop.

// Runs records until one of them can't be passed by a step in the loop.
VEK_INLINE Flow Matcher::Execute(Registers* r) {
  Flow flow = Flow::kNext;
  while (flow == Flow::kNext) {
    if (r->budget.depth < 0) {
      return Flow::kAbort;
    }
    HasBeen(r->budget.depth);
    if (r->budget.steps - stepsLost < 1) {
      deepest = kBelowAll;
      return Flow::kFail;
    }
    if (r->node == programEnd) {
      return Flow::kEnd;
    }
    if (!HasRoom()) {
      return Flow::kGrow;
    }
    if (--workLeft < 0) {
      return Finish(Exhaust());
    }
    r->budget.TakeRecord();
    flow = Record(r);
  }
  return flow;
}

Flow Matcher::Record(Registers* r) {
  switch (r->node->op) {
    case OpChar:
    case OpCharType:
    case OpClass:
    case OpBackref:
    case OpAnyByte:
    case OpCodePoint:
    case OpCategory:
    case OpRange:
    case OpScript:
    case OpGrapheme:
      return Character(r);
    case OpString:
      return String(r);
    case OpAssert:
      return Assertion(r);
    case OpAlternative: {
      const int32_t groupEnd = AlternativeNoteOf(*r->node).groupEnd;
      if (r->node->a < 1) {  // a match here may be empty where others may not
        return Accept(r);
      }
      r->node = program + groupEnd;
      return EndGroup(r);
    }
    case OpLookbehind:
    case OpNegLookbehind:
    case OpLookahead:
    case OpNegLookahead:
      return LookAround(r);
    case OpCapture:
    case OpGroup:
    case OpOptionGroup:
    case OpConditional:
      return OpenGroup(r);
    case OpGroupEnd:
      return EndGroup(r);
    case OpAtomic:
      return Atomic(r);
    case OpSetOptions:  // the records hold the options that are in force where they are
      ++r->node;
      return Flow::kNext;
    default:
      return Flow::kFail;
  }
}

Flow Matcher::String(Registers* r) {
  const ProgramNode& node = *r->node;
  if (!StandsAt(node, r->at, limit)) {
    return Flow::kFail;
  }
  ++r->node;
  r->at += node.b;
  r->onAbort = OnAbort(OnAbort::kMatches);
  return Flow::kNext;
}

// A record that consumes a character or a copy, once or repeated.
Flow Matcher::Character(Registers* r) {
  const ProgramNode& atom = *r->node;
  if (QuantifierAt(AfterAtom(atom)) != nullptr) {
    return Repeat(r, atom);
  }
  const int32_t length = RepetitionLength(atom, r->at);
  if (length < 0) {
    return Flow::kFail;
  }
  r->at += length;
  r->node = AfterAtom(atom);
  switch (atom.op) {
    case OpBackref:
      break;
    case OpChar:
      r->onAbort.PassByte();
      break;
    case OpClass:  // counts as a repetition, once
      --r->budget.depth;
      r->onAbort = OnAbort(OnAbort::kFails);
      break;
    case OpCharType:
    case OpAnyByte:
      r->onAbort = OnAbort(OnAbort::kFails);
      break;
    default:
      r->skew += SkewOf(atom, length);
      r->onAbort = OnAbort(OnAbort::kMatches);
      break;
  }
  return Flow::kNext;
}

// A quantifier says no more than whether the assertion has to hold.
Flow Matcher::Assertion(Registers* r) {
  const ProgramNode* const quantifier = QuantifierAt(r->node + 1);
  const bool isOptional = quantifier != nullptr && quantifier->a == 0;
  if (!isOptional && !AssertionHolds(*r->node, r->at)) {
    return Flow::kFail;
  }
  r->node += quantifier == nullptr ? 1 : 2;
  return Flow::kNext;
}

bool Matcher::AssertionHolds(const ProgramNode& node, const uint8_t* at) const {
  const bool atStart = at == subject;
  const bool atEnd = at == limit;
  const bool isMultiLine = (OptionsOf(node) & RegExpOptionM) != 0;
  const auto isLineStart = [at] { return at[-1] == '\n'; };
  const auto isLastNewline = [this, at] { return limit - at == 1 && *at == '\n'; };
  const auto changesWord = [this, at, atStart] {
    // Where the text that is matched ends before the subject, the byte there counts.
    const bool after = at < subjectEnd && IsWordByte(*at);
    return after != (!atStart && IsWordByte(at[-1]));
  };
  switch (node.a) {
    case RegExpAssertSubjectStart:
    case RegExpAssertSearchStart:
      return atStart;
    case RegExpAssertLastLineEnd:
      return atEnd || isLastNewline();
    case RegExpAssertSubjectEnd:
      return atEnd;
    case RegExpAssertLineOrSubjectStart:
      return atStart || (isMultiLine && !atEnd && isLineStart());
    case RegExpAssertLineOrSubjectEnd:
      return atEnd || (isMultiLine ? *at == '\n' : isLastNewline());
    case RegExpAssertWordBoundary:
      return changesWord();
    case RegExpAssertNoWordBoundary:
      return !changesWord();
    case RegExpAssertLineStart:
    default:  // there are no other letters
      return atStart || isLineStart();
  }
}

// ---- Where a run of records ends.

Flow Matcher::EndOfProgram(Registers* r) {
  return requireNonEmpty && MatchLength(*r) == 0 ? Flow::kFail : Accept(r);
}

Flow Matcher::Accept(Registers* r) {
  if (sub != nullptr) {
    CutAfter(sub);
    return SubMatched(r);
  }
  slots[0].pointer = matchStart;
  const int64_t length = MatchLength(*r);
  slots[0].length = length < INT32_MAX ? static_cast<int32_t>(length) : INT32_MAX;
  return Finish(MatchResult::kOk);
}

Flow Matcher::Finish(MatchResult outcome) {
  result = outcome;
  return Flow::kFinished;
}

Flow Matcher::Fail(Registers* r) {
  if (top == chunkInUse->frames) {
    if (chunkInUse->below == nullptr) {
      return Finish(MatchResult::kFail);
    }
    CutAfter(Below(top));
  }
  return Resume(r, false);
}

// Goes on with the last frame, to which a failure has come back, or an abort that it stops.
Flow Matcher::Resume(Registers* r, bool aborted) {
  workLeft -= failures.IsBegun() ? 1 : 0;  // looking up what is known is work as well
  if (workLeft < remembersBelow) {
    failures.Begin(state, OffsetOf(matchStart));
    remembersBelow = INT64_MIN;
  }
  switch (Top().choice) {
    case Choice::kCharacters:
      return GiveBack(r);
    case Choice::kCopies:
      return GiveBackCopy(r);
    case Choice::kLazy:
      return TakeOneMore(r);
    case Choice::kGroup:
      return NextAlternative(r);
    case Choice::kSkippedGroup:
      return EnterSkippedGroup(r);
    case Choice::kGroupEnd:
      return ResumeGroupEnd(r, aborted);
    case Choice::kLookaround:
    case Choice::kCondition:
    case Choice::kAtomic:
      return SubFailed(r);
    case Choice::kAtomicRepeats:
      return GiveBackAtomic(r);
    case Choice::kAtomicPositions:
      return GiveBackAtomicPosition(r);
    case Choice::kAtomicLazy:
      return TakeAtomicAgain(r);
  }
  return Flow::kFail;
}

namespace {

// Whether an abort that comes back to a frame is a failure to it.
constexpr bool StopsAbort(Choice choice) {
  return choice <= Choice::kLazy || choice == Choice::kGroupEnd;
}

constexpr bool IsSub(Choice choice) {
  return choice >= Choice::kLookaround && choice <= Choice::kAtomic;
}

}  // namespace

// Carries an abort back, over the runs and the frames that pass it on, to what makes something else
// of it. Nothing is undone before that is known: an abort that counts as a match leaves the slots
// as they are.
Flow Matcher::Abort(Registers* r) {
  deepest = kBelowAll;
  OnAbort onAbort = r->onAbort;
  Frame* frame = Below(top);
  stepsLost += 1 + onAbort.LostSteps();
  while (onAbort.What() == OnAbort::kPasses) {
    if (frame == nullptr) {
      return Finish(MatchResult::kAbort);
    }
    if (StopsAbort(frame->choice)) {
      UnwindTo(frame);
      return Resume(r, true);
    }
    onAbort = frame->choice == Choice::kAtomicPositions ? OnAbort() : frame->onAbort;
    stepsLost += onAbort.LostSteps();
    frame = Below(frame);
  }
  if (onAbort.What() == OnAbort::kFails) {
    return UnwindTo(frame) ? Resume(r, false) : Finish(MatchResult::kFail);
  }
  while (frame != nullptr && !IsSub(frame->choice)) {
    frame = Below(frame);
  }
  sub = frame;
  return Accept(r);
}

// The frame before another, or before the end of the frames; null if there is none.
Frame* Matcher::Below(const Frame* frame) const {
  Chunk* chunk = chunkInUse;
  while (frame < chunk->frames || frame > chunk->frames + kFramesInChunk) {
    chunk = chunk->below;
  }
  if (frame > chunk->frames) {
    return chunk->frames + (frame - chunk->frames - 1);
  }
  return chunk->below == nullptr ? nullptr : chunk->below->top - 1;
}

// Drops all frames after one.
void Matcher::CutAfter(const Frame* frame) {
  while (frame < chunkInUse->frames || frame >= chunkInUse->frames + kFramesInChunk) {
    chunkInUse = chunkInUse->below;
  }
  top = chunkInUse->frames + (frame - chunkInUse->frames) + 1;
}

// Undoes what the frames after one stand for; null stands for all of them, and false reports that.
bool Matcher::UnwindTo(const Frame* frame) {
  for (const Frame* last = Below(top); last != frame; last = Below(last)) {
    Undo(*last);
  }
  if (frame != nullptr) {
    CutAfter(frame);
  }
  return frame != nullptr;
}

void Matcher::Undo(const Frame& frame) {
  if (IsSub(frame.choice)) {
    LeaveSub(frame);
    return;
  }
  if (frame.choice != Choice::kGroup && frame.choice != Choice::kSkippedGroup &&
      frame.choice != Choice::kGroupEnd) {
    return;
  }
  const ProgramNode& record = program[frame.node];
  const ProgramNode& opening = record.op == OpGroupEnd ? program[OpeningOf(record)] : record;
  const Frame::GroupPart& part = frame.group;
  GroupEntry::Matching& entry = EntryOf(opening);
  entry.minimum = part.minimum;
  entry.maximum = part.maximum;
  entry.start = part.start;
  if (opening.op == OpCapture) {
    RegExpFindResult& slot = slots[opening.c];
    slot.pointer = part.captureLength < 0 ? nullptr : subject + part.captureStart;
    slot.length = part.captureLength;
  }
}

}  // namespace vekch::regexp
