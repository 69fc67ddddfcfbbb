// The properties against the description that they were laid down by: a walk over ten ranges and
// then over the sorted records of the character database, for every code point and beyond.

#include "regexp/properties.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

#include "tests/guarded_buffer.h"

namespace vekch::regexp::test {
namespace {

// ---- The database as a list of records.

struct RecordRun {
  int32_t gap, count, category;
};
struct LowerCaseRun {
  int32_t first, count, step, delta;
};
#include "tests/unicode_5_1_records.inc"

struct CharacterRecord {
  int32_t codePoint, category, lower;
};
struct CategoryRange {
  int32_t first, last, category;
};

constexpr CategoryRange kCategoryRanges[] = {
    {0x3400, 0x4DB5, 0x90},      {0x4E00, 0x9FC3, 0x90},   {0xAC00, 0xD7A3, 0x90},
    {0xD800, 0xDB7F, 0x2008},    {0xDB80, 0xDBFF, 0x2008}, {0xDC00, 0xDFFF, 0x2008},
    {0xE000, 0xF8FF, 0x2004},    {0x20000, 0x2A6D6, 0x90}, {0xF0000, 0xFFFFD, 0x2004},
    {0x100000, 0x10FFFD, 0x2004}};

constexpr int32_t kFirstTried = -70;
constexpr int32_t kLastTried = 0x110000 + 300;
constexpr int32_t kFarValues[] = {INT_MIN, INT_MIN + 'A', -0x110000, 0x200041, INT_MAX};

class Database {
 public:
  Database() {
    int32_t codePoint = 0;
    for (const RecordRun& run : kRecordRuns) {
      codePoint += run.gap;
      for (int32_t i = 0; i < run.count; ++i) {
        records_.push_back({codePoint++, run.category, 0});
      }
    }
    for (const LowerCaseRun& run : kLowerCaseRuns) {
      for (int32_t i = 0, from = run.first; i < run.count; ++i, from += run.step) {
        records_[WalkTo(from)].lower = from + run.delta;
      }
    }
  }

  const std::vector<CharacterRecord>& Records() const { return records_; }

  // The first record from the second on that isn't below a code point; the first for 0 and less.
  size_t WalkTo(int32_t codePoint) const {
    const auto second = records_.begin() + 1;
    const auto isBelow = [](const CharacterRecord& record, int32_t x) {
      return record.codePoint < x;
    };
    return codePoint <= 0
               ? 0
               : static_cast<size_t>(std::lower_bound(second, records_.end(), codePoint, isBelow) -
                                     records_.begin());
  }

  // `walked` is WalkTo(x), which a sweep finds once for many masks.
  bool MatchCategory(int32_t x, size_t walked, int32_t mask, bool negated) const {
    for (const CategoryRange& range : kCategoryRanges) {
      if (range.first <= x && x <= range.last &&
          (negated ? (mask & ~range.category) != 0 : (range.category & mask) == mask)) {
        return true;
      }
    }
    if (walked == records_.size()) {
      return false;
    }
    if (records_[walked].codePoint != x) {
      return mask == 0x2010;
    }
    const int32_t category = records_[walked].category;
    if ((category & ~0x7F) != (mask & ~0x7F)) {
      return negated;
    }
    if ((mask & 0x7F) == 0) {
      return !negated;
    }
    return ((mask & category & 0x7F) != 0) != negated;
  }

  int32_t Fold(int32_t x) const {
    for (const CategoryRange& range : kCategoryRanges) {
      if (range.first <= x && x <= range.last) {
        return x;
      }
    }
    const size_t walked = WalkTo(x);
    if (walked == records_.size()) {
      return 0;
    }
    const CharacterRecord& record = records_[walked];
    return record.codePoint == x && record.lower != 0 ? record.lower : x;
  }

