// SPDX-License-Identifier: MIT

// Pattern objects and their compilation: listings that a person has checked, every small pattern
// against a model, the densest patterns flush against the end of memory.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "examples/vekgrep/explain.h"
#include "tests/pattern_model.h"
#include "tests/pattern_object.h"
#include "tests/program_checks.h"
#include "vekch/regexp_help.h"
#include "vekch/regexp_program.h"
#include "vekch/vekch.h"

namespace vekch::test {
namespace {

// ---- The golden table.

// A program in the form of the table: its listing with fewer words.
std::string Shorten(std::string listing) {
  static const std::pair<const char*, const char*> kShortForms[] = {
      {R"re(  \([^()]*\)\n)re", "\n"},  // a meaning in words
      {"\n +[0-9]+ +Op|^ +0 +Op", "  "},
      {" (byte|letter|length|lowest|highest|serial|extent|items|group|mask|slot|code point|ranges|"
       "minimum|maximum)=",
       " "},
      {"options=", "+"},
      {"negated=-1", "not"},
      {"unbounded", "inf"},
      {"GroupEnd", "End"},
      {"Alternative", "Or"},
      {R"(ClassRange (\S+) )", "$1-"},
      {"CharType '(.)'", R"(\$1)"},
      {R"(Greedy (\S+) (\S+))", "{$1,$2}"},
      {R"(Lazy (\S+) (\S+))", "{$1,$2}?"},
      {"Char ('.'|0x..)", "$1"},
      {R"re(String \d+( \+\S+)? ("[^"]*"))re", "$2$1"},
      {R"((.*\S)?\s+search mode (\d), required literal (\S+), captures (\d+)\s*)", " $2 $3 $4$1"},
      {" +", " "},
  };
  for (const auto& [form, shorter] : kShortForms) {
    listing = std::regex_replace(listing, std::regex(form), shorter);
  }
  return listing;
}

void CheckListing(PatternObject& bench, const std::string& row) {
  std::smatch parts;
  ASSERT_TRUE(std::regex_match(row, parts, std::regex(R"(/(.*)/(\w*)( +\d +-?\d+ +\d+( .*)?))")));
  const std::string pattern = std::regex_replace(parts.str(1), std::regex("\xC2\xB6"), "\n");
  ASSERT_EQ(bench.Compile(pattern, parts.str(2).c_str()), StatusNoError) << row;
  EXPECT_EQ(Shorten(examples::vekgrep::ListProgram(*bench.State())),
            std::regex_replace(parts.str(3), std::regex(" +"), " "))
      << row;
}

// A status and a cause, then patterns with a mark before the fault.
void CheckFaults(PatternObject& bench, const std::string& row) {
  static const std::map<std::string, vekStatus> kStatuses = {
      {"Escape", StatusRegExpEscapeError},
      {"Class", StatusRegExpClassError},
      {"Format", StatusRegExpFormatError},
      {"Syntax", StatusRegExpSyntaxError},
      {"Quantifier", StatusRegExpQuantifierError}};
  const std::string mark = "\xE2\x96\xB2";
  const size_t comma = row.find(", ");
  const size_t end = row.find(":  ");
  std::istringstream words(row.substr(end + 1));
  for (std::string word; words >> word;) {
    const size_t position = word.find(mark);
    const vekStatus status = bench.Compile(word.erase(position, mark.size()));
    ASSERT_EQ(status, kStatuses.at(row.substr(0, comma))) << word;
    EXPECT_EQ(bench.Offset(), static_cast<int32_t>(position)) << word;
    EXPECT_EQ(vekRegExpFaultText(BytesOf(word), nullptr, status, bench.Offset()),
              row.substr(comma + 2, end - comma - 2))
        << word;
  }
}

TEST(CompilerTest, GoldenTable) {
  std::ifstream table(VEKCH_TEST_FOLDER "/compiler_golden.txt", std::ios::binary);
  std::vector<std::string> rows;
  for (std::string line; std::getline(table, line);) {
    if (line[0] == ' ') {
      rows.back() += line;
    } else if (line[0] != '#') {
      rows.push_back(line);
    }
  }
  EXPECT_GT(rows.size(), 150U);
  PatternObject bench(200);
  for (const std::string& row : rows) {
    row[0] == '/' ? CheckListing(bench, row) : CheckFaults(bench, row);
  }
}

// ---- The object.

TEST(ObjectTest, SizeOfEveryLengthBetweenTheGuards) {
  GuardedBuffer buffer(600);
  for (size_t length = 0; length <= 512; ++length) {
    uint8_t* pattern = buffer.AtEnd(length + 1);
    std::memset(pattern, '(', length);  // never parsed
    pattern[length] = 0;
    int32_t size = kNoOffset;
    ASSERT_EQ(veksRegExpGetSize(pattern, &size), StatusNoError);
    ASSERT_EQ(size, 48056 + 24 * static_cast<int32_t>(length));
  }
}

// A wrong option ends the compilation right after the clearing.
TEST(ObjectTest, EveryByteOfTheBlockIsCleared) {
  PatternObject bench(40);
  for (size_t length = 0; length <= 40; ++length) {
    const size_t size = RegExpFixedSize + RegExpSizePerByte * length;
    bench.Fill(0x5A);
    ASSERT_EQ(bench.Compile(std::string(length, 'a'), "?"), StatusRegExpOptionError);
    const auto* block = reinterpret_cast<const uint8_t*>(bench.State());
    EXPECT_EQ(std::count(block, block + size, 0), static_cast<ptrdiff_t>(size)) << length;
    EXPECT_EQ(length == 40 ? 0x5A : block[-1], 0x5A) << length;
  }
}

TEST(ObjectTest, SettersWriteOneField) {
  std::vector<RegExpState> states(2);
  for (const int32_t value : {0, 1, INT32_MAX}) {
    states[1].matchLimit = value;
    EXPECT_EQ(veksRegExpSetMatchLimit(value, &states[0]), StatusNoError);
    states[1].characterFormat = value & 1;
    EXPECT_EQ(veksRegExpSetFormat(value & 1, &states[0]), StatusNoError);
    EXPECT_EQ(std::memcmp(&states[0], &states[1], sizeof(RegExpState)), 0) << value;
  }
}

// Up to the pre-scan nothing stays but the anchor's record; after it a part of the header.
TEST(CompilerTest, HeaderAfterSuccessAndAfterEachKindOfFailure) {
  struct Case {
    const char* pattern;
    const char* options;
    vekStatus status;
    bool hasAnchor;
    uint32_t header[8];
  };
  const Case cases[] = {
      {"a(b)", "gi", StatusNoError, false, {RegExpTag, 0x14, 4, 2, UINT32_MAX, 10000, 1, 1}},
      {".*(", "q", StatusRegExpOptionError, true, {}},
      {".*(", "m", StatusRegExpSyntaxError, true, {}},
      {"a(", "m", StatusRegExpSyntaxError, false, {}},
      {"(a)**", "m", StatusRegExpQuantifierError, false, {RegExpTag, 2, 0, 2, 0, 0, 1, 0}},
  };
  PatternObject bench(20);
  for (const Case& test : cases) {
    ASSERT_EQ(bench.Compile(test.pattern, test.options), test.status);
    EXPECT_EQ(std::memcmp(bench.State(), test.header, sizeof test.header), 0) << test.pattern;
    const auto* nodes = reinterpret_cast<const ProgramNode*>(bench.State() + 1);
    EXPECT_EQ(nodes[0].op == OpAssert, test.hasAnchor) << test.pattern;
  }
}

TEST(CompilerTest, EveryOptionLetter) {
  PatternObject bench(1);
  for (int letter = 1; letter < 256; ++letter) {
    const char options[] = {'m', static_cast<char>(letter), static_cast<char>(letter), 0};
    const size_t position = std::string("smixg").find(options[1]);
    const bool isOption = position != std::string::npos;
    EXPECT_EQ(bench.Compile("a", options), isOption ? StatusNoError : StatusRegExpOptionError);
    EXPECT_EQ(bench.Offset(), isOption ? kNoOffset : 0);
    EXPECT_EQ(bench.State()->compileFlags, isOption ? 2U | 1U << position : 0U) << letter;
  }
}

TEST(CompilerTest, WhatOptionXPassesOver) {
  PatternObject bench(3);
  for (char byte = 1; byte <= ' '; ++byte) {
    const bool ends = std::string(" \t\n\f\r").find(byte) != std::string::npos;
    ASSERT_EQ(bench.Compile({'a', byte, 'b'}, "x"), StatusNoError);
    EXPECT_EQ(bench.State()->nodeCount, ends ? 2 : 1) << +byte;  // a run, or two of its halves
  }
}

// ---- Limits.

TEST(CompilerTest, LimitsOfGroupsAndNesting) {
  struct Case {
    std::string pattern;
    vekStatus status;
    int32_t offset;
  };
  const Case cases[] = {
      {Repeat("()", 999), StatusNoError, kNoOffset},
      {Repeat("()", 1000), StatusRegExpSyntaxError, 2 * 999},
      {Repeat("()", 1001), StatusRegExpSyntaxError, 2 * 1000},  // the pre-scan, one group later
      {Repeat("()", 1000) + "**", StatusRegExpSyntaxError, 2 * 999},
      {Repeat("(?=)", 1000), StatusRegExpSyntaxError, 4 * 999},
      {Repeat("(?:a)", 2000), StatusNoError, kNoOffset},  // dissolved groups don't count
      {Repeat("()", 999) + "(?#)", StatusRegExpSyntaxError, 2 * 999},
      {Repeat("(", 999) + Repeat(")", 999), StatusNoError, kNoOffset},
      {Repeat("(", 1000) + Repeat(")", 1000), StatusRegExpSyntaxError, 999},
      {Repeat("(?:", 999) + "a" + Repeat(")", 999), StatusNoError, kNoOffset},
      {Repeat("(", 998) + "(?(1)a)" + Repeat(")", 998), StatusNoError, kNoOffset},
      {Repeat("(", 998) + "(?(?=a)b)" + Repeat(")", 998), StatusRegExpSyntaxError, 1000},
      {Repeat("(", 998) + "(?((a" + Repeat(")", 1001), StatusRegExpSyntaxError, 1001},
      {"(?<=" + Repeat("(", 998) + "ab" + Repeat(")", 998) + "{3})", StatusNoError, kNoOffset},
      {Repeat("ab*", 20000), StatusNoError, kNoOffset},
      {std::string(100000, 'a'), StatusNoError, kNoOffset},
  };
  PatternObject bench(100000);
  for (const Case& test : cases) {
    EXPECT_EQ(bench.Compile(test.pattern), test.status) << test.pattern.substr(0, 20);
    EXPECT_EQ(bench.Offset(), test.offset) << test.pattern.substr(0, 20);
    if (test.status == StatusNoError) {
      EXPECT_EQ(FindFlaw(*bench.State(), test.pattern.size()), "") << test.pattern.substr(0, 20);
    }
  }
}

TEST(CompilerTest, BoundsOfMergedRepetitionsStopGrowing) {
  const PatternObject object(Repeat(".{65535,}", 16385) + ".");
  EXPECT_EQ(object.State()->nodeCount, 2);
  const ProgramNode& last = reinterpret_cast<const ProgramNode*>(object.State() + 1)[1];
  EXPECT_EQ(last.a, RegExpUnbounded);
  EXPECT_EQ(last.b, RegExpUnbounded);
}

// ---- Room. What takes the most records for its bytes, alone and repeated, before and after
// other dense text: a record too many would hit the guard.

TEST(CompilerTest, DensestConstructsStayInTheObject) {
  std::istringstream words(
      R"(a* a?b* ab* . .. .* \d\d | ^ $* () (|) (?:.*) (?:.+) (?=) (?=a)* (?>a*) (?(1)) (?(1)|) (?i)
         (?i:) []] [-] [^-] [a-] [a-[:word:]] [[:] [[:punct:]] [[:^punct:]] [a-[.]x [abc]* \pL
         [[:alnum:][:xdigit:][:alpha:]] [\pL\PN] \p{Any}* \1 \0 \Qa\E* a\Eb\E ab abc* \x41*
         \x{1}* [\x{1}-\x{2}])");
  const std::vector<std::string> dense(std::istream_iterator<std::string>(words), {});
  PatternObject bench(2100);
  for (const std::string& first : dense) {
    for (const std::string& second : dense) {
      for (const size_t times : {0U, 1U, 2U, 3U, 40U}) {
        for (const char* front : {"", ".*", "(a)", "a"}) {
          const std::string pattern = front + Repeat(first, times) + second;
          const vekStatus status = bench.Compile(pattern, times == 2 ? "x" : "i");
          if (status == StatusNoError) {
            ASSERT_EQ(FindFlaw(*bench.State(), pattern.size()), "") << pattern;
          }
        }
      }
    }
  }
}

// ---- Every small pattern, against the model.

void CompareWithModel(PatternObject& bench, const std::string& pattern) {
  const Verdict expected = JudgePattern(pattern);
  const vekStatus status = bench.Compile(pattern);
  ASSERT_EQ(status, expected.status) << pattern << " at " << bench.Offset();
  ASSERT_EQ(bench.Offset(),
            status == StatusNoError ? kNoOffset : static_cast<int32_t>(expected.offset))
      << pattern;
  if (status == StatusNoError) {
    ASSERT_EQ(FindFlaw(*bench.State(), pattern.size()), "") << pattern;
  }
}

class SmallPatterns : public testing::TestWithParam<std::pair<const char*, size_t>> {};

TEST_P(SmallPatterns, LikeTheModel) {
  Words letters;
  for (const char letter : std::string(GetParam().first)) {
    letters.emplace_back(1, letter);
  }
  const size_t longest = GetParam().second;
  PatternObject bench(longest);
  size_t compiled = 0;
  for (const std::string& pattern : AllTexts(letters, longest)) {
    ASSERT_NO_FATAL_FAILURE(CompareWithModel(bench, pattern));
    compiled += bench.Offset() == kNoOffset ? 1 : 0;
  }
  EXPECT_GT(compiled, 300U);
}

INSTANTIATE_TEST_SUITE_P(Alphabets, SmallPatterns,
                         testing::Values(std::make_pair(kModelAlphabet, 4),
                                         std::make_pair("a()|*?:", 6), std::make_pair("(?1)-:|", 6),
                                         std::make_pair("ab[]^-\\:.", 5),
                                         std::make_pair("[]:.^a", 6), std::make_pair("a{},1*?", 6),
                                         std::make_pair(".\\b1*(?:)", 5),
                                         std::make_pair("-b[\\]1a", 6)));

}  // namespace
}  // namespace vekch::test
