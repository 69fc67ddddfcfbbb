// SPDX-License-Identifier: MIT

// Repeated characters and back-references. A greedy repetition takes all it can, and gives back one
// at a time; a lazy one takes one more when what follows has failed.

#include "regexp/characters/bytes.h"
#include "regexp/characters/properties.h"
#include "regexp/match/matcher.h"
#include "unicode/utf8.h"

namespace vekch::regexp {
namespace {

bool IsMark(uint32_t codePoint) {
  return codePoint >= 0x80 && MatchCategory(static_cast<int32_t>(codePoint), kCategoryM, 0);
}

constexpr int32_t AtMost(int64_t value, int64_t most) {
  return static_cast<int32_t>(value < most ? value : most);
}

}  // namespace

// ---- One character, or one copy.

// Bytes of the one character at `at` if the record accepts it, else 0. `at` lies before the end.
int32_t Matcher::CharacterLength(const ProgramNode& atom, const uint8_t* at) const {
  switch (atom.op) {
    case OpChar:
      return SameByte(*at, static_cast<uint8_t>(atom.a), IsCaseless(atom.c)) ? 1 : 0;
    case OpAnyByte:
      return 1;
    case OpCharType:
    case OpClass: {
      const Utf8Character character = isUtf8 ? ReadUtf8(at, limit) : Utf8Character{*at, 1};
      return IsMember(character, atom) ? character.length : 0;
    }
    default:
      break;
  }
  const Utf8Character character = ReadUtf8(at, limit);
  const auto value = static_cast<int32_t>(character.value);
  switch (atom.op) {
    case OpCategory:
      return InCategorySet(value, CategoriesOf(atom)) ? character.length : 0;
    case OpCodePoint:
    case OpRange:
    case OpScript: {
      const int32_t caseless = atom.op == OpCodePoint ? OptionsOf(atom) & RegExpOptionI : 0;
      return MatchPropertyItem(value, &atom, caseless) >= 0 ? character.length : 0;
    }
    default:
      break;
  }
  // OpGrapheme: the marks after the character as well.
  if (IsMark(character.value)) {
    return 0;
  }
  const uint8_t* end = at + character.length;
  while (end < limit) {
    const Utf8Character mark = ReadUtf8(end, limit);
    if (!IsMark(mark.value)) {
      break;
    }
    end += mark.length;
  }
  return static_cast<int32_t>(end - at);
}

// A class that has found no room for its set is asked item by item.
bool Matcher::IsMember(const Utf8Character& character, const ProgramNode& atom) {
  const CharacterSet* const set = SetOf(atom);
  if (set != nullptr && (character.length == 1 || set->wide != Wide::kMixed)) {
    return character.length == 1 ? set->member[character.value] != 0 : set->wide == Wide::kInside;
  }
  const int32_t options = set != nullptr ? set->options : OptionsOf(atom);
  return InClass(static_cast<int32_t>(character.value), atom, IsCaseless(options));
}

// Bytes of the copy of what a group captured, or -1. `at` lies before the end.
int32_t Matcher::CopyLength(const ProgramNode& atom, const uint8_t* at) const {
  const RegExpFindResult& slot = slots[atom.a];
  if (slot.length < 0 || slot.length > limit - at ||
      !SameBytes(at, slot.pointer, slot.length, IsCaseless(OptionsOf(atom)))) {
    return -1;
  }
  return slot.length;
}

// Bytes of one repetition, or -1 for none.
int32_t Matcher::RepetitionLength(const ProgramNode& atom, const uint8_t* at) const {
  if (at >= limit) {
    return -1;
  }
  if (atom.op == OpBackref) {
    return CopyLength(atom, at);
  }
  const int32_t length = CharacterLength(atom, at);
  return length > 0 ? length : -1;
}

// ---- Greedy repetitions.

Flow Matcher::Repeat(Registers* r, const ProgramNode& atom) {
  if (AfterAtom(atom)->op == OpLazy) {
    return RepeatLazily(r, atom);
  }
  return atom.op == OpBackref ? RepeatCopies(r, atom) : RepeatCharacters(r, atom);
}

// Goes on after a repetition, as what is left for it to do is put aside.
Flow Matcher::GoOnAfter(Registers* r, const ProgramNode& atom, Choice choice, int32_t count) {
  --r->budget.depth;
  Push(*r, choice)->count = count;
  r->onAbort = OnAbort();
  r->node = AfterAtom(atom) + 1;
  return IsKnown(*r, atom) ? Flow::kFail : Flow::kNext;
}

Flow Matcher::RepeatCharacters(Registers* r, const ProgramNode& atom) {
  const ProgramNode& quantifier = *AfterAtom(atom);
  uint32_t lowest = OffsetOf(r->at);
  int32_t count = 0;
  for (; count < quantifier.b; ++count) {
    const int32_t length = RepetitionLength(atom, r->at);
    if (length < 0) {
      break;
    }
    r->at += length;
    r->skew += SkewOf(atom, length);
    lowest = count < quantifier.a ? OffsetOf(r->at) : lowest;
  }
  if (count < quantifier.a) {
    return Flow::kFail;
  }
  return GoOnAfter(r, atom, Choice::kCharacters, static_cast<int32_t>(lowest));
}

Flow Matcher::GiveBack(Registers* r) {
  Frame& frame = Top();
  Restore(frame, r);
  NoteFailure(frame);
  const ProgramNode& atom = *r->node;
  const uint8_t* const lowest = subject + frame.count;
  if (r->at == lowest) {
    Pop();
    return Flow::kFail;
  }
  const uint8_t* const before = BeforeLast(atom, r->at, lowest);
  r->skew -= SkewOf(atom, static_cast<int32_t>(r->at - before));
  r->at = before;
  frame.at = OffsetOf(before);
  frame.skew = r->skew;
  r->node = AfterAtom(atom) + 1;
  return IsKnown(*r, atom) ? Flow::kFail : Flow::kNext;
}

// Where a repetition that ends at `at` ends with one character less.
const uint8_t* Matcher::BeforeLast(const ProgramNode& atom, const uint8_t* at,
                                   const uint8_t* lowest) const {
  const bool isOfBytes = atom.op == OpChar || atom.op == OpAnyByte || (HasSet(atom) && !isUtf8);
  const uint8_t* before = isOfBytes ? at - 1 : PreviousUtf8(at, lowest, limit);
  while (atom.op == OpGrapheme && IsMark(ReadUtf8(before, limit).value)) {
    before = PreviousUtf8(before, lowest, limit);
  }
  return before;
}

// An empty copy can be repeated as often as there are bytes.
Flow Matcher::RepeatCopies(Registers* r, const ProgramNode& atom) {
  const ProgramNode& quantifier = *AfterAtom(atom);
  const int64_t room = limit - r->at;
  int64_t most = quantifier.b < room ? quantifier.b : room;
  most = most < quantifier.a ? quantifier.a : most;
  int32_t count = 0;
  for (; count < most; ++count) {
    const int32_t length = RepetitionLength(atom, r->at);
    if (length < 0) {
      break;
    }
    r->at += length;
  }
  if (count < quantifier.a) {
    return Flow::kFail;
  }
  return GoOnAfter(r, atom, Choice::kCopies, count - quantifier.a);
}

Flow Matcher::GiveBackCopy(Registers* r) {
  Frame& frame = Top();
  Restore(frame, r);
  const ProgramNode& atom = *r->node;
  if (--frame.count < 0) {
    Pop();
    return Flow::kFail;
  }
  r->at -= slots[atom.a].length;
  frame.at = OffsetOf(r->at);
  r->node = AfterAtom(atom) + 1;
  return Flow::kNext;
}

// ---- Lazy repetitions.

Flow Matcher::RepeatLazily(Registers* r, const ProgramNode& atom) {
  const ProgramNode& quantifier = *AfterAtom(atom);
  const int64_t room = limit - r->at;
  for (int32_t count = 0; count < quantifier.a; ++count) {
    const int32_t length = RepetitionLength(atom, r->at);
    if (length < 0) {
      return Flow::kFail;
    }
    r->at += length;
    r->skew += SkewOf(atom, length);
  }
  return GoOnAfter(r, atom, Choice::kLazy, AtMost(quantifier.b, room) - quantifier.a);
}

Flow Matcher::TakeOneMore(Registers* r) {
  Frame& frame = Top();
  Restore(frame, r);
  NoteFailure(frame);
  const ProgramNode& atom = *r->node;
  const int32_t length = --frame.count < 0 ? -1 : RepetitionLength(atom, r->at);
  if (length < 0) {
    Pop();
    return Flow::kFail;
  }
  r->at += length;
  r->skew += SkewOf(atom, length);
  frame.at = OffsetOf(r->at);
  frame.skew = r->skew;
  r->node = AfterAtom(atom) + 1;
  return IsKnown(*r, atom) ? Flow::kFail : Flow::kNext;
}

}  // namespace vekch::regexp
