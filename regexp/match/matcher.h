// SPDX-License-Identifier: MIT

// The matcher: whether a compiled program matches at one position of a subject.
//
// The rules are those of a recursion in which every record calls the next: a failure goes back to
// the last record with another way to go on, and undoes on its way what the records did; how deep
// the calls may nest is limited. Here a record calls nothing. Runs of records are executed in one
// loop, and a backtrack frame is put aside only where there is a choice to come back to, or
// something to undo. The budgets are counted as if every record had made its call, and OnAbort
// carries along what the records in a run would have made of an abort that came back to them.
//
//   matcher.cpp      the loop over the records, and what happens at its ends
//   repeat.cpp       repeated characters and back-references
//   group.cpp        groups and conditionals
//   sub_program.cpp  look-arounds and atomic groups
//
// Frames lie on the machine stack in chunks: when a chunk is full, Match makes its own frame larger
// by another one. So the stack grows no further than a search needs.

#ifndef VEKCH_REGEXP_MATCH_MATCHER_H
#define VEKCH_REGEXP_MATCH_MATCHER_H

#include <stdint.h>

#include "regexp/characters/bytes.h"
#include "regexp/characters/character_set.h"
#include "regexp/match/failure_levels.h"
#include "regexp/match/frame.h"
#include "regexp/object/object_layout.h"
#include "regexp/object/record_notes.h"
#include "unicode/utf8.h"
#include "vekch/regexp.h"
#include "vekch/regexp_program.h"

namespace vekch::regexp {

enum class MatchResult { kOk, kFail, kAbort };

// What a step of the matcher leads to.
enum class Flow : uint8_t {
  kNext,      // the next record is set
  kFail,      // back to the last frame
  kAbort,     // the depth is used up
  kEnd,       // the end of the program, or of the program in the program
  kGrow,      // a record may need more frames than the chunk has left
  kRepeat,    // a further repetition of the atomic group that is set
  kFinished,  // the result is known
};

class Matcher {
 public:
  Matcher(RegExpState* patternState, const uint8_t* text, int32_t length);

  // Matches at `start` by the program from `first` on, in a subject that ends at `end`. On kOk slot
  // 0 holds the match and the other slots what the groups captured. The slots are to be cleared
  // before.
  [[gnu::noinline]] MatchResult Match(const ProgramNode* first, const uint8_t* start,
                                      const uint8_t* end);

  void ClearSlots();

  // The work that a call may take, counted in records: what has done more ends as if its limit had
  // run out, at about ten seconds of work at the default limit.
  static int64_t MostWork(const RegExpState& state, int64_t length) {
    return 1000000 + int64_t{100000} * state.matchLimit + 4096 * length;
  }

  // The same for one who counts no more than returns to choices. Each leads to two records at
  // least: the one with the choice, and one that fails.
  static int64_t MostReturns(const RegExpState& state, int64_t length) {
    return MostWork(state, length) / 2;
  }

  // Ends the call as one that has done all the work that it may.
  MatchResult Exhaust() {
    stepsLost = int64_t{state->matchLimit} + 1;
    return MatchResult::kAbort;
  }

  // What is left of the steps. Aborts lower it for good, below zero as well.
  int64_t StepsLeft() const { return state->matchLimit - stepsLost; }

  RegExpFindResult* Slots() const { return slots; }
  bool IsUtf8() const { return isUtf8; }
  const uint8_t* Subject() const { return subject; }

  // An empty match is refused.
  bool requireNonEmpty = false;

  // Remembers failures once so many records more have been executed.
  void RememberAfter(int64_t records) { remembersBelow = workLeft - records; }
  bool Remembers() const { return failures.IsBegun() && !requireNonEmpty; }

 private:
  static constexpr int32_t kFramesInChunk = 52;  // keeps a chunk below a page
  static constexpr int32_t kSpareFrames = 3;     // what one record may take, at most

  struct Chunk {
    Chunk* below;
    Chunk* above;  // null as long as there was no need of one
    Frame* top;    // after its last frame, while frames are in the chunk above
    Frame frames[kFramesInChunk];
  };

