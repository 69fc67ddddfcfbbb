// SPDX-License-Identifier: MIT

// A compiled program in the form that the fast matcher runs: compact operations that know where
// they lead, and at each choice the bytes that each of its ways can begin with. Made of the records
// when it pays, in the free room of the pattern object.
//
// Operations count no budget. Instead each repetition of a group is charged with the most levels of
// depth that the exact matcher could need for it, and the translation with the most that all its
// records could need once: while the sum stays below the depth of the search, neither budget can
// run out, and the exact matcher would find the same.

#ifndef VEKCH_REGEXP_FAST_FAST_PROGRAM_H
#define VEKCH_REGEXP_FAST_FAST_PROGRAM_H

#include <stdint.h>

#include "regexp/characters/wide_set.h"
#include "regexp/object/object_layout.h"
#include "strings/kernels/block.h"
#include "strings/kernels/range_set.h"

namespace vekch::regexp {

enum class FastCode : uint8_t {
  kJump,           // nothing but its `next`
  kAccept,         // the end of the program
  kByte,           // one of two bytes, which may be the same
  kBytes,          // a run of bytes
  kCaselessBytes,  // a run of bytes, letters in either case
  kAnyByte,        // a byte
  kSet,            // a byte of a set
  kOpenSet,        // a byte of a set, or a character of several bytes, which all are members
  kCharacter,      // a character of whatever length that its record accepts
  kCopy,           // what a group has captured
  kByteRun,        // kByte, repeated
  kAnyRun,         // kAnyByte, repeated
  kSetRun,         // kSet, repeated
  kSetSpan,        // kSet, repeated without end, and nothing is given back
  kOptionalSet,    // kSet, once or not, and nothing is given back
  kOpenSetRun,     // kOpenSet, repeated
  kCharacterRun,   // kCharacter, repeated
  kLazySet,        // kSet, as few as possible
  kLazyOpenSet,    // kOpenSet, as few as possible
  kLazyCharacter,  // kCharacter, as few as possible
  kOpen,           // a capturing group begins
  kClose,          // and ends
  kChoice,         // ways to go on, the preferred one first
  kRepeat,         // kLoop of which nothing is kept, and the kChoice that it leads to
  kEnterLoop,      // a repeated group begins
  kLoop,           // one repetition of it is over
  kAssert,         // another condition on the position; "^" and "$" are those of lines
  kAtStart,        // the subject begins here
  kAtEnd,          // the text ends here, but for a newline
  kFixedTwo,       // two or three bytes, each of a set of its own, and the captures among them
  kFixedFour,      // the same of four to seven bytes
  kFixedEight,     // of eight to fifteen
  kFixed,          // and of more
  kLookaround,     // a sub-program: what follows it is tried at the same position
  kAtomic,         // a sub-program: no other way through it is tried once it has matched
  kSubEnd,         // the end of a sub-program
};

constexpr int32_t kMostTargets = 8;  // bits of a choice's byte

// What is known of a repeated byte. Where the repetition gives nothing back, the followers are left
// out.
struct FastRunTables {
  kernels::RangeSet members;
  uint8_t follow[256];  // not 0 for a byte that can come next
};

// A group that lies in bytes of a fixed number, as offsets among them.
struct FastCapture {
  uint16_t slot;
  uint8_t isUndone;
  uint8_t begin;
  uint8_t end;
};
constexpr int32_t kMostFixed = 128;  // bytes

struct FastOp {
  // How a character is repeated.
  struct Run {
    int32_t minimum;
    int32_t maximum;
    union {
      const uint8_t* follow;        // not 0 for a byte that can come next; null where all can
      const FastRunTables* tables;  // kSetRun; null where all can
    };
  };
  // What is done where a run ends.
  struct End {
    uint8_t byte[2];  // what has to follow, in both cases, if it has kTakesByte
    uint16_t slot;    // of the group around it, if it has kCaptures; of kClose
  };
  struct Fixed {
    uint16_t length;
    uint8_t ranges;  // at each position
    uint8_t captures;
  };
  struct FixedCaptures {
    const FastCapture* first;
    int32_t cost;  // levels that the repetitions in it may take
  };
  // How a group is.
  struct Loop {
    int32_t minimum;
    int32_t maximum;
    uint16_t again;        // a further repetition, which is due
    uint16_t againOrExit;  // a further repetition or what follows, in the order of preference
    uint16_t exit;         // what follows
    uint16_t cost;         // levels that a repetition may take
  };
  struct Ways {
    uint8_t count;
    uint8_t atEnd;  // bit k where target k can match at the end of the text
    uint16_t cost;  // kRepeat: levels that a repetition may take
  };

