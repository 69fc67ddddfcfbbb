// SPDX-License-Identifier: MIT

// What is noted of a program for those who match it, once it is compiled: in the records' `ptr`,
// which the program itself needs for strings, scripts and items of classes alone. Notes say
// nothing that the records don't; they save looking for it. Each is read through a getter of its
// own, which expects a record that has it.

#ifndef VEKCH_REGEXP_OBJECT_RECORD_NOTES_H
#define VEKCH_REGEXP_OBJECT_RECORD_NOTES_H

#include <stdint.h>

#include "regexp/object/record.h"

namespace vekch::regexp {

struct CharacterSet;

struct AlternativeNote {
  int32_t next;
  int32_t groupEnd;  // 0 at top level

  static AlternativeNote Of(uint64_t word) {
    return {static_cast<int32_t>(word), static_cast<int32_t>(word >> 32)};
  }
  uint64_t Word() const {
    return static_cast<uint32_t>(next) | static_cast<uint64_t>(groupEnd) << 32;
  }
};

// ---- What a note is depends on its record:
//
//   openings                         index of the first alternative, 0 for none
//   OpAlternative                    AlternativeNote
//   OpGroupEnd                       index of the opening record
//   OpCharType, OpClass              address of the set; of a class without one the options
//   OpCategory                       the set of the category's classes of code points
//   OpAssert, OpBackref, OpCodePoint the options in force

// Index of the first alternative of the group that begins at a record, 0 for none: no record 0 is
// an alternative of a group.
inline int32_t FirstAlternativeOf(const ProgramNode& node) {
  VEK_EXPECT(IsOpening(node));
  return static_cast<int32_t>(node.ptr);
}

inline AlternativeNote AlternativeNoteOf(const ProgramNode& node) {
  VEK_EXPECT(node.op == OpAlternative);
  return AlternativeNote::Of(node.ptr);
}

// Index of the opening record of the group that ends at a record.
inline int32_t OpeningOf(const ProgramNode& node) {
  VEK_EXPECT(node.op == OpGroupEnd);
  return static_cast<int32_t>(node.ptr);
}

inline uint64_t CategoriesOf(const ProgramNode& node) {
  VEK_EXPECT(node.op == OpCategory);
  return node.ptr;
}

constexpr bool HasSet(const ProgramNode& node) {
  return node.op == OpCharType || node.op == OpClass;
}

constexpr uint64_t kOptionsEnd = 32;  // no address is below

// The set of an OpCharType or OpClass, or null for a class without one.
inline const CharacterSet* SetOf(const ProgramNode& node) {
  VEK_EXPECT(HasSet(node));
  return node.ptr < kOptionsEnd ? nullptr : PointerFrom<CharacterSet>(node.ptr);
}

// The options in force at a record that asks for them.
inline int32_t OptionsOf(const ProgramNode& node) {
  VEK_EXPECT(node.op == OpAssert || node.op == OpBackref || node.op == OpCodePoint ||
             (node.op == OpClass && SetOf(node) == nullptr));
  return static_cast<int32_t>(node.ptr);
}

// ---- For the one who notes.

inline void NoteFirstAlternative(ProgramNode* node, int32_t alternative) {
  VEK_EXPECT(IsOpening(*node));
  node->ptr = static_cast<uint32_t>(alternative);
}

inline void Note(ProgramNode* node, const AlternativeNote& alternative) {
  VEK_EXPECT(node->op == OpAlternative);
  node->ptr = alternative.Word();
}

inline void NoteOpening(ProgramNode* node, int32_t opening) {
  VEK_EXPECT(node->op == OpGroupEnd);
  node->ptr = static_cast<uint32_t>(opening);
}

inline void NoteSet(ProgramNode* node, const CharacterSet* set) {
  VEK_EXPECT(HasSet(*node));
  node->ptr = reinterpret_cast<uintptr_t>(set);
}

inline void NoteCategories(ProgramNode* node, uint64_t categories) {
  VEK_EXPECT(node->op == OpCategory);
  node->ptr = categories;
}

inline void NoteOptions(ProgramNode* node, int32_t options) {
  VEK_EXPECT(options >= 0 && options < static_cast<int32_t>(kOptionsEnd));
  node->ptr = static_cast<uint32_t>(options);
}

}  // namespace vekch::regexp

#endif
