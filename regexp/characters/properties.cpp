// SPDX-License-Identifier: MIT

// The property escapes and the membership test.
//
// Which code points a category accepts was laid down by a walk over the database: first over ten
// ranges, then over the sorted records of single characters, with its own answer for a code point
// that the walk doesn't find and for one after the last record. Those answers are kept, though
// some look odd, by giving every code point a class that says how the walk would have met it
// (unicode_tables.h); the rules are then asked about the class.

#include "regexp/characters/properties.h"

#include "strings/kernels/lanes.h"

namespace vekch::regexp {
namespace {

constexpr int32_t kFailure = -1;
constexpr int32_t kMember = 0;
constexpr int32_t kNoMember = -1;

struct CategoryName {
  char text[4];  // closing brace included where it is compared
  uint8_t length;
  uint16_t mask;

  // The braces are left for the one test at the escape's end.
  constexpr int32_t Width() const { return text[length - 1] == '}' ? length - 1 : length; }
};

// In the order of comparison. "Co" is compared with its brace: it begins names of scripts too.
constexpr CategoryName kCategoryNames[] = {
    {"Cc", 2, 0x2001}, {"Cf", 2, 0x2002}, {"Co}", 3, 0x2004}, {"Cn", 2, kCategoryUnassigned},
    {"Cs", 2, 0x2008}, {"C}", 2, 0x2000}, {"Ll", 2, 0x81},    {"Lu", 2, 0x82},
    {"Lt", 2, 0x84},   {"Lm", 2, 0x88},   {"Lo", 2, 0x90},    {"L&", 2, 0x87},
    {"L}", 2, 0x80},   {"Mn", 2, 0x101},  {"Mc", 2, 0x102},   {"Me", 2, 0x104},
    {"M}", 2, 0x100},  {"Nd", 2, 0x801},  {"Nl", 2, 0x802},   {"No", 2, 0x804},
    {"N}", 2, 0x800},  {"Pc", 2, 0x1020}, {"Pd", 2, 0x1001},  {"Pe", 2, 0x1004},
    {"Pf", 2, 0x1010}, {"Pi", 2, 0x1008}, {"Po", 2, 0x1040},  {"Ps", 2, 0x1002},
    {"P}", 2, 0x1000}, {"Sc", 2, 0x402},  {"Sk", 2, 0x404},   {"So", 2, 0x408},
    {"Sm", 2, 0x401},  {"S}", 2, 0x400},  {"Zl", 2, 0x202},   {"Zp", 2, 0x204},
    {"Zs", 2, 0x201},  {"Z}", 2, 0x200},
};

// Where the names and the record that they become are at.
struct Escape {
  const uint8_t** position;
  ProgramNode* nodes;
  int32_t* nodeCount;
  int32_t negated;