 private:
  std::vector<CharacterRecord> records_;
};

const Database& TheDatabase() {
  static const Database database;
  return database;
}

std::vector<int32_t> TriedCodePoints() {
  std::vector<int32_t> all(std::begin(kFarValues), std::end(kFarValues));
  for (int32_t x = kFirstTried; x <= kLastTried; ++x) {
    all.push_back(x);
  }
  return all;
}

// ---- Parsing.

struct Parsed {
  int32_t result;
  ptrdiff_t offset;  // of the position, from the "p"
  std::vector<ProgramNode> nodes;
};

// The pattern's zero byte is the last one that can be read.
Parsed Parse(const std::string& text, int32_t negated = 0) {
  static const vekch::test::GuardedBuffer buffer(4096);
  uint8_t* const pattern = buffer.AtEnd(text.size() + 1);
  std::memcpy(pattern, text.c_str(), text.size() + 1);
  ProgramNode nodes[4] = {};
  int32_t count = 1;
  const uint8_t* position = pattern;
  const int32_t result = ParsePropertyEscape(&position, nodes, &count, negated);
  EXPECT_EQ(nodes[0].op, 0u) << text;
  return {result, position - pattern, {nodes + 1, nodes + count}};
}

ProgramNode ParseOne(const std::string& text, int32_t negated = 0) {
  const Parsed parsed = Parse(text, negated);
  EXPECT_EQ(parsed.result, 0) << text;
  EXPECT_EQ(parsed.offset, static_cast<ptrdiff_t>(text.size())) << text;
  EXPECT_EQ(parsed.nodes.size(), 1u) << text;
  return parsed.nodes.empty() ? ProgramNode{} : parsed.nodes[0];
}

struct EscapeCase {
  const char* text;
  int32_t result;
  ptrdiff_t offset;
  uint32_t op;  // 0 for no record
  int32_t a, b, c;
};

TEST(ParsePropertyEscapeTest, ResultsAndWhereTheyStop) {
  constexpr EscapeCase kCases[] = {
      {"p{Any}x", 0, 6, OpRange, 0, 0x10FFFF, 0},
      {"p{^Any}", 0, 7, OpRange, 0, 0x10FFFF, -1},
      {"p{Anything}", -1, 5, OpRange, 0, 0x10FFFF, 0},
      {"p{An}", -1, 2, 0, 0, 0, 0},
      {"p{Lux}", -1, 4, OpCategory, 0x82, 0, 0},
      {"p{Lu", -1, 4, OpCategory, 0x82, 0, 0},
      {"p{^Lu", -1, 5, OpCategory, 0x82, -1, 0},
      {"p{Co}", 0, 5, OpCategory, 0x2004, 0, 0},
      {"p{Co", -1, 2, 0, 0, 0, 0},
      {"p{Cox}", -1, 2, 0, 0, 0, 0},
      {"p{L", -1, 2, 0, 0, 0, 0},
      {"p{Lx}", -1, 2, 0, 0, 0, 0},
      {"p{^^Lu}", -1, 3, 0, 0, 0, 0},
      {"p{lu}", -1, 2, 0, 0, 0, 0},
      {"p{}", -1, 2, 0, 0, 0, 0},
      {"p{", -1, 2, 0, 0, 0, 0},
      {"p{^", -1, 3, 0, 0, 0, 0},
      {"p{\xC3\xA9}", -1, 2, 0, 0, 0, 0},
      // Names of scripts are compared whole.
      {"p{Common}", 0, 9, OpScript, 1, 0, 530},
      {"p{^Coptic}", 0, 10, OpScript, 1, -1, 6},
      {"p{Inherited}", 0, 12, OpScript, 1, 0, 22},
      {"p{Latin", -1, 2, 0, 0, 0, 0},
      {"p{Lati}", -1, 2, 0, 0, 0, 0},
      {"p{Latinx}", -1, 2, 0, 0, 0, 0},
      {"p{Latin}}", 0, 8, OpScript, 1, 0, 42},
      // Blocks are refused at the brace, also by the beginning of their name.
      {"p{InBasicLatin}", -1, 14, OpRange, 0, 0x7F, 0},
      {"p{^InBasic}", -1, 10, OpRange, 0, 0x7F, -1},
      {"p{I}", -1, 3, OpRange, 0, 0x7F, 0},
      {"p{InLatin}", -1, 9, OpRange, 0x80, 0xFF, 0},
      {"p{InCyrillicS}", -1, 13, OpRange, 0x500, 0x52F, 0},
      {"p{InGreekandCoptic}", -1, 18, OpRange, 0x370, 0x3FF, 0},
      {"p{InCham}", -1, 8, OpRange, 0xAA00, 0xAA5F, 0},
      {"p{InSupplementaryPrivateUseAreaB}", -1, 32, OpRange, 0x100000, 0x10FFFF, 0},
      {"p{InBasicLatin", -1, 2, 0, 0, 0, 0},
      {"p{InBasicLatinx}", -1, 2, 0, 0, 0, 0},
      {"p{InBamum}", -1, 2, 0, 0, 0, 0},
      {"p{Ix}", -1, 2, 0, 0, 0, 0},
  };
  for (const EscapeCase& expected : kCases) {
    SCOPED_TRACE(expected.text);
    const Parsed parsed = Parse(expected.text);
    EXPECT_EQ(parsed.result, expected.result);
    EXPECT_EQ(parsed.offset, expected.offset);
    ASSERT_EQ(parsed.nodes.size(), expected.op != 0 ? 1u : 0u);
    if (expected.op != 0) {
      const ProgramNode& node = parsed.nodes[0];
      EXPECT_EQ(node.op, expected.op);
      EXPECT_EQ(node.a, expected.a);
      EXPECT_EQ(node.b, expected.b);
      EXPECT_EQ(node.c, expected.c);
      EXPECT_EQ(node.ptr != 0, expected.op == OpScript);
    }
    const std::string doublyNegated = expected.text;
    if (doublyNegated.compare(0, 3, "p{^") == 0) {
      const Parsed refused = Parse(doublyNegated, -1);
      EXPECT_EQ(refused.result, -1);
      EXPECT_EQ(refused.offset, 2);
      EXPECT_TRUE(refused.nodes.empty());
    }
  }
}

TEST(ParsePropertyEscapeTest, EveryByteBehindTheLetter) {
  const std::string majors = "LMZSNPC";
  for (int byte = 0; byte < 256; ++byte) {
    const std::string text = {'p', static_cast<char>(byte), 'x'};
    const Parsed parsed = Parse(text, -1);
    const size_t major = byte == 0 ? std::string::npos : majors.find(static_cast<char>(byte));
    if (major != std::string::npos) {
      EXPECT_EQ(parsed.result, 0);
      EXPECT_EQ(parsed.offset, 2);
      ASSERT_EQ(parsed.nodes.size(), 1u);
      EXPECT_EQ(parsed.nodes[0].op, static_cast<uint32_t>(OpCategory));
      EXPECT_EQ(parsed.nodes[0].a, 0x80 << major);
      EXPECT_EQ(parsed.nodes[0].b, -1);
    } else {
      EXPECT_EQ(parsed.result, -1);
      EXPECT_EQ(parsed.offset, byte == '{' ? 2 : 1);
      EXPECT_TRUE(parsed.nodes.empty());
    }
  }
}

// ---- Membership.

TEST(UnicodeDataTest, RecordsAreThoseOfTheDatabase) {
  const std::vector<CharacterRecord>& records = TheDatabase().Records();
  ASSERT_EQ(records.size(), 19316u);
  EXPECT_EQ(records.front().codePoint, 0);
  EXPECT_EQ(records.back().codePoint, 0xE01EF);
  constexpr CharacterRecord kKnown[] = {
      {'A', 0x82, 'a'},   {'a', 0x81, 0},       {0x130, 0x82, 0x69},
      {0x17F, 0x81, 0},   {0x1C5, 0x84, 0x1C6}, {0xC9, 0x82, 0xE9},
      {0x2028, 0x202, 0}, {0x20AC, 0x402, 0},   {0xA77D, 0x82, 0x1D79}};
  for (const CharacterRecord& known : kKnown) {
    const CharacterRecord& record = records[TheDatabase().WalkTo(known.codePoint)];
    EXPECT_EQ(record.codePoint, known.codePoint);
    EXPECT_EQ(record.category, known.category);
    EXPECT_EQ(record.lower, known.lower);
  }
}

struct NamedCategory {
  const char* name;
  int32_t mask;
};

TEST(MatchPropertyItemTest, EveryCategoryOfEveryCodePoint) {
  constexpr NamedCategory kCategories[] = {
      {"L", 0x80},    {"Ll", 0x81},   {"Lu", 0x82},   {"Lt", 0x84},   {"Lm", 0x88},
      {"Lo", 0x90},   {"L&", 0x87},   {"M", 0x100},   {"Mn", 0x101},  {"Mc", 0x102},
      {"Me", 0x104},  {"Z", 0x200},   {"Zs", 0x201},  {"Zl", 0x202},  {"Zp", 0x204},
      {"S", 0x400},   {"Sm", 0x401},  {"Sc", 0x402},  {"Sk", 0x404},  {"So", 0x408},
      {"N", 0x800},   {"Nd", 0x801},  {"Nl", 0x802},  {"No", 0x804},  {"P", 0x1000},
      {"Pd", 0x1001}, {"Ps", 0x1002}, {"Pe", 0x1004}, {"Pi", 0x1008}, {"Pf", 0x1010},
      {"Pc", 0x1020}, {"Po", 0x1040}, {"C", 0x2000},  {"Cc", 0x2001}, {"Cf", 0x2002},
      {"Co", 0x2004}, {"Cs", 0x2008}, {"Cn", 0x2010}};
  const std::vector<int32_t> tried = TriedCodePoints();
  std::vector<size_t> walked;
  for (const int32_t x : tried) {
    walked.push_back(TheDatabase().WalkTo(x));
  }
  for (const NamedCategory& category : kCategories) {
    const std::string braced = std::string("{") + category.name + "}";
    const ProgramNode nodes[] = {ParseOne("p" + braced), ParseOne("P" + braced, -1)};
    EXPECT_EQ(ParseOne(std::string("p{^") + category.name + "}").b, -1);
    for (const ProgramNode& node : nodes) {
      const bool negated = &node == &nodes[1];
      ASSERT_EQ(node.op, static_cast<uint32_t>(OpCategory));
      ASSERT_EQ(node.a, category.mask) << category.name;
      ASSERT_EQ(node.b, negated ? -1 : 0);
      const uint64_t set = CategorySet(node.a, node.b);
      for (size_t i = 0; i < tried.size(); ++i) {
        const int32_t x = tried[i];
        const bool expected = TheDatabase().MatchCategory(x, walked[i], category.mask, negated);
        ASSERT_EQ(MatchPropertyItem(x, &node, RegExpOptionI) >= 0, expected)
            << category.name << (negated ? " negated, " : ", ") << std::hex << x;
        ASSERT_EQ(InCategorySet(x, set), expected)
            << category.name << (negated ? " negated, " : ", ") << std::hex << x;
      }
    }
  }
}

constexpr const char* kScripts[] = {
    "Common",     "Latin",      "Greek",        "Cyrillic",
    "Armenian",   "Hebrew",     "Arabic",       "Syriac",
    "Thaana",     "Devanagari", "Bengali",      "Gurmukhi",
    "Gujarati",   "Oriya",      "Tamil",        "Telugu",
    "Kannada",    "Malayalam",  "Sinhala",      "Thai",
    "Lao",        "Tibetan",    "Myanmar",      "Georgian",
    "Hangul",     "Ethiopic",   "Cherokee",     "Canadian_Aboriginal",
    "Ogham",      "Runic",      "Khmer",        "Mongolian",
    "Hiragana",   "Katakana",   "Bopomofo",     "Han",
    "Yi",         "Old_Italic", "Gothic",       "Deseret",
    "Inherited",  "Tagalog",    "Hanunoo",      "Buhid",
    "Tagbanwa",   "Limbu",      "Tai_Le",       "Linear_B",
    "Ugaritic",   "Shavian",    "Osmanya",      "Cypriot",
    "Braille",    "Buginese",   "Coptic",       "New_Tai_Lue",
    "Glagolitic", "Tifinagh",   "Syloti_Nagri", "Old_Persian",
    "Kharoshthi", "Balinese",   "Cuneiform",    "Phoenician",
    "Phags_Pa",   "Nko",        "Sundanese",    "Lepcha",
    "Ol_Chiki",   "Vai",        "Saurashtra",   "Kayah_Li",
    "Rejang",     "Lycian",     "Carian",       "Lydian",
    "Cham"};

const ScriptRange* ListOf(const ProgramNode& node) {
  return reinterpret_cast<const ScriptRange*>(static_cast<uintptr_t>(node.ptr));
}

TEST(MatchPropertyItemTest, EveryScriptOfEveryCodePoint) {
  const std::vector<int32_t> tried = TriedCodePoints();
  for (const char* name : kScripts) {
    SCOPED_TRACE(name);
    ProgramNode node = ParseOne(std::string("p{") + name + "}");
    ASSERT_EQ(node.op, static_cast<uint32_t>(OpScript));
    const ScriptRange* const list = ListOf(node);
    ProgramNode negated = ParseOne(std::string("P{") + name + "}", -1);
    ASSERT_EQ(negated.b, -1);
    const ScriptRange* pair = list;
    for (const int32_t x : tried) {
      pair = x == kFirstTried ? list : pair;
      while (pair != list + node.c && pair->last < x) {
        ++pair;
      }
      const bool inside = pair != list + node.c && pair->first <= x && x <= pair->last;
      ASSERT_EQ(MatchPropertyItem(x, &node, 0) >= 0, inside) << std::hex << x;
      ASSERT_EQ(MatchPropertyItem(x, &negated, RegExpOptionI) >= 0, !inside) << std::hex << x;
    }
    // A list without pairs has no members.
    node.c = negated.c = 0;
    EXPECT_LT(MatchPropertyItem(list->first, &node, 0), 0);
    EXPECT_GE(MatchPropertyItem(list->first, &negated, 0), 0);
  }
}

// The pairs cover each character once, are in order, and end where the category changes.
TEST(UnicodeDataTest, ScriptListsAreCutWhereTheCategoryChanges) {
  std::vector<int> covered(0x110000);
  const auto kind = [](int32_t x) {
    const int32_t category = CategoryOf(x);
    return (category & 0x87) > 0x80 ? 0x87 : category;
  };
  for (const char* name : kScripts) {
    SCOPED_TRACE(name);
    const ProgramNode node = ParseOne(std::string("p{") + name + "}");
    const ScriptRange* const list = ListOf(node);
    for (int32_t i = 0; i < node.c; ++i) {
      ASSERT_LE(list[i].first, list[i].last);
      for (int32_t x = list[i].first; x <= list[i].last; ++x) {
        ++covered[static_cast<size_t>(x)];
        ASSERT_EQ(kind(x), kind(list[i].first));
      }
      if (i > 0) {
        ASSERT_LT(list[i - 1].last, list[i].first);
        ASSERT_TRUE(list[i - 1].last + 1 < list[i].first ||
                    kind(list[i - 1].last) != kind(list[i].first));
      }
    }
  }
  for (int32_t x = 0; x < 0x110000; ++x) {
    const int32_t category = CategoryOf(x);
    const bool isCharacter = category != 0x2004 && category != 0x2008 && category != 0x2010;
    ASSERT_EQ(covered[static_cast<size_t>(x)], isCharacter ? 1 : 0) << std::hex << x;
  }
}

TEST(MatchPropertyItemTest, FoldingOfEveryCodePoint) {
  for (const int32_t x : TriedCodePoints()) {
    const int32_t folded = TheDatabase().Fold(x);
    ASSERT_EQ(FoldCase(x), folded) << std::hex << x;
    for (const int32_t y :
         std::initializer_list<int32_t>{x, folded, x ^ 0x20, x ^ 1, 0, 'k', 0xE5, 0x10FFFF}) {
      const ProgramNode node = {OpCodePoint, y, 0, 0, 0};
      ASSERT_EQ(MatchPropertyItem(x, &node, 0) >= 0, x == y) << std::hex << x << ", " << y;
      const int32_t difference = folded ^ TheDatabase().Fold(y);
      ASSERT_EQ(MatchPropertyItem(x, &node, RegExpOptionI) >= 0,
                difference <= 0 && difference != INT_MIN)
          << std::hex << x << ", " << y;
    }
  }
}

TEST(MatchPropertyItemTest, RangesAndOtherRecords) {
  for (const int32_t x : {INT_MIN, -1, 0, 4, 5, 9, 10, 0x10FFFF, 0x110000, INT_MAX}) {
    for (const int32_t negated : {0, -1, 1}) {
      const ProgramNode some = {OpRange, 5, 9, negated, 0};
      const ProgramNode any = {OpRange, 0, 0x10FFFF, negated, 0};
      EXPECT_EQ(MatchPropertyItem(x, &some, 0) >= 0, (x >= 5 && x <= 9) == (negated == 0)) << x;
      EXPECT_EQ(MatchPropertyItem(x, &any, 0) >= 0, (x >= 0 && x <= 0x10FFFF) == (negated == 0));
    }
    const ProgramNode other = {OpChar, x, 0, 0, 0};
    EXPECT_LT(MatchPropertyItem(x, &other, 0), 0);
  }
}

}  // namespace
}  // namespace vekch::regexp::test
