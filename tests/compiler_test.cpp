// Pattern objects and their compilation: listings that a person has checked, every small pattern
// against a model, the densest patterns flush against the end of memory.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "examples/vekgrep/explain.h"
#include "tests/guarded_buffer.h"
#include "tests/pattern_model.h"
#include "tests/program_checks.h"
#include "vekch/regexp_program.h"
#include "vekch/vekch.h"

namespace vekch::test {
namespace {

constexpr int32_t kUnwritten = 0x5A5A5A5A;

const uint8_t* Bytes(const char* text) { return reinterpret_cast<const uint8_t*>(text); }

TEST(ObjectTest, SizeOfEveryLengthBetweenTheGuards) {
  GuardedBuffer buffer(600);
  for (size_t length = 0; length <= 512; ++length) {
    uint8_t* pattern = buffer.AtEnd(length + 1);
    std::memset(pattern, '(', length);  // never parsed
    pattern[length] = 0;
    int32_t size = kUnwritten;
    ASSERT_EQ(veksRegExpGetSize(pattern, &size), StatusNoError);
    ASSERT_EQ(size, 48056 + 24 * static_cast<int32_t>(length));
  }
  int32_t size = kUnwritten;
  EXPECT_EQ(veksRegExpGetSize(nullptr, &size), StatusNullPointer);
  EXPECT_EQ(veksRegExpGetSize(Bytes("a"), nullptr), StatusNullPointer);
  EXPECT_EQ(size, kUnwritten);
}

// The setters write their one field of a block that was never compiled, and nothing else.
// A wrong option ends the compilation right behind the clearing.
TEST(ObjectTest, EveryByteOfTheBlockIsCleared) {
  constexpr size_t kLongest = 40;
  GuardedBuffer patternBuffer(kLongest + 1);
  GuardedBuffer objectBuffer(1 + RegExpFixedSize + RegExpSizePerByte * kLongest);
  for (size_t length = 0; length <= kLongest; ++length) {
    uint8_t* pattern = patternBuffer.AtEnd(length + 1);
    std::memset(pattern, 'a', length);
    pattern[length] = 0;
    const size_t size = RegExpFixedSize + RegExpSizePerByte * length;
    uint8_t* block = objectBuffer.AtEnd(size);
    std::memset(block - 1, 0x5A, size + 1);
    int32_t offset = kUnwritten;
    ASSERT_EQ(veksRegExpInit(pattern, Bytes("?"), reinterpret_cast<RegExpState*>(block), &offset),
              StatusRegExpOptionError);
    EXPECT_EQ(std::count(block, block + size, 0), static_cast<ptrdiff_t>(size)) << length;
    EXPECT_EQ(block[-1], 0x5A) << length;
  }
}

TEST(ObjectTest, SettersWriteOneFieldOrNothing) {
  struct Case {
    vekStatus (*set)(int32_t, RegExpState*) noexcept;
    int32_t value;
    vekStatus status;
    size_t field;
  };
  const size_t limit = offsetof(RegExpState, matchLimit);
  const size_t format = offsetof(RegExpState, characterFormat);
  const Case cases[] = {
      {veksRegExpSetMatchLimit, 0, StatusNoError, limit},
      {veksRegExpSetMatchLimit, 1, StatusNoError, limit},
      {veksRegExpSetMatchLimit, INT32_MAX, StatusNoError, limit},
      {veksRegExpSetMatchLimit, -1, StatusLengthError, limit},
      {veksRegExpSetMatchLimit, INT32_MIN, StatusLengthError, limit},
      {veksRegExpSetFormat, 0, StatusNoError, format},
      {veksRegExpSetFormat, 1, StatusNoError, format},
      {veksRegExpSetFormat, 2, StatusRangeError, format},
      {veksRegExpSetFormat, -1, StatusRangeError, format},
  };
  GuardedBuffer buffer(sizeof(RegExpState));
  for (const Case& test : cases) {
    uint8_t* block = buffer.AtEnd(sizeof(RegExpState));
    std::vector<uint8_t> expected(block, block + sizeof(RegExpState));
    if (test.status == StatusNoError) {
      std::memcpy(expected.data() + test.field, &test.value, sizeof test.value);
    }
    EXPECT_EQ(test.set(test.value, nullptr), StatusNullPointer);
    EXPECT_EQ(test.set(test.value, reinterpret_cast<RegExpState*>(block)), test.status);
    EXPECT_EQ(std::memcmp(block, expected.data(), expected.size()), 0) << test.value;
  }
}

// A pattern and its object, both flush against pages that can't be touched.
class Workbench {
 public:
  explicit Workbench(size_t longest)
      : patternBuffer(longest + 1), objectBuffer(RegExpFixedSize + RegExpSizePerByte * longest) {}

