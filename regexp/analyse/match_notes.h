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
#include "regexp/object/object_layout.h"
#include "regexp/object/record.h"

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

  // kByte: one byte in both cases, or twice the same. kSet: index of the record that has the set,
  // as there is no room for an address.
  uint32_t target;
  Kind kind;
  uint8_t isDisjoint;  // no character that is repeated begins with such a byte
  uint8_t passes;      // records before the test; each would take of the budgets

  uint8_t FirstByte() const { return static_cast<uint8_t>(target); }
  uint8_t SecondByte() const { return static_cast<uint8_t>(target >> 8); }
  inline const CharacterSet& SetIn(const ProgramNode* program) const;
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

inline const CharacterSet& FollowNote::SetIn(const ProgramNode* program) const {
  return *SetNoteOf(program[target]);
}

// Writes the notes of a compiled program, and what is known of it as a whole. A class whose set has
// no room does without, and is tested item by item.
void WriteNotes(RegExpState* state);

}  // namespace vekch::regexp

#endif
