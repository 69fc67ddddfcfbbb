// SPDX-License-Identifier: MIT

// The property escapes, which code points a property has, and sets of bytes as ranges.

#include "regexp/characters/properties.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <iterator>
#include <numeric>
#include <sstream>
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
// test's matter: with VEKCH_PRINT_ANSWERS set it is given each line that is digested.

constexpr int32_t kCodePoints = 0x110000;

class Answers {
 public:
  void Add(const std::string& line) {
    for (const char c : line) {
      Mix(static_cast<uint8_t>(c));
    }
    if (std::getenv("VEKCH_PRINT_ANSWERS") != nullptr) {
      std::puts(line.c_str());
    }
  }

  // The code points of which something holds; what lies outside of them is digested alone.
  template <class IsMember>
  void AddMembers(const std::string& name, IsMember isMember) {
    std::ostringstream line;
    line << name << std::hex;
    for (int32_t x = 0, first = -1; x <= kCodePoints; ++x) {
      const bool isIn = x < kCodePoints && isMember(x);
      if (isIn && first < 0) {
        first = x;
      } else if (!isIn && first >= 0) {
        line << ' ' << first << '-' << x - 1;
        first = -1;
      }
    }
    Add(line.str());
    for (const int32_t far : {INT_MIN, INT_MIN + 'A', -0x110000, 0x200041, INT_MAX}) {
      Mix(isMember(far) ? 1 : 0);
    }
    for (int32_t x = 1; x < 300; ++x) {
      Mix((isMember(-x) ? 2U : 0U) + (isMember(kCodePoints - 1 + x) ? 1U : 0U));
    }
  }

  uint64_t Digest() const { return digest_; }

 private:
  void Mix(uint64_t value) { digest_ = (digest_ ^ value) * 0x100000001B3; }

  uint64_t digest_ = 0xCBF29CE484222325;
};

// The names of a list, each with the brace that ends it.
std::vector<std::string> NamesIn(std::string list) {
  std::vector<std::string> names;
  for (; !list.empty(); list.erase(0, names.back().size())) {
    names.push_back(list.substr(0, list.find('}') + 1));
  }
  return names;
}

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
  Answers answers;
  for (const Category& category : kCategories) {
    for (const bool negated : {false, true}) {
      const std::string escape = (negated ? "P{" : "p{") + std::string(category.name) + "}";
      const ProgramNode node = ParseOne(escape, negated ? -1 : 0);
      ASSERT_EQ(node.op, static_cast<uint32_t>(OpCategory));
      ASSERT_EQ(node.a, category.mask) << category.name;
      ASSERT_EQ(node.b, negated ? -1 : 0);
      const uint64_t set = CategorySet(node.a, node.b);
      answers.AddMembers(escape, [&](int32_t x) {
        const bool isMember = MatchPropertyItem(x, &node, RegExpOptionI) >= 0;
        EXPECT_EQ(InCategorySet(x, set), isMember) << category.name << ' ' << std::hex << x;
        return isMember;
      });
    }
  }
  EXPECT_EQ(answers.Digest(), 0xC7CC65A9745D82C0U);
}

TEST(MatchPropertyItemTest, EveryScriptOfEveryCodePoint) {
  Answers answers;
  for (const std::string& name : NamesIn(kScriptNames)) {
    SCOPED_TRACE(name);
    ProgramNode node = ParseOne("p{" + name);
    ProgramNode negated = ParseOne("P{" + name, -1);
    ASSERT_EQ(node.op, static_cast<uint32_t>(OpScript));
    ASSERT_EQ(negated.b, -1);
    const auto* list = reinterpret_cast<const ScriptRange*>(static_cast<uintptr_t>(node.ptr));
    answers.AddMembers("p{" + name, [&](int32_t x) {
      const bool isMember = MatchPropertyItem(x, &node, 0) >= 0;
      EXPECT_NE(MatchPropertyItem(x, &negated, RegExpOptionI) >= 0, isMember) << std::hex << x;
      return isMember;
    });
    // A list without pairs has no members.
    node.c = negated.c = 0;
    EXPECT_LT(MatchPropertyItem(list->first, &node, 0), 0);
    EXPECT_GE(MatchPropertyItem(list->first, &negated, 0), 0);
  }
  EXPECT_EQ(answers.Digest(), 0x8E0CF209A856E60FU);
}

TEST(MatchPropertyItemTest, FoldingOfEveryCodePoint) {
  Answers answers;
  std::ostringstream line;
  line << "folding" << std::hex;
  answers.AddMembers("what is folded", [&](int32_t x) {
    const int32_t folded = FoldCase(x);
    if (folded != x && x >= 0 && x < kCodePoints) {
      line << ' ' << x << '-' << folded;
    }
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
  answers.Add(line.str());
  EXPECT_EQ(answers.Digest(), 0x3A96C6F0D5B80B9EU);
}

TEST(MatchPropertyItemTest, EveryBlock) {
  Answers answers;
  std::ostringstream line;
  line << "blocks" << std::hex;
  for (const std::string& name : NamesIn(kBlockNames)) {
    const Parsed parsed = Parse("p{" + name);
    ASSERT_EQ(parsed.nodes.size(), 1u) << name;
    line << ' ' << name << parsed.nodes[0].a << '-' << parsed.nodes[0].b;
  }
  answers.Add(line.str());
  EXPECT_EQ(answers.Digest(), 0x9D81CA7AEC62F222U);
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
