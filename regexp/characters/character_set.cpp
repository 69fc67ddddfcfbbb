// SPDX-License-Identifier: MIT
#include "regexp/characters/character_set.h"

#include "regexp/characters/bytes.h"
#include "regexp/characters/properties.h"
#include "strings/kernels/block.h"
#include "strings/kernels/block_kernels.h"

namespace vekch::regexp {
namespace {

// ---- The shorthands.

constexpr int32_t kNewline = '\n';

struct Shorthand {
  int32_t letter;
  const char* ranges;  // pairs of a first and a last byte
  bool isComplement;
  int32_t newline;
};

#define VEKCH_REGEXP_SHORTHAND(name, letter, ranges, isComplement, newline, words) \
  {letter, ranges, (isComplement) != 0, newline},
constexpr Shorthand kShorthands[] = {VEKCH_REGEXP_SHORTHANDS(VEKCH_REGEXP_SHORTHAND)};
#undef VEKCH_REGEXP_SHORTHAND
constexpr int32_t kShorthandCount = sizeof kShorthands / sizeof kShorthands[0];

constexpr bool IsMeant(int32_t value, const Shorthand& shorthand) {
  bool isListed = false;
  for (const char* range = shorthand.ranges; *range != 0; range += 2) {
    isListed = isListed || (value >= range[0] && value <= range[1]);
  }
  return isListed != shorthand.isComplement;
}

constexpr CharacterSet SetOf(const Shorthand& shorthand, bool withNewline) {
  CharacterSet set = {};
  for (int32_t value = 0; value < 256; ++value) {
    const bool isMember = IsMeant(value, shorthand) || (withNewline && value == kNewline);
    set.member[value] = isMember ? 0xFF : 0;
  }
  // The ranges are of ASCII.
  set.wide = shorthand.isComplement ? Wide::kInside : Wide::kOutside;
  return set;
}

// By the positions in the list: the sets, and where option s makes a difference, those with it.
struct ShorthandSets {
  CharacterSet sets[kShorthandCount];
  CharacterSet setsByOptionS[kShorthandCount];
  CharacterSet nothing;
  uint8_t positionOf[256];  // of a letter, kShorthandCount for any other

  constexpr ShorthandSets() : sets(), setsByOptionS(), nothing(), positionOf() {
    for (uint8_t& position : positionOf) {
      position = kShorthandCount;
    }
    for (int32_t i = 0; i < kShorthandCount; ++i) {
      sets[i] = SetOf(kShorthands[i], false);
      setsByOptionS[i] = SetOf(kShorthands[i], kShorthands[i].newline == RegExpNewlineByOptionS);
      positionOf[kShorthands[i].letter] = static_cast<uint8_t>(i);
    }
  }

  constexpr bool TellNewlines() const {
    for (int32_t i = 0; i < kShorthandCount; ++i) {
      const bool isAlways = sets[i].member[kNewline] != 0;
      const bool isEver = setsByOptionS[i].member[kNewline] != 0;
      const int32_t newline = kShorthands[i].newline;
      if (newline != (isAlways ? RegExpNewlineAlways
                      : isEver ? RegExpNewlineByOptionS
                               : RegExpNewlineNever)) {
        return false;
      }
    }
    return true;
  }
};
constexpr ShorthandSets kShorthandSets;
static_assert(kShorthandSets.TellNewlines(), "the list says otherwise of a newline");

bool InShorthand(int32_t value, int32_t letter) {
  const CharacterSet& set = ShorthandSet(letter, 0);
  return InRange(value, 0, 255) ? set.member[value] != 0 : set.wide == Wide::kInside;
}

// The items that one test is about: one record, or all that a negated name stands for.
struct ItemGroup {
  const ProgramNode* items;
  int32_t count;
  bool negated;
};

ItemGroup GroupAt(const ProgramNode* item) {
  const bool isByteItem = item->op == OpChar || item->op == OpClassRange;
  if (isByteItem && item->ptr != 0) {
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
      return ShorthandSet(item.a, 0).wide;
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

void AddByte(uint8_t byte, bool caseless, CharacterSet* set) {
  set->member[byte] = 0xFF;
  if (caseless) {
    set->member[OtherCase(byte)] = 0xFF;
  }
}

void AddRange(int32_t first, int32_t last, bool caseless, CharacterSet* set) {
  if (first <= last) {
    kernels::Fill(0xFF, set->member + first, last - first + 1);
  }
  for (int32_t value = first; caseless && value <= last; ++value) {
    set->member[OtherCase(static_cast<uint8_t>(value))] = 0xFF;
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
      AddByte(static_cast<uint8_t>(item.a), caseless, set);
      return;
    case OpClassRange:
      AddRange(item.a, item.b < 255 ? item.b : 255, caseless, set);
      return;
    case OpCharType:
      AddSet(ShorthandSet(item.a, 0), set);
      return;
    default:
      for (int32_t value = 0; value < 256; ++value) {
        if (MeetsItem(value, item, caseless)) {
          set->member[value] = 0xFF;
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

const CharacterSet& ShorthandSet(int32_t letter, int32_t options) {
  const int32_t position =
      InRange(letter, 0, 255) ? kShorthandSets.positionOf[letter] : kShorthandCount;
  if (position == kShorthandCount) {
    return kShorthandSets.nothing;
  }
  return (options & RegExpOptionS) != 0 ? kShorthandSets.setsByOptionS[position]
                                        : kShorthandSets.sets[position];
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
  for (int32_t i = 0; i < 256; i += kernels::kBlock) {
    kernels::StoreAny(set->member + i, kernels::ZeroBlock());
  }
  set->wide = Wide::kOutside;
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