  FastCode code;
  uint8_t flags;
  uint16_t next;  // what follows it, which is the operation after it or a jump there
  union {
    int32_t length;  // kBytes, kCaselessBytes; characters before a look-behind
    int32_t letter;  // kAssert
    End end;         // kClose, kByteRun, kAnyRun, kSetRun
    Ways ways;       // kChoice, kRepeat
    Fixed fixed;     // kFixed
    // kCharacter and its repetitions, kOpenSetRun, kLazySet, kLazyOpenSet: where what tests them
    // faster is, a WideSet or a kernels::RangeSet, as an offset from the operations; 0 for none.
    uint32_t aid;
  };
  union {
    const uint8_t* bytes;   // the bytes of a run, or the members of a set, 0xFF for each
    const uint8_t* waysOf;  // of a choice: bit k for a byte that target k can begin with, or null
    const uint8_t* ranges;  // kFixed: those of each position in a block, block by block
    const ProgramNode* record;  // kCharacter and its repetitions, kCopy
    uint8_t pair[2];            // kByte, kByteRun: the two bytes
    int64_t serial;             // kOpen, kClose, kEnterLoop, kLoop: of the group
  };
  union {
    Run run;
    Loop loop;                       // kEnterLoop, kLoop
    FixedCaptures captures;          // kFixed
    uint16_t targets[kMostTargets];  // of a choice; the first is the body of kLookaround
  };
};
static_assert(sizeof(FastOp) == 32);

// Shows every position of an operation that names another one.
template <class Visit>
void ForEachTarget(FastOp* op, Visit visit) {
  switch (op->code) {
    case FastCode::kAccept:
    case FastCode::kSubEnd:
      break;
    case FastCode::kChoice:
    case FastCode::kRepeat:
      for (int32_t k = 0; k < op->ways.count; ++k) {
        visit(&op->targets[k]);
      }
      break;
    case FastCode::kLoop:
      visit(&op->loop.againOrExit);
      visit(&op->loop.exit);
      if (op->loop.again != 0) {
        visit(&op->loop.again);
      }
      break;
    case FastCode::kLookaround:
    case FastCode::kAtomic:
      visit(&op->targets[0]);
      visit(&op->next);
      break;
    default:
      visit(&op->next);
  }
}

enum FastFlag : uint8_t {
  kGivesNothingBack = 1,  // what follows a run begins with none of its bytes
  kFollowsAtEnd = 2,      // what follows a run can match where the text ends
  kIsUndone = 4,          // a group's start or slot matters where a match goes another way
  kMayBeEmpty = 8,        // a repetition of the group may consume nothing
  kIsCounted = 16,        // the group's repetitions are counted
  kIsLazy = 32,           // what follows is preferred
  kIsNegative = 64,       // a look-around that must not match
};
constexpr uint8_t kIsBehind = kGivesNothingBack;  // of a look-around: it is a look-behind
constexpr uint8_t kTakesByte = kIsNegative;       // of a run: a byte has to follow
constexpr uint8_t kCaptures = kIsLazy;            // of a run: a group is around it

constexpr int32_t kMostEmptyLoops = 3;  // with more, failures are not remembered

// What must follow a run that is alone.
enum class RunEnd : uint8_t { kAnything, kLineEnd, kTextEnd, kTextEndOrNewline };

// A pattern that is one run of a set, or one of its members; perhaps captured, or before an end.
struct LoneRun {
  const uint8_t* member;         // not 0 for a byte of the set
  const kernels::RangeSet* set;  // the same in another form, or null
  WideSet* wide;                 // of characters of several bytes, or null
  int32_t minimum;
  RunEnd end;
  bool isOne;  // not repeated
  bool isCaptured;
};

struct FastProgram {
  const FastOp* ops;
  RegExpFindResult* slots;  // of the object
  uint16_t entry;
  uint16_t entryAtStart;  // where the subject begins
  bool isUtf8;            // the format that it was made for
  bool clearsSlots;       // a match may leave slots as they are
  bool beginsAtEnd;       // a match can begin where the text ends
  bool onlyAtStart;       // and nowhere but where the subject begins
  int32_t directLength;   // of a subject whose beginning is tried before anything else, or -1
  int32_t depth;          // levels that a match can need beside its repetitions of groups
  int32_t opCount;
  int32_t mostCost;  // of the loops
  bool remembers;    // failures can be remembered
  int8_t emptyLoopCount;
  int16_t emptyLoops[kMostEmptyLoops];  // serials of groups that may match nothing, repeated
  uint8_t canBegin[256];                // not 0 for a byte that a match can begin with
  // Of the character that every match begins with, if it may have several bytes; or null.
  WideSet* firstCharacter;
  const LoneRun* loneRun;  // null where the pattern is more
};

// What an offset from the operations leads to.
template <class Aid>
inline Aid* AidAt(const FastOp* ops, uint32_t offset) {
  auto* const base = reinterpret_cast<uint8_t*>(const_cast<FastOp*>(ops));
  return offset == 0 ? nullptr : reinterpret_cast<Aid*>(base + offset);
}

// The one that was made, or null.
inline const FastProgram* FastProgramOf(const RegExpState* state) {
  const uint32_t offset = FactsOf(state)->fastProgram;
  return offset == 0 ? nullptr
                     : reinterpret_cast<const FastProgram*>(
                           reinterpret_cast<const uint8_t*>(state) + offset);
}

}  // namespace vekch::regexp

#endif
