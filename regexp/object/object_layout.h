// SPDX-License-Identifier: MIT

// The pattern object as the library fills it. include/vekch/regexp_program.h describes the header
// and the program; between them lie two work tables, 48,000 bytes that are one room here:
//
//   PatternFacts   what is known of the pattern as a whole, where no group's entry is: serials
//                  begin with 1
//   GroupEntry     one for each group, by its serial
//   free           what FreeRoom hands out, from its front on
//   slots          what each capture holds, and the whole match in slot 0, up to the room's end
//
// The first table is as large as the facts and the entries of as many groups as a pattern can have,
// the second as large as the slots of as many captures, so that both always fit.

#ifndef VEKCH_REGEXP_OBJECT_OBJECT_LAYOUT_H
#define VEKCH_REGEXP_OBJECT_OBJECT_LAYOUT_H

#include <stddef.h>
#include <stdint.h>

#include "frame/expect.h"
#include "vekch/regexp_program.h"

namespace vekch::regexp {

// Bytes of a pattern up to its terminating zero byte, which is the last byte read.
inline uint32_t LengthOf(const uint8_t* pattern) {
  uint32_t length = 0;
  while (pattern[length] != 0) {
    ++length;
  }
  return length;
}

constexpr uint32_t ObjectSize(uint32_t patternLength) {
  return RegExpFixedSize + RegExpSizePerByte * patternLength;
}

// Groups carry serials from 1 to below this.
constexpr int32_t kSerialEnd = RegExpTableSize;

// A group, from its compilation on. All entries are zero before.
struct GroupEntry {
  int32_t opening;  // index of the opening record
  int32_t around;   // serial of the group around it, 0 at top level

