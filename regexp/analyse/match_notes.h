// Notes for the matcher in the records' `ptr`, written once when a pattern is compiled: where a
// group's alternatives and ends are, which options hold, which set a class is, and what must follow
// a repetition. They tell nothing that the records don't; they save looking for it.
//
//   openings             GroupNote
//   OpAlternative        AlternativeNote
//   OpGroupEnd           index of its opening record
//   OpGreedy, OpLazy     FollowNote
//   OpClass              address of its CharacterSet; below kOptionsEnd the options, if no set had
//                        room
//   OpCharType           address of its CharacterSet
//   OpCategory           the set of the category's classes of code points
//   OpAssert, OpBackref, OpCodePoint
//                        the options that hold there
//
// Items of a class keep what the compiler left there.

#ifndef VEKCH_REGEXP_ANALYSE_MATCH_NOTES_H
#define VEKCH_REGEXP_ANALYSE_MATCH_NOTES_H

#include <stdint.h>

#include "regexp/characters/character_set.h"
#include "regexp/object/program.h"

namespace vekch::regexp {

// No record 0 is an alternative of a group, nor the end of one: 0 stands for none.
struct GroupNote {
  int32_t firstAlternative;
  // Every match passes through the group once, so that what it captured before never matters.
  int32_t isCertain;
};

struct AlternativeNote {
  int32_t next;
  int32_t groupEnd;  // 0 at top level
};

// What the first byte behind a repetition must be, so that a try with another one is in vain.
struct FollowNote {
  enum Kind : uint8_t { kAnything, kByte, kSet };

  uint64_t target : 48;  // kByte: one byte in both cases, or twice the same; kSet: the address
  uint64_t kind : 4;
  uint64_t isDisjoint : 4;  // no character that is repeated begins with such a byte
  uint64_t passes : 8;      // records before the test; each would take of the budgets

  uint8_t FirstByte() const { return static_cast<uint8_t>(target); }
  uint8_t SecondByte() const { return static_cast<uint8_t>(target >> 8); }
  const CharacterSet* Set() const { return PointerFrom<CharacterSet>(target); }
};

constexpr uint64_t kOptionsEnd = 32;

template <class Note>
inline Note NoteOf(const ProgramNode& node) {
  static_assert(sizeof(Note) <= sizeof node.ptr);
  Note note;
  __builtin_memcpy(&note, &node.ptr, sizeof note);
  return note;
}

template <class Note>
inline void SetNote(ProgramNode* node, const Note& note) {
  node->ptr = 0;
  __builtin_memcpy(&node->ptr, &note, sizeof note);
}

inline int32_t OptionsNote(const ProgramNode& node) { return static_cast<int32_t>(node.ptr); }

// The set of an OpCharType or OpClass, or null for a class without one.
inline const CharacterSet* SetNoteOf(const ProgramNode& node) {
  return node.ptr < kOptionsEnd ? nullptr : PointerFrom<CharacterSet>(node.ptr);
}

// An entry of the first work table: one for each group, by its serial.
struct GroupEntry {
  int32_t minimum;  // repetitions that are still due
  int32_t maximum;  // repetitions that are still allowed
  uint32_t start;   // offset in the subject where the current repetition began
  int32_t unused[5];
};

struct SearchPlan;

// Entry 0, which belongs to no group.
struct SearchInfo {
  int32_t firstAlternative;  // at top level, 0 for none
  int32_t mostDepth;         // that a match can need, INT32_MAX where that depends on the subject
  uint8_t* room;             // what is free of the table, null once there is not enough
  const SearchPlan* plan;    // null as long as there is none
  int32_t searches;          // that did without a plan
  int32_t readsOpenGroups;   // not 0 if a group is referred to before its end
};
static_assert(sizeof(GroupEntry) == 32 && sizeof(SearchInfo) == 32);

// Writes the notes of a compiled program. Sets of classes lie in the first work table behind the
// entries of the program's groups, as long as there is room.
void WriteNotes(RegExpState* state);

inline GroupEntry* GroupsOf(RegExpState* state) {
  return reinterpret_cast<GroupEntry*>(state->workTableA);
}

inline SearchInfo* InfoOf(RegExpState* state) {
  return reinterpret_cast<SearchInfo*>(state->workTableA);
}

}  // namespace vekch::regexp

#endif
