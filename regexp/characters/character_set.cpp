#include "regexp/characters/character_set.h"

#include "regexp/characters/bytes.h"
#include "regexp/characters/properties.h"
#include "strings/kernels/block.h"

namespace vekch::regexp {
namespace {

constexpr bool IsSpace(int32_t value) {
  return value == ' ' || (InRange(value, '\t', '\r') && value != '\v');
}

constexpr bool InShorthand(int32_t value, int32_t letter) {
  switch (letter) {
    case 'd':
      return IsDigit(value);
    case 'D':
      return !IsDigit(value);
    case 's':
      return IsSpace(value);
    case 'S':
      return !IsSpace(value);
    case 'w':
      return IsWordByte(value);
    case 'W':
      return !IsWordByte(value);
    case '.':
      return value != '\n';
    default:
      return false;
  }
}

constexpr int32_t kAnything = -1;

constexpr CharacterSet SetOf(int32_t letter) {
  CharacterSet set = {};
  for (int32_t value = 0; value < 256; ++value) {
    set.member[value] = letter == kAnything || InShorthand(value, letter) ? 0xFF : 0;
  }
  set.wide = set.member[0x80] != 0 ? Wide::kInside : Wide::kOutside;
  return set;
}

constexpr CharacterSet kNothingSet = {};
constexpr CharacterSet kAnythingSet = SetOf(kAnything);
constexpr CharacterSet kDotSet = SetOf('.');
constexpr CharacterSet kDigitSet = SetOf('d');
constexpr CharacterSet kNoDigitSet = SetOf('D');
constexpr CharacterSet kSpaceSet = SetOf('s');
constexpr CharacterSet kNoSpaceSet = SetOf('S');
constexpr CharacterSet kWordSet = SetOf('w');
constexpr CharacterSet kNoWordSet = SetOf('W');

// The items that one test is about: one record, or all that a negated name stands for.
struct ItemGroup {
  const ProgramNode* items;
  int32_t count;
  bool negated;
};

ItemGroup GroupAt(const ProgramNode* item) {
  const bool isByteItem = item->op == OpChar || item->op == OpClassRange;
  if (isByteItem && item->c != 0 && item->ptr != 0) {
    return {item, static_cast<int32_t>(item->ptr), true};
  }
  return {item, 1, false};
}

bool MeetsItem(int32_t codePoint, const ProgramNode& item, bool caseless) {
  switch (item.op) {
    case OpChar:
      return codePoint == item.a;
    case OpClassRange:
      return item.a <= codePoint && codePoint <= item.b;
    case OpCharType:
      return InShorthand(codePoint, item.a);
    default:
      return MatchPropertyItem(codePoint, &item, caseless ? 1 : 0) >= 0;
  }
}

bool InItem(int32_t codePoint, const ProgramNode& item, bool caseless) {
  const bool isByteItem = item.op == OpChar || item.op == OpClassRange;
  return MeetsItem(codePoint, item, caseless) ||
         (caseless && isByteItem && IsAsciiLetter(codePoint) &&
          MeetsItem(codePoint ^ 0x20, item, caseless));
}

bool InGroup(int32_t codePoint, const ItemGroup& group, bool caseless) {
  bool inside = false;
  for (int32_t i = 0; i < group.count && !inside; ++i) {
    inside = InItem(codePoint, group.items[i], caseless);
  }
  return inside != group.negated;
}

// ---- The table of a class.

// What an item answers for the bytes above 0x7F and for all characters of several bytes.
Wide WideOf(const ProgramNode& item) {
  switch (item.op) {
    case OpChar:
      return item.a < 0x80 ? Wide::kOutside : Wide::kMixed;
    case OpClassRange:
      return item.b < 0x80 ? Wide::kOutside : Wide::kMixed;
    case OpCharType:
      return ShorthandSet(item.a, false).wide;
    case OpGrapheme:
      return Wide::kOutside;
    default:
      return Wide::kMixed;
  }
}

constexpr Wide Opposite(Wide wide) {
  return wide == Wide::kMixed     ? Wide::kMixed
         : wide == Wide::kOutside ? Wide::kInside
                                  : Wide::kOutside;
}

// What is inside one of several lies inside them all together.
constexpr Wide Either(Wide a, Wide b) {
  return a == Wide::kInside || b == Wide::kInside ? Wide::kInside
         : a == Wide::kMixed || b == Wide::kMixed ? Wide::kMixed
                                                  : Wide::kOutside;
}

void AddValue(int32_t value, bool caseless, CharacterSet* set) {
  set->member[value] = 0xFF;
  if (caseless && IsAsciiLetter(value)) {
    set->member[value ^ 0x20] = 0xFF;
  }
}

void AddSet(const CharacterSet& other, CharacterSet* set) {
  for (int32_t i = 0; i < 256; i += kernels::kBlock) {
    kernels::StoreAny(set->member + i,
                      kernels::LoadAny(set->member + i) | kernels::LoadAny(other.member + i));
  }
}

void AddItem(const ProgramNode& item, bool caseless, CharacterSet* set) {
  switch (item.op) {
    case OpChar:
      AddValue(item.a, caseless, set);
      return;
    case OpClassRange:
      for (int32_t value = item.a; value <= item.b && value < 256; ++value) {
        AddValue(value, caseless, set);
      }
      return;
    case OpCharType:
      AddSet(ShorthandSet(item.a, false), set);
      return;
    default:
      for (int32_t value = 0; value < 256; ++value) {
        if (MeetsItem(value, item, caseless)) {
          AddValue(value, false, set);
        }
      }
      return;
  }
}

void AddComplement(const ItemGroup& group, bool caseless, CharacterSet* set) {
  for (int32_t value = 0; value < 256; ++value) {
    if (InGroup(value, group, caseless)) {
      set->member[value] = 0xFF;
    }
  }
}

Wide WideOfGroup(const ItemGroup& group) {
  Wide wide = Wide::kOutside;
  for (int32_t i = 0; i < group.count; ++i) {
    wide = Either(wide, WideOf(group.items[i]));
  }
  return group.negated ? Opposite(wide) : wide;
}

void Negate(CharacterSet* set) {
  const kernels::Block all = kernels::Splat(0xFF);
  for (int32_t i = 0; i < 256; i += kernels::kBlock) {
    kernels::StoreAny(set->member + i, kernels::LoadAny(set->member + i) ^ all);
  }
  set->wide = Opposite(set->wide);
}

}  // namespace

const CharacterSet& ShorthandSet(int32_t letter, bool dotTakesAll) {
  switch (letter) {
    case 'd':
      return kDigitSet;
    case 'D':
      return kNoDigitSet;
    case 's':
      return kSpaceSet;
    case 'S':
      return kNoSpaceSet;
    case 'w':
      return kWordSet;
    case 'W':
      return kNoWordSet;
    case '.':
      return dotTakesAll ? kAnythingSet : kDotSet;
    default:
      return kNothingSet;
  }
}

bool InClass(int32_t codePoint, const ProgramNode& head, bool caseless) {
  const ProgramNode* const end = &head + 1 + head.b;
  bool inside = false;
  for (const ProgramNode* item = &head + 1; item < end && !inside;) {
    const ItemGroup group = GroupAt(item);
    inside = InGroup(codePoint, group, caseless);
    item += group.count;
  }
  return inside != (head.a != 0);
}

void FillClassSet(const ProgramNode& head, int32_t options, CharacterSet* set) {
  const bool caseless = IsCaseless(options);
  *set = {};
  set->options = static_cast<uint8_t>(options);
  const ProgramNode* const end = &head + 1 + head.b;
  for (const ProgramNode* item = &head + 1; item < end;) {
    const ItemGroup group = GroupAt(item);
    if (group.negated) {
      AddComplement(group, caseless, set);
    } else {
      AddItem(*item, caseless, set);
    }
    set->wide = Either(set->wide, WideOfGroup(group));
    item += group.count;
  }
  if (head.a != 0) {
    Negate(set);
  }
}

}  // namespace vekch::regexp