  struct Compiling {
    int32_t options;       // in force outside the group
    int32_t classEnd;      // index after the items of the last class before the group
    int32_t alternatives;  // how often "|" is in it
    int32_t fixedLength;   // of the closed body, -1 if it is not fixed
  };
  struct Analysing {
    int32_t lastAlternative;  // index of its record, 0 for none yet
    int32_t depth;            // levels that what is around takes up to the group
  };
  struct Matching {
    int32_t minimum;  // repetitions that are still due
    int32_t maximum;  // repetitions that are still allowed
    uint32_t start;   // offset in the subject where the current repetition began
    int32_t unused[3];
  };
  union {
    Compiling compiling;
    Analysing analysing;
    Matching matching;
  };
};

// The pattern as a whole. Offsets count from the object's start; 0 stands for none.
struct PatternFacts {
  int32_t firstAlternative;   // index of its record at top level, 0 for none
  int32_t mostDepth;          // that a match can need, INT32_MAX where that depends on the subject
  uint32_t freeFrom;          // where the part of the room begins that is free
  uint32_t plan;              // the search plan, once there is one
  uint32_t fastProgram;       // what the fast matcher runs, once there is one
  uint8_t planless;           // searches that did without, kNeverPlanned if all will
  uint8_t readsOpenGroups;    // not 0 if a group is referred to before its end
  uint8_t isUntranslated;     // not 0 if there can't be a program for the fast matcher
  uint8_t hasHiddenCaptures;  // not 0 if captures stand where the pre-scan saw a class
  // Of a prefix literal that is found in either case: where the two bytes are that
  // texts hold least often.
  int32_t rarest[2];
};
constexpr uint8_t kNeverPlanned = UINT8_MAX;

// The layout is part of the library's binary interface.
static_assert(sizeof(ProgramNode) == 24 && offsetof(ProgramNode, op) == 0);
static_assert(offsetof(ProgramNode, a) == 4 && offsetof(ProgramNode, b) == 8);
static_assert(offsetof(ProgramNode, c) == 12 && offsetof(ProgramNode, ptr) == 16);
static_assert(OpChar == 0x10000000 && OpGrapheme == 0x1000001A);
static_assert(RegExpOperationEnd == OpGrapheme + 1);

static_assert(offsetof(RegExpState, regExpTag) == 0 && offsetof(RegExpState, compileFlags) == 4);
static_assert(offsetof(RegExpState, nodeCount) == 8 && offsetof(RegExpState, captureCount) == 12);
static_assert(offsetof(RegExpState, requiredLiteralIndex) == 16);
static_assert(offsetof(RegExpState, matchLimit) == 20);
static_assert(offsetof(RegExpState, characterFormat) == 24);
static_assert(offsetof(RegExpState, searchMode) == 28);
static_assert(offsetof(RegExpState, workTableA) == 32);
static_assert(offsetof(RegExpState, workTableB) == 32 + 32000);
static_assert(sizeof(RegExpState) == 48032 && alignof(RegExpState) == alignof(ProgramNode));
static_assert(ObjectSize(0) == sizeof(RegExpState) + sizeof(ProgramNode));
static_assert(ObjectSize(1) - ObjectSize(0) == sizeof(ProgramNode));

static_assert(sizeof(PatternFacts) == sizeof(GroupEntry));
static_assert(sizeof(RegExpState::workTableA) == RegExpTableSize * sizeof(GroupEntry));
static_assert(sizeof(RegExpState::workTableB) == RegExpTableSize * sizeof(RegExpFindResult));

// ---- The parts of an object.

inline ProgramNode* ProgramOf(RegExpState* state) {
  return reinterpret_cast<ProgramNode*>(state + 1);
}
inline const ProgramNode* ProgramOf(const RegExpState* state) {
  return reinterpret_cast<const ProgramNode*>(state + 1);
}

inline PatternFacts* FactsOf(RegExpState* state) {
  return reinterpret_cast<PatternFacts*>(state->workTableA);
}
inline const PatternFacts* FactsOf(const RegExpState* state) {
  return reinterpret_cast<const PatternFacts*>(state->workTableA);
}

// By serial; there is no entry 0.
inline GroupEntry* GroupsOf(RegExpState* state) {
  return reinterpret_cast<GroupEntry*>(state->workTableA);
}

// How many slots a match writes. Hidden captures have slots as well, which nobody reads; that no
// pattern has more groups than the table has entries holds for them too.
inline int32_t SlotCount(const RegExpState* state) {
  return FactsOf(state)->hasHiddenCaptures != 0 ? RegExpTableSize : state->captureCount;
}

// By the numbers of captures, 0 for the whole match.
inline RegExpFindResult* SlotsOf(RegExpState* state) {
  return reinterpret_cast<RegExpFindResult*>(state + 1) - SlotCount(state);
}

// How deep a match may go.
inline int32_t DepthLimit(const RegExpState& state) { return state.matchLimit / RegExpDepthShare; }

// What is left of the room. Parts of it are handed out for as long as the pattern lives; who gets
// none does without what he wanted to keep there, and says so where he asks.
class FreeRoom {
 public:
  explicit FreeRoom(RegExpState* patternState) : state(patternState) {}

  // All of it, after the entries of groups up to a serial.
  void Open(int32_t lastSerial) {
    FactsOf(state)->freeFrom =
        OffsetOf(reinterpret_cast<const uint8_t*>(GroupsOf(state) + lastSerial + 1));
  }

  // Where it begins, and how much there is: for what is needed for a moment only.
  uint8_t* Begin() const { return reinterpret_cast<uint8_t*>(state) + FactsOf(state)->freeFrom; }
  int64_t Size() const { return reinterpret_cast<uint8_t*>(SlotsOf(state)) - Begin(); }

  // So many bytes, rounded up to whole words, or null if there are not as many.
  uint8_t* Take(int64_t bytes) {
    VEK_EXPECT(bytes >= 0 && FactsOf(state)->freeFrom != 0);
    const int64_t rounded = (bytes + 7) & -int64_t{8};
    if (rounded > Size()) {
      return nullptr;
    }
    uint8_t* const taken = Begin();
    FactsOf(state)->freeFrom += static_cast<uint32_t>(rounded);
    return taken;
  }

  // Back to a position in what was taken last.
  void GiveBack(const uint8_t* position) { FactsOf(state)->freeFrom = OffsetOf(position); }

  uint32_t OffsetOf(const uint8_t* position) const {
    return static_cast<uint32_t>(position - reinterpret_cast<const uint8_t*>(state));
  }

 private:
  RegExpState* state;
};

}  // namespace vekch::regexp

#endif
