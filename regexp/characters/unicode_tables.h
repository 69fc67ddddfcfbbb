// SPDX-License-Identifier: MIT

// The tables of Unicode 5.1 and the look-ups in them, each a constant number of steps.
//
// The records of the character database would be 19316 entries to search. Here a code point leads
// through the number of its page to a byte of that page, equal pages being kept once, and the
// stretches of code points that hold no character at all have no pages. The tables hold offsets
// and no addresses, so that loading the library relocates nothing.

#ifndef VEKCH_REGEXP_CHARACTERS_UNICODE_TABLES_H
#define VEKCH_REGEXP_CHARACTERS_UNICODE_TABLES_H

#include <stdint.h>

namespace vekch::regexp {

// One pair of a script's list, both ends inclusive.
struct ScriptRange {
  int32_t first;
  int32_t last;
};

// ---- The shape of the tables, which the generated source checks.

constexpr int32_t kPageBits = 6;
// The code points in pages: from 0 to kMainEnd, and directly after them those of the tags.
constexpr int32_t kMainEnd = 0x30000;
constexpr int32_t kTagsFirst = 0xE0000;
constexpr int32_t kTagsEnd = 0xE0200;
// The last character that the database lists by itself.
constexpr int32_t kLastRecord = 0xE01EF;
// After it no character has a lower-case mapping.
constexpr int32_t kFoldEnd = 0x10440;
constexpr int32_t kBlockCount = 171;
constexpr int32_t kScriptCount = 77;
constexpr int32_t kScriptCommon = 0;
constexpr int32_t kScriptLatin = 1;

// A class gives a code point's category and how the database knows it. Below these the classes of
// listed characters, one for each category.
enum CategoryClass : uint8_t {
  kClassRangeLo = 27,
  kClassRangeCs,
  kClassRangeCo,
  kClassFarRangeCo,  // private use after the last record
  kClassUnlisted,
  kClassBeyond,  // after the last record, and for no use
  kClassCount
};

// ---- The tables, which the generated source defines as constant expressions.

// NOLINTBEGIN(bugprone-dynamic-static-initializers)
extern const uint16_t kClassCategory[kClassCount];
extern const uint8_t kAsciiClass[128];
extern const uint8_t kCategoryPageOf[];
extern const uint8_t kCategoryPages[];
extern const uint8_t kScriptPageOf[];
extern const uint8_t kScriptPages[];
extern const uint8_t kFoldPageOf[];
extern const uint8_t kFoldPages[];
extern const int32_t kFoldDeltas[];
// The lists of all scripts, one after the other, and where each begins.
extern const ScriptRange kScriptRanges[];
extern const uint16_t kScriptFirst[kScriptCount + 1];
// Names in the order of their look-up, each with a closing brace after it.
extern const char kScriptNames[];
extern const char kBlockNames[];
// A block's first code point and its size less one, both divided by 16: 20 bits and 12 bits.
extern const uint32_t kBlockBounds[kBlockCount];
// NOLINTEND(bugprone-dynamic-static-initializers)

// ---- The look-ups.

inline uint8_t FromPages(const uint8_t* pageOf, const uint8_t* pages, int32_t position) {
  return pages[(pageOf[position >> kPageBits] << kPageBits) | (position & ((1 << kPageBits) - 1))];
}

constexpr bool InRange(int32_t value, int32_t first, int32_t last) {
  return static_cast<uint32_t>(value) - static_cast<uint32_t>(first) <=
         static_cast<uint32_t>(last) - static_cast<uint32_t>(first);
}

// Position of a code point in the pages, negative for one that has no page.
constexpr int32_t PagedPosition(int32_t codePoint) {
  if (InRange(codePoint, 0, kMainEnd - 1)) {
    return codePoint;
  }
  return InRange(codePoint, kTagsFirst, kTagsEnd - 1) ? codePoint - kTagsFirst + kMainEnd : -1;
}

// Class of a code point that has no page.
constexpr uint8_t UnpagedClass(int32_t codePoint) {
  if (codePoint <= kLastRecord) {
    return kClassUnlisted;
  }
  const bool isPrivateUse =
      InRange(codePoint, 0xF0000, 0xFFFFD) || InRange(codePoint, 0x100000, 0x10FFFD);
  return isPrivateUse ? kClassFarRangeCo : kClassBeyond;
}

// For any value, negative ones and those above the code points included.
inline uint8_t ClassOf(int32_t codePoint) {
  if (InRange(codePoint, 0, 127)) {
    return kAsciiClass[codePoint];
  }
  const int32_t position = PagedPosition(codePoint);
  return position >= 0 ? FromPages(kCategoryPageOf, kCategoryPages, position)
                       : UnpagedClass(codePoint);
}

// Number of a code point's script, kScriptCount for one in none.
inline int32_t ScriptOf(int32_t codePoint) {
  if (InRange(codePoint, 0, 127)) {
    return InRange(codePoint | 0x20, 'a', 'z') ? kScriptLatin : kScriptCommon;
  }
  const int32_t position = PagedPosition(codePoint);
  return position >= 0 ? FromPages(kScriptPageOf, kScriptPages, position) : kScriptCount;
}

// The list of a script; for kScriptCount an address that is no list's.
inline const ScriptRange* ScriptList(int32_t script) {
  return kScriptRanges + kScriptFirst[script];
}

// The simple lower-case mapping of a code point, or the code point itself. What lies after the
// last record and is not for private use becomes 0.
inline int32_t FoldCase(int32_t codePoint) {
  if (InRange(codePoint, 0, 127)) {
    return InRange(codePoint, 'A', 'Z') ? codePoint + ('a' - 'A') : codePoint;
  }
  if (InRange(codePoint, 0, kFoldEnd - 1)) {
    return codePoint + kFoldDeltas[FromPages(kFoldPageOf, kFoldPages, codePoint)];
  }
  return codePoint > kLastRecord && UnpagedClass(codePoint) == kClassBeyond ? 0 : codePoint;
}

}  // namespace vekch::regexp

#endif
