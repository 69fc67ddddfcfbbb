// What the matcher remembers of a choice it may have to come back to, and how much of its budgets
// is used.

#ifndef VEKCH_REGEXP_MATCH_FRAME_H
#define VEKCH_REGEXP_MATCH_FRAME_H

#include <stdint.h>

#include "regexp/object/record.h"
#include "strings/kernels/attributes.h"

namespace vekch::regexp {

// Both budgets of a search in one number, since every record takes one of each: what is left of the
// depth in the low half, of the steps in the high half. A lead on the depth keeps it from borrowing
// from the steps: it goes no lower than 2 below zero.
class Budget {
 public:
  Budget() = default;
  constexpr Budget(int32_t depth, int32_t steps)
      : value(static_cast<uint64_t>(static_cast<uint32_t>(steps)) << 32 |
              (static_cast<uint32_t>(depth) + kLead)) {}

  constexpr int64_t Depth() const {
    return static_cast<int64_t>(static_cast<uint32_t>(value)) - kLead;
  }
  constexpr int64_t Steps() const { return static_cast<int64_t>(value >> 32); }

  VEK_INLINE void TakeRecord() { value -= uint64_t{1} << 32 | 1; }
  VEK_INLINE void TakeDepth() { value -= 1; }

  friend constexpr bool operator==(Budget a, Budget b) { return a.value == b.value; }

 private:
  static constexpr uint32_t kLead = 4;
  uint64_t value;
};

// What becomes of an abort that comes up to a run of records: the last record that doesn't pass it
// on decides. Every single literal byte behind that record keeps a step of the budget.
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

// The registers of the matcher: where it stands in the program and in the subject.
struct Registers {
  const ProgramNode* node;
  const uint8_t* at;
  Budget budget;
  OnAbort onAbort;
};

enum class Choice : uint8_t {
  kBytes,          // greedy: gives back a byte at a time
  kCharacters,     // greedy: gives back a character at a time
  kCopies,         // greedy: gives back a copy of what a group captured
  kLazy,           // takes one more
  kGroup,          // an open group: its next alternative, or to go on behind it
  kSkippedGroup,   // a lazy group that was passed over at first
  kGroupEnd,       // a repetition's end: its undoing, and what else can follow it
  kLookaround,     // the body of a look-around
  kCondition,      // the look-around that a conditional depends on
  kAtomic,         // the body of an atomic group
  kAtomicRepeats,  // repetitions of an atomic group that can be given back
  kAtomicLazy,     // an atomic group that takes one more
};

// How far a repetition's end has gone through what can follow it.
enum class EndPhase : uint8_t { kBody, kBehindFirst, kBehind };

struct Frame {
  Budget budget;
  OnAbort onAbort;
  int32_t skew;
  uint32_t at;    // offset in the subject
  uint32_t node;  // index of the record
  int32_t count;  // repetitions left to give back or to take; kBytes: the lowest offset
  Choice choice;
  EndPhase phase;

  struct GroupPart {
    uint32_t captureStart;
    int32_t captureLength;  // below 0 for an unset slot
    int32_t minimum;
    int32_t maximum;
    uint32_t start;
    int32_t alternative;  // that is tried now, 0 for the first or none to follow
  };
  // A program in the program: it ends at a record of its own, and what comes back from it comes
  // here.
  struct SubPart {
    Frame* around;
    uint32_t end;
    int32_t alternative;
    uint32_t bodyAt;
    int32_t minimum;
    int32_t maximum;
  };
  union {
    GroupPart group;
    SubPart sub;
  };
};
static_assert(sizeof(Frame) == 64, "what the header promises for each level of depth");

}  // namespace vekch::regexp

#endif
