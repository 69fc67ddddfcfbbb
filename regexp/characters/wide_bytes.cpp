// SPDX-License-Identifier: MIT
#include "regexp/characters/wide_bytes.h"

#include "regexp/characters/bytes.h"
#include "regexp/characters/character_set.h"
#include "regexp/characters/unicode_tables.h"
#include "regexp/object/record_notes.h"

namespace vekch::regexp {
namespace {

// The first code point whose shortest form has so many bytes.
constexpr int64_t FirstOfLength(int32_t length) {
  return length == 2 ? 0x80 : int64_t{1} << (5 * length - 4);
}

// Adds the code points of a range that are written in so many bytes.
void AddRange(int32_t length, int64_t first, int64_t last, WideBytes* bytes) {
  const int64_t lowest = FirstOfLength(length);
  const int64_t end = FirstOfLength(length + 1);
  first = first < lowest ? lowest : first;
  last = last >= end ? end - 1 : last;
  const int32_t afterSecond = 6 * (length - 2);  // bits
  const int64_t markers = 0x3F00 >> length & 0x3F;
  for (int64_t both = first >> afterSecond; first <= last && both <= last >> afterSecond; ++both) {
    bytes->leads |= uint64_t{1} << (markers | both >> 6);
    bytes->seconds |= uint64_t{1} << (both & 0x3F);
  }
}

void AddRange(int64_t first, int64_t last, WideBytes* bytes) {
  for (int32_t length = 2; length <= WideBytes::kLongest; ++length) {
    AddRange(length, first, last, bytes);
  }
}

// Whether that is all that the record accepts.
bool AddItem(const ProgramNode& item, bool caseless, WideBytes* bytes) {
  const bool isNegatedName = item.c != 0;  // but for those records that say otherwise
  switch (item.op) {
    case OpChar:
      AddRange(item.a, item.a, bytes);
      return !isNegatedName;
    case OpClassRange:
      AddRange(item.a, item.b, bytes);
      return !isNegatedName;
    case OpCharType:
      return ShorthandSet(item.a, 0).wide == Wide::kOutside;
    case OpCodePoint:
      AddRange(item.a, item.a, bytes);
      return !caseless;
    case OpScript: {
      const auto* const ranges = PointerFrom<ScriptRange>(item.ptr);
      for (int32_t i = 0; i < item.c; ++i) {
        AddRange(ranges[i].first, ranges[i].last, bytes);
      }
      return item.b == 0;
    }
    default:
      return false;
  }
}

}  // namespace

WideBytes WideBytesOf(const ProgramNode& atom) {
  WideBytes bytes = {0, 0};
  bool isKnown = true;
  if (atom.op == OpClass) {
    const bool caseless = IsCaseless(SetOf(atom)->options);
    isKnown = atom.a == 0;
    for (int32_t i = 1; i < AtomSize(atom) && isKnown; ++i) {
      isKnown = AddItem((&atom)[i], caseless, &bytes);
    }
  } else {
    isKnown = AddItem(atom, atom.op == OpCodePoint && IsCaseless(OptionsOf(atom)), &bytes);
  }
  return isKnown ? bytes : WideBytes::All();
}

}  // namespace vekch::regexp
