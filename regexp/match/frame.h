// SPDX-License-Identifier: MIT

// Backtrack frames: what the matcher remembers of a choice it may have to come back to, and how
// much of its budgets is used.

#ifndef VEKCH_REGEXP_MATCH_FRAME_H
#define VEKCH_REGEXP_MATCH_FRAME_H

#include <stddef.h>
#include <stdint.h>

#include "regexp/object/record.h"
#include "strings/kernels/block.h"

namespace vekch::regexp {

// What is left of both budgets of a search. Every record takes one of each.
struct Budget {
  int32_t depth;  // goes no lower than 2 below zero
  int32_t steps;

  void TakeRecord() {
    --depth;
    --steps;
  }
};

// What becomes of an abort that comes up to a run of records: the last record that doesn't pass it
// on decides. Every single literal byte after that record keeps a step of the budget.
class OnAbort {
 public:
  enum Outcome : uint32_t { kPasses, kMatches, kFails };

  OnAbort() = default;
  constexpr explicit OnAbort(Outcome outcome) : value(uint32_t{outcome} << 30) {}

  constexpr Outcome What() const { return static_cast<Outcome>(value >> 30); }
  constexpr int32_t LostSteps() const { return static_cast<int32_t>(value & 0x3FFFFFFF); }
  VEK_INLINE void PassByte() { ++value; }

 private:
  uint32_t value;
};

// The registers of the matcher: where it is in the program and in the subject, and what it has used
// up on its way.
struct Registers {
  const ProgramNode* node;
  const uint8_t* at;
  Budget budget;
  OnAbort onAbort;
  int64_t skew;  // bytes in slot 0 beyond the distance from the match's start
};

enum class Choice : uint8_t {
  kCharacters,       // greedy: gives back a character at a time
  kCopies,           // greedy: gives back a copy of what a group captured
  kLazy,             // takes one more
  kGroup,            // an open group: its next alternative, or to go on after it
  kSkippedGroup,     // a lazy group that was passed over at first
  kGroupEnd,         // a repetition's end: its undoing, and what else can follow it
  kLookaround,       // the body of a look-around
  kCondition,        // the look-around that a conditional depends on
  kAtomic,           // the body of an atomic group
  kAtomicRepeats,    // repetitions of an atomic group, of one length, that can be given back
  kAtomicPositions,  // the same, of changing lengths, see Positions
  kAtomicLazy,       // an atomic group that takes one more
};

// How far a repetition's end has gone through what can follow it.
enum class EndPhase : uint8_t { kBody, kAfterFirst, kAfter };

// The registers as they were, and what to undo.
struct Frame {
  Choice choice;
  EndPhase phase;
  uint32_t at;  // offset in the subject

  struct GroupPart {
    uint32_t captureStart;
    int32_t captureLength;  // below 0 for an unset slot
    int32_t minimum;
    int32_t maximum;
    uint32_t start;
    int32_t alternative;  // record before the alternative to try next; 0 if none is left
  };
  // A program in the program: it ends at a record of its own, and what comes back from it comes
  // here.
  struct SubPart {
    Frame* around;
    uint32_t end;
    int32_t alternative;
    uint32_t bodyAt;
    int32_t minimum;  // kAtomicRepeats: the length of each
  };
  union {
    GroupPart group;
    SubPart sub;
  };

  OnAbort onAbort;
  uint32_t node;  // index of the record
  int32_t count;  // repetitions left to give back or to take; kCharacters: the lowest offset
  Budget budget;
  int32_t deepest;  // the least depth that any record had, of those tried before this frame's
  int64_t skew;
};
static_assert(sizeof(Frame) == 64, "what the header promises for each level of depth");

// Where the repetitions of an atomic group begin that can be given back: a bit for each byte of the
// subject from the frame's offset on. What else is in a frame is the same for all repetitions that
// follow each other, and is in the kAtomicRepeats below, which `sub.around` leads to; the bits take
// its place.
class Positions {
 public:
  static constexpr int32_t kCount = 384;

  explicit Positions(Frame* frame) : words(reinterpret_cast<uint8_t*>(frame) + kWordsAt) {}

  void Clear() {
    for (int32_t i = 0; i < kCount; i += 64) {
      kernels::StoreWord(words + i / 8, uint64_t{0});
    }
  }

  void Add(int32_t position) {
    words[position / 8] = static_cast<uint8_t>(words[position / 8] | 1U << (position % 8));
  }

  // Takes the last one out, of at least one.
  int32_t TakeLast() {
    int32_t i = kCount - 64;
    while (kernels::LoadWord<uint64_t>(words + i / 8) == 0) {
      i -= 64;
    }
    const auto word = kernels::LoadWord<uint64_t>(words + i / 8);
    const int32_t last = kernels::HighestBit(word);
    kernels::StoreWord(words + i / 8, word ^ uint64_t{1} << last);
    return i + last;
  }

 private:
  static constexpr size_t kWordsAt = sizeof(Frame) - kCount / 8;
  static_assert(kWordsAt >= offsetof(Frame, sub) + offsetof(Frame::SubPart, end),
                "the bits spare what is read");

  uint8_t* words;  // 64 positions each
};

}  // namespace vekch::regexp

#endif