  void Append(uint32_t op, int32_t a, int32_t b, int32_t c, const void* list = nullptr) const {
    nodes[(*nodeCount)++] = {op, a, b, c, reinterpret_cast<uintptr_t>(list)};
  }
};

// A zero byte in `text` differs from every name and ends the comparison.
bool BeginsWith(const uint8_t* text, const char* name, int32_t length) {
  int32_t i = 0;
  while (i < length && text[i] == static_cast<uint8_t>(name[i])) {
    ++i;
  }
  return i >= length;
}

// Bytes before the closing brace, negative when the pattern ends first.
int32_t NameLength(const uint8_t* text) {
  int32_t length = 0;
  while (text[length] != '}') {
    if (text[length++] == 0) {
      return -1;
    }
  }
  return length;
}

// Number of the first name in a list that begins with the bytes given, negative for none. The
// braces between the names keep a comparison from running into the next one.
int32_t FindName(const char* names, const uint8_t* text, int32_t length) {
  for (int32_t number = 0; *names != 0; ++number) {
    if (BeginsWith(text, names, length)) {
      return number;
    }
    while (*names++ != '}') {
    }
  }
  return -1;
}

int32_t ParseScript(const Escape& escape) {
  const int32_t length = NameLength(*escape.position);
  // With its brace a name is complete.
  const int32_t script = length < 0 ? -1 : FindName(kScriptNames, *escape.position, length + 1);
  if (script < 0) {
    return kFailure;
  }
  escape.Append(OpScript, 1, escape.negated, kScriptFirst[script + 1] - kScriptFirst[script],
                ScriptList(script));
  *escape.position += length;
  return 0;
}

// A block that is found is refused all the same: the search for a script goes on at the closing
// brace, where no name of a script begins. The beginning of a block's name is enough to find it.
int32_t ParseBlockThenScript(const Escape& escape) {
  const int32_t length = NameLength(*escape.position);
  const int32_t block = length < 0 ? -1 : FindName(kBlockNames, *escape.position, length);
  if (block >= 0) {
    const auto first = static_cast<int32_t>(kBlockBounds[block] >> 12 << 4);
    const auto size = static_cast<int32_t>(((kBlockBounds[block] & 0xFFF) + 1) << 4);
    escape.Append(OpRange, first, first + size - 1, escape.negated);
    *escape.position += length;
  }
  return ParseScript(escape);
}

int32_t ParseName(const Escape& escape) {
  const uint8_t* const name = *escape.position;
  for (const CategoryName& category : kCategoryNames) {
    if (BeginsWith(name, category.text, category.length)) {
      escape.Append(OpCategory, category.mask, escape.negated, 0);
      *escape.position += category.Width();
      return 0;
    }
  }
  if (BeginsWith(name, "Any", 3)) {
    escape.Append(OpRange, 0, 0x10FFFF, escape.negated);
    *escape.position += 3;
    return 0;
  }
  return *name == 'I'
             ? ParseBlockThenScript(escape)
             : ParseScriptName(escape.position, escape.nodes, escape.nodeCount, escape.negated);
}

int32_t ParseBraced(Escape escape) {
  ++*escape.position;
  if (**escape.position == '^') {
    if (escape.negated != 0) {
      return kFailure;
    }
    escape.negated = -1;
    ++*escape.position;
  }
  if (ParseName(escape) != 0 || **escape.position != '}') {
    return kFailure;
  }
  ++*escape.position;
  return 0;
}

constexpr int32_t MajorOfLetter(uint8_t letter) {
  switch (letter) {
    case 'C':
      return kCategoryC;
    case 'L':
      return kCategoryL;
    case 'M':
      return kCategoryM;
    case 'N':
      return kCategoryN;
    case 'P':
      return kCategoryP;
    case 'S':
      return kCategoryS;
    case 'Z':
      return kCategoryZ;
    default:
      return 0;
  }
}

// ---- Membership.

// A range accepts only what is asked for with no bit beside its category; what it doesn't accept
// is looked for among the records.
constexpr bool RangeAccepts(int32_t category, int32_t mask, bool negated) {
  return negated ? (mask & ~category) != 0 : (mask & category) == mask;
}

// Without branches: the categories of text follow no pattern that a processor could predict.
constexpr bool ListedAccepts(int32_t category, int32_t mask) {
  const bool ofMajor = ((category ^ mask) & ~kCategoryMinorBits) == 0;
  const bool anyMinor = (mask & kCategoryMinorBits) == 0;
  const bool ofMinor = (mask & category & kCategoryMinorBits) != 0;
  return ofMajor & (anyMinor | ofMinor);
}

// The same of all listed classes at once: this is asked for whenever a pattern is compiled.
uint64_t ListedClasses(int32_t mask) {
  using kernels::Units;
  constexpr int32_t kUnits = kernels::kBlock / 2;
  constexpr int32_t kEnd = 4 * kUnits;
  static_assert(kEnd >= kClassRangeLo && kEnd <= kClassCount);
  const int32_t ofMask = mask & kCategoryMinorBits;
  const Units minorBits = kernels::SplatUnit(kCategoryMinorBits);
  const Units minors = kernels::SplatUnit(static_cast<uint16_t>(ofMask == 0 ? 0xFFFF : ofMask));
  const Units major = kernels::SplatUnit(static_cast<uint16_t>(mask & ~kCategoryMinorBits));
  uint64_t set = 0;
  for (int32_t i = 0; i < kEnd; i += 2 * kUnits) {
    Units accepted[2];
    for (int32_t half = 0; half < 2; ++half) {
      const uint16_t* const from = kClassCategory + i + half * kUnits;
      const auto categories =
          kernels::As<Units>(kernels::LoadAny(reinterpret_cast<const uint8_t*>(from)));
      const Units isOther = (categories & minors) == kernels::SplatUnit(0);
      accepted[half] = Without(Without(categories, minorBits) == major, isOther) >> 8;
    }
    set |= uint64_t{LaneBits(Narrow(accepted[0], accepted[1]))} << i;
  }
  return set & ((uint64_t{1} << kClassRangeLo) - 1);
}

// For the classes of code points that are not listed one by one.
bool UnlistedAccepts(uint8_t classNumber, int32_t mask, bool negated) {
  const bool asRange = RangeAccepts(kClassCategory[classNumber], mask, negated);
  // What has no record counts as unassigned, even in a range and even when that is negated.
  const bool asUnlisted = mask == kCategoryUnassigned;
  switch (classNumber) {
    case kClassFarRangeCo:
      return asRange;
    case kClassUnlisted:
      return asUnlisted;
    case kClassBeyond:
      // Nothing accepts what lies after the last record, negated or not.
      return false;
    default:
      return asRange || asUnlisted;
  }
}

bool ClassAccepts(uint8_t classNumber, int32_t mask, bool negated) {
  return classNumber < kClassRangeLo ? ListedAccepts(kClassCategory[classNumber], mask) != negated
                                     : UnlistedAccepts(classNumber, mask, negated);
}

constexpr int32_t Membership(bool inside, bool negated) {
  return inside != negated ? kMember : kNoMember;
}

int32_t MatchCodePoint(int32_t codePoint, int32_t expected, bool caseless) {
  if (!caseless) {
    return codePoint == expected ? kMember : kNoMember;
  }
  const auto difference = static_cast<uint32_t>(FoldCase(codePoint) ^ FoldCase(expected));
  return static_cast<int32_t>(0 - difference);
}

}  // namespace

int32_t ParsePropertyEscape(const uint8_t** position, ProgramNode* nodes, int32_t* nodeCount,
                            int32_t negated) {
  const Escape escape = {position, nodes, nodeCount, negated};
  ++*position;
  if (**position == '{') {
    return ParseBraced(escape);
  }
  const int32_t major = MajorOfLetter(**position);
  if (major == 0) {
    return kFailure;
  }
  escape.Append(OpCategory, major, negated, 0);
  ++*position;
  return 0;
}

int32_t ParseScriptName(const uint8_t** position, ProgramNode* nodes, int32_t* nodeCount,
                        int32_t negated) {
  return ParseScript({position, nodes, nodeCount, negated});
}

bool MatchCategory(int32_t codePoint, int32_t mask, int32_t negated) {
  return ClassAccepts(ClassOf(codePoint), mask, negated != 0);
}

uint64_t CategorySet(int32_t mask, int32_t negated) {
  static_assert(kClassCount <= 64, "one bit for each class");
  uint64_t set = ListedClasses(mask);
  set ^= negated != 0 ? (uint64_t{1} << kClassRangeLo) - 1 : 0;
  for (uint8_t classNumber = kClassRangeLo; classNumber < kClassCount; ++classNumber) {
    set |= uint64_t{UnlistedAccepts(classNumber, mask, negated != 0)} << classNumber;
  }
  return set;
}

int32_t MatchPropertyItem(int32_t codePoint, const ProgramNode* node, int32_t caseless) {
  switch (node->op) {
    case OpCategory:
      return MatchCategory(codePoint, node->a, node->b) ? kMember : kNoMember;
    case OpScript:
      return Membership(node->c > 0 && InScript(codePoint, node->ptr), node->b != 0);
    case OpRange:
      return Membership(node->a <= codePoint && codePoint <= node->b, node->c != 0);
    case OpCodePoint:
      return MatchCodePoint(codePoint, node->a, caseless != 0);
    default:
      return kNoMember;
  }
}

}  // namespace vekch::regexp
