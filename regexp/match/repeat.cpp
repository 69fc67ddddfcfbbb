// SPDX-License-Identifier: MIT

// Repeated characters and back-references. A greedy repetition takes all it can, and gives back one
// at a time; a lazy one takes one more when what follows has failed. Where a byte is known that
// must follow, places without it are not tried.

#include "regexp/characters/bytes.h"
#include "regexp/characters/properties.h"
#include "regexp/match/matcher.h"
#include "strings/kernels/find_kernels.h"
#include "unicode/utf8.h"

namespace vekch::regexp {
namespace {

constexpr uint8_t kNewline = '\n';

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
      const CharacterSet* const set = SetOf(atom);
      const bool isAlone = *at < 0x80 || !isUtf8;
      return set != nullptr && isAlone ? set->member[*at] & 1 : WideLength(atom, at);
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
  // OpGrapheme: the marks behind the character as well.
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

// The same for a set, where the answer is not simply that for a byte.
int32_t Matcher::WideLength(const ProgramNode& atom, const uint8_t* at) const {
  const CharacterSet* const set = SetOf(atom);
  if (set != nullptr && set->wide == Wide::kOutside) {
    return 0;
  }
  const Utf8Character character = isUtf8 ? ReadUtf8(at, limit) : Utf8Character{*at, 1};
  if (set == nullptr) {
    const bool caseless = IsCaseless(OptionsOf(atom));
    return InClass(static_cast<int32_t>(character.value), atom, caseless) ? character.length : 0;
  }
  if (character.length == 1) {
    return set->member[*at] & 1;
  }
  // Letters of ASCII alone have two cases in a class, and code points look after themselves.
  const bool inside = set->wide == Wide::kInside || InClass(static_cast<int32_t>(character.value),
                                                            atom, IsCaseless(set->options));
  return inside ? character.length : 0;
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

// ---- What must follow.

// Only while the records before the test could have been passed.
VEK_INLINE bool Matcher::FollowApplies(const FollowNote& note, Budget budget) const {
  return note.kind != FollowNote::kAnything &&
         budget.Depth() >= static_cast<int64_t>(note.passes) && lowestDepth == 0;
}

VEK_INLINE bool Matcher::CanFollow(const FollowNote& note, const uint8_t* at) const {
  if (at >= limit) {
    return false;
  }
  if (note.kind == FollowNote::kByte) {
    return *at == note.FirstByte() || *at == note.SecondByte();
  }
  const CharacterSet& set = note.SetIn(program);
  return *at < 0x80 || !isUtf8 || set.wide == Wide::kOutside ? set.member[*at] != 0 : true;
}

// ---- Greedy repetitions.

Flow Matcher::Repeat(Registers* r, const ProgramNode& atom) {
  const ProgramNode& quantifier = *BehindAtom(atom);
  if (r->at >= limit && quantifier.a > 0) {
    return Flow::kFail;
  }
  if (quantifier.op == OpLazy) {
    return RepeatLazily(r, atom);
  }
  if (atom.op == OpBackref) {
    return RepeatCopies(r, atom);
  }
  return IsOfBytes(atom) ? RepeatBytes(r, atom) : RepeatCharacters(r, atom);
}

// Whether all that an atom accepts are single bytes.
VEK_INLINE bool Matcher::IsOfBytes(const ProgramNode& atom) const {
  if (atom.op == OpChar || atom.op == OpAnyByte) {
    return true;
  }
  if (atom.op != OpCharType && atom.op != OpClass) {
    return false;
  }
  const CharacterSet* const set = SetOf(atom);
  return !isUtf8 || (set != nullptr && set->wide == Wide::kOutside);
}

VEK_INLINE const uint8_t* Matcher::EndOfBytes(const ProgramNode& atom, const uint8_t* at,
                                              const uint8_t* end) const {
  if (atom.op == OpAnyByte) {
    return end;
  }
  const CharacterSet* const set = atom.op == OpChar ? nullptr : SetOf(atom);
  if (set == nullptr) {  // a class may have found no room for its set
    while (at < end && CharacterLength(atom, at) != 0) {
      ++at;
    }
    return at;
  }
  const uint8_t* const member = set->member;
  if (atom.op == OpCharType && atom.a == '.') {
    if (member[kNewline] != 0 || at == end) {
      return end;
    }
    const int32_t newline = kernels::FindByte(at, static_cast<int32_t>(end - at), kNewline);
    return newline < 0 ? end : at + newline;
  }
  while (at < end && member[*at] != 0) {
    ++at;
  }
  return at;
}

VEK_INLINE Flow Matcher::RepeatBytes(Registers* r, const ProgramNode& atom) {
  const ProgramNode& quantifier = *BehindAtom(atom);
  const int64_t room = limit - r->at;
  if (quantifier.a > room) {
    return Flow::kFail;
  }
  const uint8_t* const lowest = r->at + quantifier.a;
  const uint8_t* const end = EndOfBytes(atom, r->at, r->at + AtMost(quantifier.b, room));
  return end < lowest ? Flow::kFail : TryFrom(r, atom, Choice::kBytes, end, lowest);
}

VEK_INLINE Flow Matcher::RepeatCharacters(Registers* r, const ProgramNode& atom) {
  const ProgramNode& quantifier = *BehindAtom(atom);
  const uint8_t* end = r->at;
  const uint8_t* lowest = end;
  int32_t count = 0;
  const CharacterSet* const set = HasSet(atom) ? SetOf(atom) : nullptr;
  while (count < quantifier.b && end < limit) {
    if (count >= quantifier.a && set != nullptr && set->wide == Wide::kInside &&
        quantifier.b - count >= limit - end) {
      end = EndOfBytes(atom, end, limit);  // whole characters, since all of them are members
      break;
    }
    const int32_t length = CharacterLength(atom, end);
    if (length == 0) {
      break;
    }
    end += length;
    r->skew += SkewOf(atom, length);
    ++count;
    lowest = count <= quantifier.a ? end : lowest;
  }
  if (count < quantifier.a) {
    return Flow::kFail;
  }
  return TryFrom(r, atom, Choice::kCharacters, end, lowest);
}

// Goes on behind a repetition that ends at `end`, or further left, down to `lowest`.
VEK_INLINE Flow Matcher::TryFrom(Registers* r, const ProgramNode& atom, Choice choice,
                                 const uint8_t* end, const uint8_t* lowest) {
  const ProgramNode& quantifier = *BehindAtom(atom);
  r->budget.TakeDepth();
  const auto follow = FollowNoteOf(quantifier);
  bool isLast = end == lowest;
  if (FollowApplies(follow, r->budget)) {
    while (!CanFollow(follow, end)) {
      if (end == lowest || follow.isDisjoint != 0) {
        return Flow::kFail;
      }
      end = GivenBack(r, atom, choice, end, lowest);
    }
    isLast = end == lowest || follow.isDisjoint != 0;
  }
  r->at = end;
  if (isLast) {
    r->onAbort = OnAbort(OnAbort::kFails);
  } else {
    Push(*r, choice)->count = static_cast<int32_t>(OffsetOf(lowest));
    r->onAbort = OnAbort();
  }
  r->node = &quantifier + 1;
  return Flow::kNext;
}

// Where the repetition that ends at `at` ends with one character less.
VEK_INLINE const uint8_t* Matcher::GivenBack(Registers* r, const ProgramNode& atom, Choice choice,
                                             const uint8_t* at, const uint8_t* lowest) {
  if (choice == Choice::kBytes) {
    return at - 1;
  }
  const uint8_t* const before = PreviousRepetition(atom, at, lowest);
  r->skew -= SkewOf(atom, static_cast<int32_t>(at - before));
  return before;
}

Flow Matcher::GiveBack(Registers* r) {
  Frame& frame = Top();
  Restore(frame, r);
  const ProgramNode& atom = *r->node;
  const uint8_t* const lowest = subject + frame.count;
  const auto follow = FollowNoteOf(*BehindAtom(atom));
  const bool applies = FollowApplies(follow, r->budget);
  do {
    if (r->at == lowest) {
      --top;
      return Flow::kFail;
    }
    r->at = GivenBack(r, atom, frame.choice, r->at, lowest);
  } while (applies && !CanFollow(follow, r->at));
  if (r->at == lowest) {
    --top;
    r->onAbort = OnAbort(OnAbort::kFails);
  } else {
    frame.at = OffsetOf(r->at);
    frame.skew = r->skew;
  }
  r->node = BehindAtom(atom) + 1;
  return Flow::kNext;
}

const uint8_t* Matcher::PreviousRepetition(const ProgramNode& atom, const uint8_t* at,
                                           const uint8_t* lowest) const {
  const uint8_t* before = PreviousUtf8(at, lowest, limit);
  while (atom.op == OpGrapheme && IsMark(ReadUtf8(before, limit).value)) {
    before = PreviousUtf8(before, lowest, limit);
  }
  return before;
}

// An empty copy can be repeated as often as there are bytes.
Flow Matcher::RepeatCopies(Registers* r, const ProgramNode& atom) {
  const ProgramNode& quantifier = *BehindAtom(atom);
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
  r->budget.TakeDepth();
  if (count == quantifier.a) {
    r->onAbort = OnAbort(OnAbort::kFails);
  } else {
    Push(*r, Choice::kCopies)->count = count - quantifier.a;
    r->onAbort = OnAbort();
  }
  r->node = &quantifier + 1;
  return Flow::kNext;
}

Flow Matcher::GiveBackCopy(Registers* r) {
  Frame& frame = Top();
  Restore(frame, r);
  const ProgramNode& atom = *r->node;
  r->at -= slots[atom.a].length;
  frame.at = OffsetOf(r->at);
  if (--frame.count == 0) {
    --top;
    r->onAbort = OnAbort(OnAbort::kFails);
  }
  r->node = BehindAtom(atom) + 1;
  return Flow::kNext;
}

// ---- Lazy repetitions.

Flow Matcher::RepeatLazily(Registers* r, const ProgramNode& atom) {
  const ProgramNode& quantifier = *BehindAtom(atom);
  const int64_t room = limit - r->at;
  for (int32_t count = 0; count < quantifier.a; ++count) {
    const int32_t length = RepetitionLength(atom, r->at);
    if (length < 0) {
      return Flow::kFail;
    }
    r->at += length;
    r->skew += SkewOf(atom, length);
  }
  r->budget.TakeDepth();
  const int32_t more = AtMost(quantifier.b, room) - quantifier.a;
  if (more <= 0) {
    r->onAbort = OnAbort(OnAbort::kFails);
  } else {
    Push(*r, Choice::kLazy)->count = more;
    r->onAbort = OnAbort();
  }
  r->node = &quantifier + 1;
  return Flow::kNext;
}

Flow Matcher::TakeOneMore(Registers* r) {
  Frame& frame = Top();
  Restore(frame, r);
  const ProgramNode& atom = *r->node;
  const ProgramNode& quantifier = *BehindAtom(atom);
  const auto follow = FollowNoteOf(quantifier);
  const bool applies = FollowApplies(follow, r->budget);
  do {
    const int32_t length = frame.count == 0 ? -1 : RepetitionLength(atom, r->at);
    if (length < 0) {
      --top;
      return Flow::kFail;
    }
    r->at += length;
    r->skew += SkewOf(atom, length);
    --frame.count;
  } while (applies && !CanFollow(follow, r->at));
  frame.at = OffsetOf(r->at);
  frame.skew = r->skew;
  if (frame.count == 0) {
    --top;
    r->onAbort = OnAbort(OnAbort::kFails);
  }
  r->node = &quantifier + 1;
  return Flow::kNext;
}

}  // namespace vekch::regexp
