// SPDX-License-Identifier: MIT

// Walking along a compiled program by the indices of its records, without matching anything.

#ifndef VEKCH_REGEXP_OBJECT_PROGRAM_WALK_H
#define VEKCH_REGEXP_OBJECT_PROGRAM_WALK_H

#include <stdint.h>

#include "regexp/object/object_layout.h"
#include "regexp/object/record_notes.h"

namespace vekch::regexp {

struct ProgramWalk {
  const ProgramNode* nodes;
  int32_t count;

  explicit ProgramWalk(const RegExpState& state)
      : nodes(ProgramOf(&state)), count(state.nodeCount) {}

  const ProgramNode* QuantifierAt(int32_t index) const {
    return regexp::QuantifierAt(nodes + index, nodes + count);
  }

  // The index after an atom, where its quantifier is if it has one.
  int32_t AfterAtom(int32_t index) const { return index + AtomSize(nodes[index]); }

  int32_t GroupEnd(int32_t opening) const { return opening + nodes[opening].b + 1; }

  bool HasAlternatives(int32_t opening) const { return FirstAlternativeOf(nodes[opening]) != 0; }

  // Whether every way leads from a record to the next one, without anything read. An end is asked
  // for where its opening has been passed.
  bool IsPassed(int32_t index) const {
    const ProgramNode& node = nodes[index];
    switch (node.op) {
      case OpSetOptions:
      case OpGroupEnd:
        return true;
      case OpAssert:
        return QuantifierAt(index + 1) == nullptr;
      case OpCapture:
      case OpGroup:
      case OpOptionGroup:
        return !HasAlternatives(index) && QuantifierAt(GroupEnd(index) + 1) == nullptr;
      default:
        return false;
    }
  }

  // The first record from `index` on that is not passed; raises `passes` by those that are.
  int32_t SkipPassed(int32_t index, int32_t* passes) const {
    while (index < count && IsPassed(index)) {
      ++index;
      ++*passes;
    }
    return index;
  }

  // Whether what is at an index occurs at least once there, if it is an atom.
  bool IsCertain(int32_t index) const {
    if (index >= count) {
      return false;
    }
    const ProgramNode* const quantifier = QuantifierAt(AfterAtom(index));
    return quantifier == nullptr || quantifier->a > 0;
  }

  bool IsCertainLiteral(int32_t index) const { return IsCertain(index) && IsLiteral(nodes[index]); }

  // The set of characters that the record is, or null.
  const CharacterSet* SetAt(int32_t index) const {
    return HasSet(nodes[index]) ? SetOf(nodes[index]) : nullptr;
  }
};

}  // namespace vekch::regexp

#endif