  // ---- matcher.cpp
  static int32_t MostChunks(const RegExpState& state);
  [[gnu::noinline]] Flow Run(Registers* registers, Flow flow);
  Flow Execute(Registers* registers);
  Flow Record(Registers* r);
  Flow String(Registers* r);
  Flow Character(Registers* r);
  Flow Assertion(Registers* r);
  bool AssertionHolds(const ProgramNode& node, const uint8_t* at) const;
  Flow Accept(Registers* r);
  Flow EndOfProgram(Registers* r);
  Flow Finish(MatchResult outcome);
  Flow Fail(Registers* r);
  Flow Resume(Registers* r, bool aborted);
  Flow Abort(Registers* r);
  Frame* Below(const Frame* frame) const;
  void CutAfter(const Frame* frame);
  bool UnwindTo(const Frame* frame);
  void Undo(const Frame& frame);

  // ---- repeat.cpp
  int32_t CharacterLength(const ProgramNode& atom, const uint8_t* at) const;
  static bool IsMember(const Utf8Character& character, const ProgramNode& atom);
  int32_t CopyLength(const ProgramNode& atom, const uint8_t* at) const;
  int32_t RepetitionLength(const ProgramNode& atom, const uint8_t* at) const;
  Flow Repeat(Registers* r, const ProgramNode& atom);
  Flow RepeatCharacters(Registers* r, const ProgramNode& atom);
  Flow RepeatCopies(Registers* r, const ProgramNode& atom);
  Flow RepeatLazily(Registers* r, const ProgramNode& atom);
  Flow GoOnAfter(Registers* r, const ProgramNode& atom, Choice choice, int32_t count);
  Flow GiveBack(Registers* r);
  Flow GiveBackCopy(Registers* r);
  Flow TakeOneMore(Registers* r);
  const uint8_t* BeforeLast(const ProgramNode& atom, const uint8_t* at,
                            const uint8_t* lowest) const;

  // ---- group.cpp
  Flow OpenGroup(Registers* r);
  Flow EnterBody(Registers* r, const ProgramNode& opening);
  Flow EnterAlternative(Registers* r, const ProgramNode& opening);
  Flow NextAlternative(Registers* r);
  Flow EnterSkippedGroup(Registers* r);
  Flow EndGroup(Registers* r);
  Flow ResumeGroupEnd(Registers* r, bool aborted);
  Flow GoAfter(Registers* r, EndPhase phase);
  Flow FailGroupEnd();
  void BeginCapture(const ProgramNode& opening, const uint8_t* at);
  void Capture(const ProgramNode& opening, const uint8_t* at);
  void SaveGroup(const ProgramNode& opening, Frame* frame);
  Flow EnterBranch(Registers* r, const ProgramNode& opening, bool holds);

  // ---- sub_program.cpp
  Flow LookAround(Registers* r);
  void EnterBodyAt(Registers* r, const Frame& frame);
  Flow AfterLookaround(Registers* r, const Frame& frame);
  static bool IsNegative(const ProgramNode& opening);
  bool IsLazyAtomic(const ProgramNode& opening) const;
  const uint8_t* LookbehindStart(const uint8_t* at, int32_t length) const;
  void PushSub(const Registers& r, Choice choice, const ProgramNode* end);
  Flow EnterCondition(Registers* r, const ProgramNode& condition);
  void LeaveSub(const Frame& frame);
  Flow SubMatched(Registers* r);
  Flow SubFailed(Registers* r);
  Flow Atomic(Registers* r);
  Flow AtomicRepetition(Registers* r);
  void EnterAtomicBody(Registers* r, int32_t minimum, int32_t maximum);
  Flow AtomicMatched(Registers* r, const Frame& frame);
  Flow AtomicFailed(Registers* r, const Frame& frame);
  void NoteAtomicRepeat(const Registers& r, int32_t length);
  void PushAtomicRepeat(const Registers& r, int32_t length);
  Frame* PositionsAbove(Frame* repeats, const Registers& r);
  Frame* AtomicRepeatsOf(const Registers& r, Frame* last) const;
  Flow GiveBackAtomic(Registers* r);
  Flow GiveBackAtomicPosition(Registers* r);
  Flow TakeAtomicAgain(Registers* r);
  Flow AfterAtomic(Registers* r);

