// SPDX-License-Identifier: MIT

// The property escapes, which code points a property has, and sets of bytes as ranges.

#include "regexp/characters/properties.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <initializer_list>
#include <iterator>
#include <numeric>
#include <string>
#include <vector>

#include "regexp/characters/byte_ranges.h"
#include "tests/guarded_buffer.h"

namespace vekch::regexp::test {
namespace {

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
  uint32_t op = 0;  // 0 for no record
  int32_t a = 0, b = 0, c = 0;
};

TEST(ParsePropertyEscapeTest, ResultsAndWhereTheyStop) {
  constexpr EscapeCase kCases[] = {
      {"p{Any}x", 0, 6, OpRange, 0, 0x10FFFF, 0},
      {"p{^Any}", 0, 7, OpRange, 0, 0x10FFFF, -1},
      {"p{Anything}", -1, 5, OpRange, 0, 0x10FFFF, 0},
      {"p{Lux}", -1, 4, OpCategory, 0x82, 0, 0},
      {"p{Lu", -1, 4, OpCategory, 0x82, 0, 0},
      {"p{^Lu", -1, 5, OpCategory, 0x82, -1, 0},
      {"p{Co}", 0, 5, OpCategory, 0x2004, 0, 0},
      {"p{^^Lu}", -1, 3},
      {"p{^", -1, 3},
      {"p{Common}", 0, 9, OpScript, 1, 0, 530},
      {"p{^Coptic}", 0, 10, OpScript, 1, -1, 6},
      {"p{Inherited}", 0, 12, OpScript, 1, 0, 22},
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

// Names of scripts are compared whole, those of blocks as well.
TEST(ParsePropertyEscapeTest, WhatIsRefusedAtItsName) {
  for (const char* text :
       {"p{An}", "p{Co", "p{Cox}", "p{L", "p{Lx}", "p{lu}", "p{}", "p{", "p{\u00E9}", "p{Latin",
        "p{Lati}", "p{Latinx}", "p{InBasicLatin", "p{InBasicLatinx}", "p{InBamum}", "p{Ix}"}) {
    const Parsed parsed = Parse(text);
    EXPECT_TRUE(parsed.result == -1 && parsed.offset == 2 && parsed.nodes.empty()) << text;
  }
}

TEST(ParsePropertyEscapeTest, EveryByteAfterTheLetter) {
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

// ---- Membership, by digests of all answers: what the test of the Unicode data, which needs a
// package from elsewhere, compared with that package has stayed so. Which answer differs is that
// test's matter.

class Digest {
 public:
  void Add(int64_t value) { value_ = (value_ ^ static_cast<uint64_t>(value)) * 0x100000001B3; }

  // The code points, and far more, at which the answers begin and end.
  template <class IsMember>
  void AddMembers(IsMember isMember) {
    bool before = false;
    const auto take = [&](int32_t x) {
      if (isMember(x) != before) {
        Add(x);
        before = !before;
      }
    };
    for (const int32_t far : {INT_MIN, INT_MIN + 'A', -0x110000, 0x200041, INT_MAX}) {
      take(far);
    }
    for (int32_t x = -70; x < 0x110000 + 300; ++x) {
      take(x);
    }
  }

  uint64_t Value() const { return value_; }

 private:
  uint64_t value_ = 0xCBF29CE484222325;
};

struct Category {
  const char* name;
  int32_t mask;
};

TEST(MatchPropertyItemTest, EveryCategoryOfEveryCodePoint) {
  constexpr Category kCategories[] = {
      {"L", 0x80},    {"Ll", 0x81},   {"Lu", 0x82},   {"Lt", 0x84},   {"Lm", 0x88},
      {"Lo", 0x90},   {"L&", 0x87},   {"M", 0x100},   {"Mn", 0x101},  {"Mc", 0x102},
      {"Me", 0x104},  {"Z", 0x200},   {"Zs", 0x201},  {"Zl", 0x202},  {"Zp", 0x204},
      {"S", 0x400},   {"Sm", 0x401},  {"Sc", 0x402},  {"Sk", 0x404},  {"So", 0x408},
      {"N", 0x800},   {"Nd", 0x801},  {"Nl", 0x802},  {"No", 0x804},  {"P", 0x1000},
      {"Pd", 0x1001}, {"Ps", 0x1002}, {"Pe", 0x1004}, {"Pi", 0x1008}, {"Pf", 0x1010},
      {"Pc", 0x1020}, {"Po", 0x1040}, {"C", 0x2000},  {"Cc", 0x2001}, {"Cf", 0x2002},
      {"Co", 0x2004}, {"Cs", 0x2008}, {"Cn", 0x2010}};
  Digest digest;
  for (const Category& category : kCategories) {
    for (const bool negated : {false, true}) {
      const ProgramNode node =
          ParseOne((negated ? "P{" : "p{") + std::string(category.name) + "}", negated ? -1 : 0);
      ASSERT_EQ(node.op, static_cast<uint32_t>(OpCategory));
      ASSERT_EQ(node.a, category.mask) << category.name;
      ASSERT_EQ(node.b, negated ? -1 : 0);
      const uint64_t set = CategorySet(node.a, node.b);
      digest.AddMembers([&](int32_t x) {
        const bool isMember = MatchPropertyItem(x, &node, RegExpOptionI) >= 0;
        EXPECT_EQ(InCategorySet(x, set), isMember) << category.name << ' ' << std::hex << x;
        return isMember;
      });
    }
  }
  EXPECT_EQ(digest.Value(), 0xA5B62498D8E0CDB0U);
}

TEST(MatchPropertyItemTest, EveryScriptOfEveryCodePoint) {
  Digest digest;
  std::string names = kScriptNames;
  for (; !names.empty(); names.erase(0, names.find('}') + 1)) {
    const std::string name = names.substr(0, names.find('}') + 1);
    SCOPED_TRACE(name);
    ProgramNode node = ParseOne("p{" + name);
    ProgramNode negated = ParseOne("P{" + name, -1);
    ASSERT_EQ(node.op, static_cast<uint32_t>(OpScript));
    ASSERT_EQ(negated.b, -1);
    const auto* list = reinterpret_cast<const ScriptRange*>(static_cast<uintptr_t>(node.ptr));
    for (int32_t i = 0; i < node.c; ++i) {
      digest.Add(list[i].first);
      digest.Add(list[i].last);
    }
    digest.AddMembers([&](int32_t x) {
      const bool isMember = MatchPropertyItem(x, &node, 0) >= 0;
      EXPECT_NE(MatchPropertyItem(x, &negated, RegExpOptionI) >= 0, isMember) << std::hex << x;
      return isMember;
    });
    // A list without pairs has no members.
    node.c = negated.c = 0;
    EXPECT_LT(MatchPropertyItem(list->first, &node, 0), 0);
    EXPECT_GE(MatchPropertyItem(list->first, &negated, 0), 0);
  }
  EXPECT_EQ(digest.Value(), 0xD02A160F471131EFU);
}

TEST(MatchPropertyItemTest, FoldingOfEveryCodePoint) {
  Digest digest;
  digest.AddMembers([&](int32_t x) {
    const int32_t folded = FoldCase(x);
    digest.Add(folded - int64_t{x});
    for (const int32_t y : {x, folded, x ^ 0x20, x ^ 1, 0, int32_t{'k'}, 0xE5, 0x10FFFF}) {
      const ProgramNode node = {OpCodePoint, y, 0, 0, 0};
      EXPECT_EQ(MatchPropertyItem(x, &node, 0) >= 0, x == y) << std::hex << x << ", " << y;
      const int32_t difference = folded ^ FoldCase(y);
      EXPECT_EQ(MatchPropertyItem(x, &node, RegExpOptionI) >= 0,
                difference <= 0 && difference != INT_MIN)
          << std::hex << x << ", " << y;
    }
    return folded != x;
  });
  EXPECT_EQ(digest.Value(), 0x1D96842F0B2DA297U);
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

// ---- Sets of bytes as ranges.

// Every set whose members and others change at some of these values.
TEST(ByteRangesTest, OfSets) {
  constexpr int kEdges[] = {0, 1, 9, 10, 0x30, 0x3A, 0x7F, 0x80, 0x81, 0xFE, 0xFF};
  uint8_t all[256];
  std::iota(all, all + 256, uint8_t{0});
  for (unsigned chosen = 0; chosen < 1U << std::size(kEdges); ++chosen) {
    uint8_t table[256];
    int counts[2] = {0, 0};  // of the ranges of others, and of members
    bool isMember = false;
    for (int value = 0; value < 256; ++value) {
      const auto* const edge = std::find(std::begin(kEdges), std::end(kEdges), value);
      const bool turns = edge != std::end(kEdges) && (chosen >> (edge - kEdges) & 1) != 0;
      counts[isMember != turns] += turns || value == 0 ? 1 : 0;
      isMember = isMember != turns;
      table[value] = isMember ? 0xFF : 0x7F;
    }
    kernels::RangeSet set;
    FillRangeSet(table, 0x80, &set);
    const bool isAll = chosen == 1;  // which takes two ranges
    const int fewest = table[0] == 0xFF ? std::min(counts[0], counts[1]) : counts[1];
    ASSERT_EQ(set.count, isAll ? 2 : fewest <= kernels::kMostRanges ? fewest : 0) << chosen;
    kernels::Ranges ranges;
    const int rounded = counts[1] == 3 ? 4 : counts[1];
    ASSERT_EQ(RangesOf(table, 0x80, &ranges),
              isAll || rounded > kernels::kMostRanges ? 0 : rounded);
    for (int base = 0; base < 256 && set.count > 0; base += kernels::kGroup) {
      const uint64_t members = kernels::WithLoaded(
          set, [&](const auto& loaded) { return loaded.MembersInGroup(all + base); });
      for (int i = 0; i < kernels::kGroup; ++i) {
        const uint32_t few = kernels::MembersAt(set, all + base + i / 16 * 16);
        ASSERT_EQ(members >> i & 1, table[base + i] >> 7) << chosen << ", " << base + i;
        ASSERT_EQ(few >> i % 16 & 1, table[base + i] >> 7) << chosen << ", " << base + i;
      }
    }
  }
}

}  // namespace
}  // namespace vekch::regexp::test
