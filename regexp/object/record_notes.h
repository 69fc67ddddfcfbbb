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

// How a group is gone through. Of an atomic group or a look-around it isn't noted.
enum class GroupWay : uint8_t {
  kPassedOver,   // "(a){0}"
  kTransparent,  // "(?:a)": nothing to choose, nothing to undo
  kChoice,       // "(?:a|b)": nothing to undo
  // Every match passes through it once, so that what it captured before never matters: what it
  // changes need not be undone where the depth can't run out.
  kCertain,        // "(a)"
  kCertainChoice,  // "(a|b)"
  kOnce,           // any other that is not repeated
  // Repeated, from here on.
  kGreedy,       // "(a)+"
  kOptional,     // "(a)*"
  kLazy,         // "(a)+?"
  kSkippedFirst  // "(a)*?"
};

constexpr bool IsRepeated(GroupWay way) { return way >= GroupWay::kGreedy; }

// No record 0 is an alternative of a group, nor the end of one: 0 stands for none.
struct GroupNote {
  int32_t firstAlternative;
  GroupWay way;

  static GroupNote Of(uint64_t word) {
    return {static_cast<int32_t>(word), static_cast<GroupWay>(word >> 32)};
  }
  uint64_t Word() const {
    return static_cast<uint32_t>(firstAlternative) | static_cast<uint64_t>(way) << 32;
  }
};

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

// What the first byte after a repetition must be, so that a try with another one is in vain.
struct FollowNote {
  enum Kind : uint8_t { kAnything, kByte, kSet };

  // kByte: one byte in both cases, or twice the same. kSet: index of the record that has the set.
  uint32_t target;
  Kind kind;
  uint8_t isDisjoint;  // no character that is repeated begins with such a byte
  uint8_t passes;      // records before the test; each would take of the budgets

  static FollowNote Of(uint64_t word) {
    return {static_cast<uint32_t>(word), static_cast<Kind>(word >> 32 & 0xFF),
            static_cast<uint8_t>(word >> 40), static_cast<uint8_t>(word >> 48)};
  }
  uint64_t Word() const {
    return target | uint64_t{kind} << 32 | uint64_t{isDisjoint} << 40 | uint64_t{passes} << 48;
  }

  uint8_t FirstByte() const { return static_cast<uint8_t>(target); }
  uint8_t SecondByte() const { return static_cast<uint8_t>(target >> 8); }
  inline const CharacterSet& SetIn(const ProgramNode* program) const;
};

// ---- What a note is depends on its record:
//
//   openings                         GroupNote
//   OpAlternative                    AlternativeNote
//   OpGroupEnd                       index of the opening record
//   OpGreedy, OpLazy after an atom  FollowNote
//   OpCharType, OpClass              address of the set; of a class without one the options
//   OpCategory                       the set of the category's classes of code points
//   OpAssert, OpBackref, OpCodePoint the options in force

inline GroupNote GroupNoteOf(const ProgramNode& node) {
  VEK_EXPECT(IsOpening(node));
  return GroupNote::Of(node.ptr);
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

inline FollowNote FollowNoteOf(const ProgramNode& node) {
  VEK_EXPECT(IsQuantifier(node));
  return FollowNote::Of(node.ptr);
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

inline const CharacterSet& FollowNote::SetIn(const ProgramNode* program) const {
  VEK_EXPECT(kind == kSet);
  return *SetOf(program[target]);
}

// ---- For the one who notes.

inline void Note(ProgramNode* node, const GroupNote& group) {
  VEK_EXPECT(IsOpening(*node));
  node->ptr = group.Word();
}

inline void Note(ProgramNode* node, const AlternativeNote& alternative) {
  VEK_EXPECT(node->op == OpAlternative);
  node->ptr = alternative.Word();
}

inline void Note(ProgramNode* node, const FollowNote& follow) {
  VEK_EXPECT(IsQuantifier(*node));
  node->ptr = follow.Word();
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