  // ---- Shared.
  Frame* Push(const Registers& r, Choice choice) {
    Frame* const frame = top++;
    frame->budget = r.budget;
    frame->onAbort = r.onAbort;
    frame->skew = r.skew;
    frame->at = OffsetOf(r.at);
    frame->node = IndexOf(r.node);
    frame->choice = choice;
    frame->deepest = deepest;
    deepest = r.budget.depth;
    return frame;
  }
  void Pop() {
    HasBeen(Top().deepest);
    --top;
  }
  Frame& Top() { return top[-1]; }
  bool HasRoom() const { return top <= chunkInUse->frames + kFramesInChunk - kSpareFrames; }
  // The frame's registers; results that come back to it are its own affair as long as it stays.
  void Restore(const Frame& frame, Registers* r) {
    r->node = program + frame.node;
    r->at = subject + frame.at;
    r->budget = frame.budget;
    r->onAbort = OnAbort();
    r->skew = frame.skew;
  }
  uint32_t OffsetOf(const uint8_t* at) const { return static_cast<uint32_t>(at - subject); }
  uint32_t IndexOf(const ProgramNode* node) const { return static_cast<uint32_t>(node - program); }
  // Bytes in slot 0: what was consumed, which counts code points by their own length.
  int64_t MatchLength(const Registers& r) const { return r.at - matchStart + r.skew; }

  // ---- The memory of failures. One that a limit had a part in has been below any depth.
  static constexpr int32_t kBelowAll = -1;
  void HasBeen(int32_t depth) { deepest = depth < deepest ? depth : deepest; }

  // Whether what follows a record is known to fail where the registers are.
  bool IsKnown(const Registers& r, const ProgramNode& node) {
    const int32_t needed = Remembers() ? failures.Known(IndexOf(&node), OffsetOf(r.at)) : -1;
    if (needed < 0 || needed > r.budget.depth) {
      return false;
    }
    HasBeen(r.budget.depth - needed);
    return true;
  }

  // What was tried from a frame has failed.
  void NoteFailure(const Frame& frame) {
    if (Remembers() && deepest > kBelowAll) {
      failures.Note(frame.node, frame.at, frame.budget.depth - deepest);
    }
  }

  // What a character adds to slot 0 beyond its bytes.
  static int32_t SkewOf(const ProgramNode& atom, int32_t length) {
    return atom.op == OpCodePoint ? Utf8Length(static_cast<uint32_t>(atom.a)) - length : 0;
  }

  // The quantifier at a record, or null.
  const ProgramNode* QuantifierAt(const ProgramNode* node) const {
    return regexp::QuantifierAt(node, programEnd);
  }
  // That of a group, by its opening, or null.
  const ProgramNode* QuantifierOf(const ProgramNode& opening) const {
    return QuantifierAt(GroupEndOf(opening) + 1);
  }
  GroupEntry::Matching& EntryOf(const ProgramNode& record) const {
    return groups[SerialOf(record)].matching;
  }

  RegExpState* const state;
  const ProgramNode* const program;
  RegExpFindResult* const slots;
  GroupEntry* const groups;
  const uint8_t* const subject;
  const uint8_t* const subjectEnd;
  const bool isUtf8;
  const Budget fullBudget;  // with which each match begins

  const uint8_t* matchStart = nullptr;      // of the match
  const uint8_t* limit = nullptr;           // end of the text that is matched
  const ProgramNode* programEnd = nullptr;  // of the program, or of the program in the program
  Frame* sub = nullptr;                     // of the innermost program in the program
  int64_t stepsLost = 0;                    // by aborts
  int64_t workLeft = MostWork(*state, subjectEnd - subject);  // of the whole call

  static constexpr int64_t kForgetful = 20000;  // records, before failures are remembered
  FailureLevels failures;
  int64_t remembersBelow = workLeft - kForgetful;  // work left
  int32_t deepest = 0;  // the least depth that any record has had, since the last frame

  int32_t atomicMinimum = 0;  // repetitions due of the atomic group that is set
  int32_t atomicMaximum = 0;  // repetitions allowed

  Chunk* chunkInUse = nullptr;
  Frame* top = nullptr;  // after its last frame
  MatchResult result = MatchResult::kFail;
};

}  // namespace vekch::regexp

#endif