  vekStatus Compile(const std::string& pattern, const char* options = nullptr) {
    uint8_t* text = patternBuffer.AtEnd(pattern.size() + 1);
    std::memcpy(text, pattern.c_str(), pattern.size() + 1);
    int32_t size = 0;
    veksRegExpGetSize(text, &size);
    object = objectBuffer.AtEnd(static_cast<size_t>(size));
    offset = kUnwritten;
    const vekStatus status =
        veksRegExpInit(text, reinterpret_cast<const uint8_t*>(options), State(), &offset);
    std::memset(text, '?', pattern.size());  // the object does not need it any more
    return status;
  }

  RegExpState* State() const { return reinterpret_cast<RegExpState*>(object); }
  int32_t Offset() const { return offset; }

 private:
  GuardedBuffer patternBuffer;
  GuardedBuffer objectBuffer;
  uint8_t* object = nullptr;
  int32_t offset = kUnwritten;
};

std::string StatusName(vekStatus status) {
  const std::map<vekStatus, std::string> names = {
      {StatusRegExpEscapeError, "StatusRegExpEscapeError"},
      {StatusRegExpClassError, "StatusRegExpClassError"},
      {StatusRegExpFormatError, "StatusRegExpFormatError"},
      {StatusRegExpSyntaxError, "StatusRegExpSyntaxError"},
      {StatusRegExpQuantifierError, "StatusRegExpQuantifierError"},
      {StatusRegExpOptionError, "StatusRegExpOptionError"},
  };
  const auto found = names.find(status);
  return found == names.end() ? std::to_string(status) : found->second;
}

// ---- The golden table: "/pattern/options" and, indented, what comes of it.

TEST(CompilerTest, GoldenListings) {
  std::ifstream table(VEKCH_TEST_FOLDER "/compiler_golden.txt", std::ios::binary);
  ASSERT_TRUE(table.is_open());
  Workbench bench(200);
  int cases = 0;
  std::string line;
  std::string title;
  std::string expected;
  const auto check = [&] {
    if (title.empty()) {
      return;
    }
    const size_t end = title.rfind('/');
    std::string pattern = title.substr(1, end - 1);
    for (size_t i = 0; (i = pattern.find("\xC2\xB6")) != std::string::npos;) {
      pattern.replace(i, 2, "\n");
    }
    const vekStatus status = bench.Compile(pattern, title.substr(end + 1).c_str());
    const std::string actual =
        status == StatusNoError
            ? examples::vekgrep::ListProgram(*bench.State())
            : "   " + StatusName(status) + " at " + std::to_string(bench.Offset()) + "\n";
    EXPECT_EQ(actual, expected) << title;
    ++cases;
  };
  while (std::getline(table, line)) {
    if (line[0] == ' ') {
      expected += line + "\n";
      continue;
    }
    check();
    title = line[0] == '/' ? line : "";
    expected.clear();
  }
  check();
  EXPECT_GT(cases, 250);
}

// ---- The object.

TEST(CompilerTest, HeaderAfterSuccessAndAfterEachKindOfFailure) {
  Workbench bench(20);
  ASSERT_EQ(bench.Compile("a(b)", "gi"), StatusNoError);
  EXPECT_EQ(bench.Offset(), kUnwritten);
  const RegExpState& state = *bench.State();
  EXPECT_EQ(std::memcmp(&state, "rgEx", 4), 0);
  EXPECT_EQ(state.compileFlags, 0x14U);
  EXPECT_EQ(state.nodeCount, 4);
  EXPECT_EQ(state.captureCount, 2);
  EXPECT_EQ(state.matchLimit, 10000);
  EXPECT_EQ(state.characterFormat, 1);

  veksRegExpSetMatchLimit(5, bench.State());
  veksRegExpSetFormat(0, bench.State());
  ASSERT_EQ(bench.Compile("a(b)"), StatusNoError);
  EXPECT_EQ(bench.State()->matchLimit, 10000);
  EXPECT_EQ(bench.State()->characterFormat, 1);

  // Up to the pre-scan nothing stays but the anchor's record; after it a part of the header.
  const std::vector<uint32_t> zero(8);
  const std::vector<uint32_t> begun = {RegExpTag, RegExpOptionM, 0, 2, 0, 0, 1, 0};
  struct Case {
    const char* pattern;
    const char* options;
    vekStatus status;
    const std::vector<uint32_t>& header;
    bool hasAnchor;
  };
  for (const Case& test : {Case{".*a", "q", StatusRegExpOptionError, zero, true},
                           Case{".*(", "m", StatusRegExpSyntaxError, zero, true},
                           Case{"a(", "m", StatusRegExpSyntaxError, zero, false},
                           Case{"(a)**", "m", StatusRegExpQuantifierError, begun, false}}) {
    ASSERT_EQ(bench.Compile(test.pattern, test.options), test.status);
    EXPECT_EQ(std::memcmp(bench.State(), test.header.data(), 32), 0) << test.pattern;
    const auto* nodes = reinterpret_cast<const ProgramNode*>(bench.State() + 1);
    EXPECT_EQ(nodes[0].op == OpAssert, test.hasAnchor) << test.pattern;
  }
}

TEST(CompilerTest, NullsComeFirstAndWriteNothing) {
  Workbench bench(3);
  bench.Compile("abc");
  std::vector<uint8_t> before(48056 + 72);
  std::memcpy(before.data(), bench.State(), before.size());
  for (int nulls = 1; nulls < 8; ++nulls) {
    int32_t offset = kUnwritten;
    EXPECT_EQ(veksRegExpInit((nulls & 1) != 0 ? nullptr : Bytes("("), Bytes("!"),
                             (nulls & 2) != 0 ? nullptr : bench.State(),
                             (nulls & 4) != 0 ? nullptr : &offset),
              StatusNullPointer);
    EXPECT_EQ(offset, kUnwritten);
  }
  EXPECT_EQ(std::memcmp(before.data(), bench.State(), before.size()), 0);
}

TEST(CompilerTest, EveryOptionLetter) {
  Workbench bench(1);
  for (int letter = 1; letter < 256; ++letter) {
    const char options[] = {'m', static_cast<char>(letter), static_cast<char>(letter), 0};
    const size_t place = std::string("smixg").find(options[1]);
    const bool isOption = place != std::string::npos;
    EXPECT_EQ(bench.Compile("a", options), isOption ? StatusNoError : StatusRegExpOptionError);
    EXPECT_EQ(bench.Offset(), isOption ? kUnwritten : 0);
    EXPECT_EQ(bench.State()->compileFlags, isOption ? 2U | 1U << place : 0U) << letter;
  }
}

// ---- Limits.

std::string Repeat(const std::string& text, size_t times) {
  std::string all;
  for (size_t i = 0; i < times; ++i) {
    all += text;
  }
  return all;
}

TEST(CompilerTest, LimitsOfGroupsAndNesting) {
  struct Case {
    std::string pattern;
    vekStatus status;
    int32_t offset;
  };
  const Case cases[] = {
      {Repeat("()", 999), StatusNoError, kUnwritten},
      {Repeat("()", 1000), StatusRegExpSyntaxError, 2 * 999},
      {Repeat("()", 1001), StatusRegExpSyntaxError, 2 * 1000},  // the pre-scan, one group later
      {Repeat("()", 1000) + "**", StatusRegExpSyntaxError, 2 * 999},
      {Repeat("(?=)", 1000), StatusRegExpSyntaxError, 4 * 999},
      {Repeat("(?:a)", 2000), StatusNoError, kUnwritten},  // dissolved groups don't count
      {Repeat("()", 999) + "(?#)", StatusRegExpSyntaxError, 2 * 999},
      {Repeat("(", 999) + Repeat(")", 999), StatusNoError, kUnwritten},
      {Repeat("(", 1000) + Repeat(")", 1000), StatusRegExpSyntaxError, 999},
      {Repeat("(?:", 999) + "a" + Repeat(")", 999), StatusNoError, kUnwritten},
      {Repeat("(", 998) + "(?(1)a)" + Repeat(")", 998), StatusNoError, kUnwritten},
      {Repeat("(", 998) + "(?(?=a)b)" + Repeat(")", 998), StatusRegExpSyntaxError, 1000},
      {Repeat("(", 998) + "(?((a" + Repeat(")", 1001), StatusRegExpSyntaxError, 1001},
      {"(?<=" + Repeat("(", 998) + "ab" + Repeat(")", 998) + "{3})", StatusNoError, kUnwritten},
      {Repeat("ab*", 20000), StatusNoError, kUnwritten},
      {std::string(100000, 'a'), StatusNoError, kUnwritten},
  };
  Workbench bench(100000);
  for (const Case& test : cases) {
    EXPECT_EQ(bench.Compile(test.pattern), test.status) << test.pattern.substr(0, 20);
    EXPECT_EQ(bench.Offset(), test.offset) << test.pattern.substr(0, 20);
    if (test.status == StatusNoError) {
      EXPECT_EQ(FindFlaw(*bench.State(), test.pattern.size()), "") << test.pattern.substr(0, 20);
    }
  }
}

// ---- Room. What takes the most records for its bytes, alone and repeated, in front of and behind
// other dense text: a record too many would hit the guard.

TEST(CompilerTest, DensestConstructsStayInTheObject) {
  const char* const dense[] = {
      "a*",
      "a?b*",
      "ab*",
      ".",
      "..",
      ".*",
      "\\d\\d",
      "|",
      "^",
      "$*",
      "()",
      "(|)",
      "(?:.*)",
      "(?:.+)",
      "(?=)",
      "(?=a)*",
      "(?>a*)",
      "(?(1))",
      "(?(1)|)",
      "(?i)",
      "(?i:)",
      "[]]",
      "[-]",
      "[^-]",
      "[a-]",
      "[a-[:word:]]",
      "[[:]",
      "[[:punct:]]",
      "[[:^punct:]]",
      "[[:alnum:][:xdigit:][:alpha:]]",
      "[a-[.]x",
      "[abc]*",
      "\\pL",
      "[\\pL\\PN]",
      "\\p{Any}*",
      "\\1",
      "\\0",
      "\\Qa\\E*",
      "a\\Eb\\E",
      "ab",
      "abc*",
      "\\x41*",
      "\\x{1}*",
      "[\\x{1}-\\x{2}]",
  };
  Workbench bench(2100);
  for (const std::string first : dense) {
    for (const std::string second : dense) {
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

void CompareWithModel(Workbench& bench, const std::string& pattern) {
  const Verdict expected = JudgePattern(pattern);
  const vekStatus status = bench.Compile(pattern);
  ASSERT_EQ(status, expected.status) << pattern << " at " << bench.Offset();
  ASSERT_EQ(bench.Offset(),
            status == StatusNoError ? kUnwritten : static_cast<int32_t>(expected.offset))
      << pattern;
  if (status == StatusNoError) {
    ASSERT_EQ(FindFlaw(*bench.State(), pattern.size()), "") << pattern;
  }
}

class SmallPatterns : public testing::TestWithParam<std::pair<const char*, size_t>> {};

TEST_P(SmallPatterns, LikeTheModel) {
  const std::string alphabet = GetParam().first;
  const size_t longest = GetParam().second;
  Workbench bench(longest);
  size_t compiled = 0;
  for (size_t length = 0; length <= longest; ++length) {
    std::string pattern(length, alphabet[0]);
    std::vector<size_t> digits(length);
    for (size_t place = 0; place != length || length == 0;) {
      CompareWithModel(bench, pattern);
      if (HasFatalFailure() || length == 0) {
        break;
      }
      compiled += bench.Offset() == kUnwritten ? 1 : 0;
      for (place = 0; place < length; ++place) {
        digits[place] = (digits[place] + 1) % alphabet.size();
        pattern[place] = alphabet[digits[place]];
        if (digits[place] != 0) {
          break;
        }
      }
    }
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
