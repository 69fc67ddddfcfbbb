// SPDX-License-Identifier: MIT

// The fast matcher: which patterns it takes, how it chooses, what it remembers, and that a call
// ends. That it finds what the exact matcher finds is tested where searches are held against the
// model, with objects that are fresh and with others that have been used.

#include "regexp/fast/fast_matcher.h"

#include <gtest/gtest.h>

#include <fstream>
#include <regex>

#include "examples/vekgrep/explain.h"
#include "regexp/analyse/search_plan.h"
#include "regexp/fast/translator.h"
#include "tests/pattern_object.h"

namespace vekch::regexp {
namespace {

using test::BytesOf;
using test::kShare;
using test::PatternObject;
using test::SearchAnswer;

// The status, and what was found.
std::string FindAll(const PatternObject& object, const std::string& subject, size_t most = 40) {
  SearchAnswer answer =
      test::Search(object.State(), BytesOf(subject), static_cast<int32_t>(subject.size()));
  answer.results.resize(std::min(answer.results.size(), most));
  return Show(answer, BytesOf(subject));
}

// The whole match alone.
std::string Find(const PatternObject& object, const std::string& subject) {
  return FindAll(object, subject, 1);
}

const FastProgram* Translated(const PatternObject& object) {
  PlanFor(object.State(), 1000);
  return FastProgramFor(object.State());
}

// ---- What is translated, and into what.

enum Trait : uint32_t {
  kChoosesByByte = 1,   // a choice has a table of the bytes that its ways begin with
  kKeepsAll = 2,        // a run gives nothing back
  kGivesBack = 4,       // a run does
  kRemembersAll = 8,    // failures can be remembered
  kSetsEverySlot = 16,  // no slot is cleared before a try
  kTakesOpenSets = 32,  // all characters of several bytes are members
  kKeepsCounts = 64,    // a group is counted
  kUntranslated = 128,
  kTestsAtOnce = 256,      // bytes of a fixed number
  kCapturesRun = 512,      // a run with its group
  kTakesByteAfter = 1024,  // a run with the byte after it
  kIsDirect = 2048,        // the beginning of a short subject is tried before anything else
};

uint32_t TraitsOf(const FastProgram* program) {
  if (program == nullptr) {
    return kUntranslated;
  }
  uint32_t traits = 0;
  const auto note = [&traits](bool has, Trait trait) { traits |= has ? uint32_t{trait} : 0U; };
  note(program->remembers, kRemembersAll);
  note(!program->clearsSlots, kSetsEverySlot);
  note(program->directLength > 0, kIsDirect);
  for (int32_t i = 0; i < program->opCount; ++i) {
    const FastOp& op = program->ops[i];
    const bool isRun = op.code == FastCode::kSetRun || op.code == FastCode::kSetSpan ||
                       op.code == FastCode::kByteRun || op.code == FastCode::kOpenSetRun;
    note(op.code >= FastCode::kFixedTwo && op.code <= FastCode::kFixed, kTestsAtOnce);
    note(isRun && (op.flags & kCaptures) != 0, kCapturesRun);
    note(isRun && (op.flags & kTakesByte) != 0, kTakesByteAfter);
    note(isRun && (op.flags & kGivesNothingBack) != 0, kKeepsAll);
    note(isRun && (op.flags & kGivesNothingBack) == 0, kGivesBack);
    note(op.code == FastCode::kChoice && op.waysOf != nullptr, kChoosesByByte);
    note(op.code == FastCode::kOpenSet || op.code == FastCode::kOpenSetRun, kTakesOpenSets);
    note(op.code == FastCode::kLoop && (op.flags & kIsCounted) != 0, kKeepsCounts);
  }
  return traits;
}

struct Translation {
  const char* pattern;
  uint32_t has;
  uint32_t hasNot;
};

constexpr Translation kTranslations[] = {
    {"\\d+-(\\d+)-(\\d+)",
     kKeepsAll | kSetsEverySlot | kRemembersAll | kTakesByteAfter | kCapturesRun,
     kUntranslated | kGivesBack | kTestsAtOnce},
    {"(\\d{4})-((\\d\\d)[T ])", kTestsAtOnce | kSetsEverySlot, kCapturesRun | kKeepsAll},
    {"(?:[0-9a-f]{4}-){3}", kTestsAtOnce | kRemembersAll, kUntranslated},
    {"(?:[\\w.+~]{2}|a)(\\w+)a", kCapturesRun | kGivesBack, kTestsAtOnce},
    {"\\w+ing", kGivesBack, kKeepsAll},
    {"[ab]+b", kGivesBack, kKeepsAll},
    {"x(?:abc|def)y", kChoosesByByte, 0},
    {"x(a)?y", kChoosesByByte, kSetsEverySlot | kKeepsCounts},
    {"(a)?[xy]", kChoosesByByte | kIsDirect, kSetsEverySlot},
    {"x??a", 0, kIsDirect},       // a literal is looked for that may be left out
    {"(?:a|b)xy", 0, kIsDirect},  // another one says where the text ends
    {"ab|c", 0, kIsDirect},
    {"ab[cd]", kIsDirect, 0},
    {"^ab?|c", kIsDirect, 0},
    {"[^,]*,\\S+ ", kKeepsAll | kTakesByteAfter, kGivesBack | kTakesOpenSets},
    {"[^,]\\S+.", kGivesBack | kTakesOpenSets, kKeepsAll},
    {"(?:ab){2,5}c", kKeepsCounts, kRemembersAll},
    {"(?:a|b)*\\d", kRemembersAll, kKeepsCounts},
    {"(?:(?:(?:(?:a?)*b?)*c?)*d?)*\\d", 0, kRemembersAll | kUntranslated},
    {"(\\w)\\1", kSetsEverySlot, kRemembersAll},
    {"a(?=(b))", 0, kRemembersAll | kUntranslated},
    {"(?<!a)b(?>c|d)", kRemembersAll, kUntranslated},
    {"\\p{Lu}\\w+", kRemembersAll, kUntranslated},
    {"\\x{41}.{2,5}?\\C*?\\pL{1,3}?x", 0, kUntranslated},
    {"\\x{E9}+", kUntranslated, 0},       // counts other bytes than it takes
    {"(a)?(?(1)b|c)", kUntranslated, 0},  // conditionals
    {"(a\\1b)", kUntranslated, 0},        // reads a group while it is open
    {"(?>ab)*c", kUntranslated, 0},       // atomic groups repeated
    {"\\X+", kUntranslated, 0},
};

TEST(FastMatcherTest, TranslatesInto) {
  for (const Translation& test : kTranslations) {
    const uint32_t traits = TraitsOf(Translated(PatternObject(test.pattern)));
    EXPECT_EQ(traits & test.has, test.has) << test.pattern;
    EXPECT_EQ(traits & test.hasNot, 0U) << test.pattern;
  }
}

// What an example program says of records alone, for every pattern of the compiler's table.
TEST(FastMatcherTest, WhatIsLeftIsExplained) {
  std::ifstream table(VEKCH_TEST_FOLDER "/compiler_golden.txt", std::ios::binary);
  std::string row;
  std::smatch parts;
  int32_t left = 0;
  while (std::getline(table, row)) {
    if (std::regex_match(row, parts, std::regex(R"(/(.*)/(\w*) +\d.*)"))) {
      const PatternObject object(std::regex_replace(parts.str(1), std::regex("\xC2\xB6"), "\n"),
                                 parts.str(2));
      const std::string reason = examples::vekgrep::LeftToExact(*object.State());
      EXPECT_EQ(reason.empty(), FastProgramFor(object.State()) != nullptr) << row << ": " << reason;
      left += reason.empty() ? 0 : 1;
    }
  }
  EXPECT_GT(left, 10);
}

// ---- That it answers like the exact matcher, which searches where no plan is made.

struct Sample {
  const char* pattern;
  const char* subject;  // that it matches; others are made of it
};

constexpr Sample kSamples[] = {
    {"[-+]?\\d+(?:\\.\\d+)?", "-3.14159"},
    {"^(?:[-+]?\\d+(?:\\.\\d+)?)$", "-3.14159"},
    {"^(\\d{4})-(\\d\\d)-(\\d\\d)[T ](\\d\\d):(\\d\\d):(\\d\\d)$", "2021-03-04T05:06:07"},
    {"(\\w+)\\s*=\\s*(\\S+)", "key \t=  \xC3\xA9v"},
    {"[0-9a-f]{8}-(?:[0-9a-f]{4}-){3}[0-9a-f]{12}", "123e4567-e89b-12d3-a456-426614174000"},
    {"([\\w.+-]+)@([\\w-]+(?:\\.[\\w-]+)+)", "lin.b+l@mail.example.com"},
    {"(?:/[^/]+)*/([^/.]+)\\.(\\w+)", "/usr/doc/re.txt"},
    {"#(?:[0-9a-fA-F]{6}|[0-9a-fA-F]{3})\\b", "#ffcc00"},
    {"(\\S+) - (\\S+) \\[([^\\]]+)\\] \"([^\"]*)\" (\\d{3}) (\\d+)",
     "10.0.0.1 - ada [04/Mar/2021:05:06:07 +0000] \"GET /\" 200 5"},
    {"(a)((b)(c))d(?i:xyZ)(e)", "abcdXYze"},
    {"(?:(\\w\\d)-)+(?:ab(c)){2}", "a1-b2-abcabc"},
    {"(?:(a)(b)|(ab))*(a+)(a*?)(\\w)a", "ababaaaaaba"},
    {"(.*)=(.*)(\\d)", "a=b=c12"},
    {"(?s:(.))([^,]{3}),((?:..){2}.)", "\xC3\xA9\n\nxy,12345"},
    {"(.{2,5}?)(\\C{1,3}?)(?-i:\\x{64}+?)(\\pL+?)([^,]{0,2}?),",
     "ab\xC3\xA9\xC3\xA9xd\xC3\xA9\xC3\xA9,"},
    {"(?:[a-c]{2}){9}(x?)", "abcabcabcabcabcabcx"},
    {"((?:\\d\\d){2})*(\\d+)(?:\\D{17}|\\D{15})$", "12345678901234567--abc--abc--abc-"},
};

std::vector<std::string> Variants(const std::string& subject) {
  std::vector<std::string> all = {subject, "x " + subject, subject + "\n", subject + subject};
  for (size_t at = 0; at < subject.size(); ++at) {
    all.push_back(subject.substr(0, at));
    all.push_back(subject.substr(at));
    for (const char byte : {'0', 'a', '-', ' ', '\n', '\xC3', '\0'}) {
      all.push_back(subject.substr(0, at) + byte + subject.substr(at + 1));
      all.push_back(subject.substr(0, at) + byte + subject.substr(at));
    }
  }
  return all;
}

TEST(FastMatcherTest, AnswersLikeTheExactOne) {
  for (const Sample& sample : kSamples) {
    const std::vector<std::string> subjects = Variants(sample.subject);
    for (const char* const options : {"", "m", "i"}) {
      for (const int32_t limit : {10000, 180, 60}) {
        const PatternObject used(sample.pattern, options, 1, limit);
        ASSERT_NE(Translated(used), nullptr) << sample.pattern;
        const PatternObject exact(sample.pattern, options, 1, limit);
        FactsOf(exact.State())->planless = kNeverPlanned;
        for (size_t i = 0; i < subjects.size(); i += kShare) {
          EXPECT_EQ(FindAll(used, subjects[i]), FindAll(exact, subjects[i]))
              << sample.pattern << " on " << subjects[i] << " at " << limit;
        }
      }
    }
  }
}

// ---- What it gives up.

TEST(FastMatcherTest, RunsAlone) {
  const auto isAlone = [](const char* pattern) {
    const PatternObject object(pattern);
    return Translated(object)->loneRun != nullptr;
  };
  for (const char* pattern : {"\\w+", "[abx]{2,}", "\\S+", "[ab]", "\\pL+", "[a-z]+$", "\\pL+\\Z",
                              "(\\w+)$", "(\\pL+)"}) {
    EXPECT_TRUE(isAlone(pattern)) << pattern;
  }
  for (const char* pattern : {"\\w*", "\\w+?", "\\w{1,9}", "\\pL{2,}", "\\s+$", "\\w+\\b", "\\w+,",
                              "(a){0}\\w+", "(\\w)+", "(\\w+)?"}) {
    EXPECT_FALSE(isAlone(pattern)) << pattern;
  }
}

TEST(FastMatcherTest, GivesUpWhereTheDepthCouldRunOut) {
  const std::string subject = test::Repeat("ab", 2000);
  const uint8_t* const text = BytesOf(subject);
  for (const char* const pattern : {"(?:ab)*c", "(?:(?:ab){2})*c"}) {
    const PatternObject object(pattern);
    const FastProgram* const program = Translated(object);
    ASSERT_NE(program, nullptr);
    const auto result = [&](int32_t length, int32_t limit) {
      veksRegExpSetMatchLimit(limit, object.State());
      FastCall call = FastCallOf(*program, object.State(), text, length, INT64_MAX);
      return call.allowance < 0 ? FastResult::kGivesUp : MatchFast(&call, text, text + length);
    };
    EXPECT_EQ(result(100, 10000), FastResult::kFail) << pattern;
    EXPECT_EQ(result(4000, 10000), FastResult::kGivesUp) << pattern;
    EXPECT_EQ(result(4000, 100000), FastResult::kFail) << pattern;
    EXPECT_EQ(result(100, 50), FastResult::kGivesUp) << pattern;
  }
}

TEST(FastMatcherTest, IsMadeAnewForAnotherFormat) {
  const PatternObject object("(?:.)x");
  ASSERT_NE(Translated(object), nullptr);
  for (const int32_t format : {0, 1, 0}) {
    veksRegExpSetFormat(format, object.State());
    EXPECT_EQ(Find(object, "\xC3\xA9x"), format == 0 ? "1+2" : "0+3");
    for (int32_t i = 0; i < 5; ++i) {
      EXPECT_EQ(Find(object, std::string(300, '-') + "\xC3\xA9x"), format == 0 ? "301+2" : "300+3");
    }
    EXPECT_EQ(FastProgramOf(object.State())->isUtf8, format != 0);
  }
}

// ---- No search without end. Each doubles its time with each byte, or grows by a high power of
// their number, where nothing is remembered.

struct Hostile {
  const char* pattern;
  char repeated;
  const char* last;      // with which it matches all
  size_t longest = 400;  // that the depth allows for
  int32_t limit = test::kDefaultLimit;
  bool isTranslated = true;
  std::string before = {};
};

const Hostile kHostiles[] = {
    {"(a+)+[bc]", 'a', "c"},
    {"(a|a)*[bc]", 'a', "b"},
    {"(a|aa)+$", 'a', ""},
    {"^(\\w+\\s?)*$", 'a', ""},
    {"(a*)*[bc]", 'a', "b"},
    {"(?:(?:a+)+)+[bc]", 'a', "c"},
    {"^(([a-z])+.)+[A-Z]([a-z])+$", 'a', "Bc"},
    {"(?:a+?)+?[bc]", 'a', "c"},
    {"(?:.|a)+?[bc]", 'a', "c"},
    {"((a|)|a)*[bc]", 'a', "c"},
    {"^(?:a?\\S*)*(?<=!)x$", 'a', nullptr},
    {"(?:(?=a+)a|a)*[bc]", 'a', "c", 100},
    {"((?>a)|a)*[bc]", 'a', "c"},
    {"^(([a-z])+.)+[A-Z]([a-z])+$", 'a', nullptr, 40, 1000},  // could use up more than its depth
    {"\\X(?:a|a)*[bc]", 'a', "c", 400, 10000, false},
    {"\\x{E9}?(a+)+[bc]", 'a', "c", 100, 10000, false},
    {"\\x{E9}?a?a?a?a?a?a?a?a?a?a?a*a*a*a*a*a*[bc]", 'a', "c", 100, 10000, false},
    {"(?:a\\d*|a)*[bc]", 'a', "c"},
    {"(?:\\p{Ll}+?)+?[XY]", 'a', "X"},
    {"(?<=\\W\\Wb)(a|a)*[cd]", 'a', "c", 400, 10000, true, "--b"},  // reads before the try
    {"^(?:a|a|ac|ad|ae|af)*[ab]*b[xy]", 'b', nullptr, 30000, 10000, true, test::Repeat("a", 25)},
    {"(a|a|ab|ac|ad)*[xy]", 'a', "x", 25, 10000, true,
     test::Repeat(test::Repeat("a", 25) + "!", 700)},
};

TEST(FastMatcherTest, HostilePatternsEnd) {
  for (const Hostile& test : kHostiles) {
    for (const size_t length : {size_t{25}, test.longest / 4, test.longest}) {
      SCOPED_TRACE(test.pattern);
      const PatternObject object(test.pattern, "", 1, test.limit);
      const std::string subject = test.before + std::string(length, test.repeated);
      EXPECT_EQ(Find(object, subject + "!"), "") << test.pattern << " on " << length;
      if (test.last != nullptr) {
        const std::string whole = subject + test.last;
        EXPECT_EQ(Find(object, whole), std::to_string(test.before.size()) + "+" +
                                           std::to_string(whole.size() - test.before.size()))
            << test.pattern;
      }
      EXPECT_EQ(Translated(object) != nullptr, test.isTranslated);
    }
  }
}

// What keeps a frame for each unit uses up those of a light try, then all that there are; a match
// is none the less where the units are.
TEST(FastMatcherTest, FramesRunOut) {
  constexpr struct {
    const char* pattern;  // of any number of units
    const char* unit;
  } kCases[] = {
      {"(?:[ab]+b,)*!", "abb,"},   // a run that gives back
      {"(?:[ab]+?b,)*!", "aab,"},  // lazy ones
      {"(?:[^!,]+?b,)*!", "\u00E9b,"},
      {"(?:\\p{Ll}+?b,)*!", "\u00E9b,"},
      {"(?:\\p{Ll}+b,)*!", "\u00E9b,"},  // a run of characters
      {"(?:(a)|(ab)|b)*!", "ab"},        // groups and choices
      {"(?:(?:a|ab)(b)??,)*!", "ab,"},
      {"(?:(?:ab?){1,2},)*!", "aab,"},  // counted repetitions
      {"(?:(?:a|b|)*,)*!", "ab,"},      // that may be empty
      {"(?:(?=(a))ab?|a)*!", "ab"},
      {"(?:(?:(?:a|b|)*|c|)*|d|)*!", "ab"},
      {"(?:(?:([a-z]+),)*!|[a-z].)", "ab,"},  // a capture of a run
      {"(?:(?:(\\d)-)*!|\\d[^!])", "1-"},     // or of fixed bytes
  };
  for (const auto& test : kCases) {
    const PatternObject object(test.pattern, "", 1, 200000);
    const PatternObject exact(test.pattern, "", 1, 200000);
    FactsOf(exact.State())->planless = kNeverPlanned;
    for (const size_t units : {size_t{1100}, size_t{3000}}) {
      const std::string subject = test::Repeat(test.unit, units) + "!";
      const std::string found = FindAll(object, subject);
      EXPECT_EQ(found.substr(0, found.find(' ')), "0+" + std::to_string(subject.size()))
          << test.pattern << ", units " << units;
      EXPECT_EQ(found, FindAll(exact, subject)) << test.pattern << ", units " << units;
    }
  }
}

// With the memory from the first return on, every small pattern gives what it gives without.
TEST(FastMatcherTest, RemembersNothingThatIsWrong) {
  test::Words patterns = test::AllTexts(test::Split("a b | ( ) * +? (?: (?= a?"), 5);
  // What fails within a repetition that is empty may match in one that is not.
  patterns.insert(patterns.begin(), "[ad]*(?=(?:a?|d)*b)\\wd");
  const std::string subjects[] = {"aab", "abab", "aaaa", "baa", "adb"};
  PatternObject object(40);
  const auto slots = [&object] {
    const RegExpFindResult* first = SlotsOf(object.State());
    return SearchAnswer{StatusNoError, 0, {first, first + object.State()->captureCount}};
  };
  int32_t translated = 0;
  int32_t taken = 0;
  for (size_t i = 0; i < patterns.size(); i += kShare) {
    const bool compiles = object.Compile("(?:" + patterns[i] + ")*b") == StatusNoError;
    const FastProgram* const program = compiles ? Translated(object) : nullptr;
    if (program == nullptr) {
      continue;
    }
    ++translated;
    for (const std::string& subject : subjects) {
      const uint8_t* const text = BytesOf(subject);
      const auto length = static_cast<int32_t>(subject.size());
      FastCall plain = FastCallOf(*program, object.State(), text, length, 1 << 20);
      plain.lightReturns = 1 << 20;
      const FastResult expected = MatchFast(&plain, text, text + length);
      const std::string expectedSlots = Show(slots(), text);
      FastCall call = FastCallOf(*program, object.State(), text, length, 1 << 20);
      call.lightReturns = 0;
      EXPECT_EQ(MatchFast(&call, text, text + length), expected)
          << patterns[i] << " on " << subject;
      taken += call.memory.IsBegun() ? 1 : 0;
      if (expected == FastResult::kMatch) {
        EXPECT_EQ(Show(slots(), text), expectedSlots) << patterns[i] << " on " << subject;
      }
    }
  }
  EXPECT_GT(translated, 5000 / static_cast<int32_t>(kShare));
  EXPECT_GT(taken, translated / 2);
}

// What is not remembered ends by the bound on work, with the status of the limit.
TEST(FastMatcherTest, WorkIsBounded) {
  constexpr struct {
    const char* pattern;
    const char* options;
    int32_t limit;
    size_t length = 400;
  } kCases[] = {{"(a)(?:a|a|a|a|a|a|a|a)*\\1(?:[bc])", "g", 100},
                {"(a)(?:a|a|a|a|a|a|a|a)*\\1(?:[bc])", "", 300, 12},  // by the fast matcher
                {"(?:(?:(?:(?:a|\\X)*b*)*c*)*d*)*[xy]", "", 160},
                {"(?:(?:a|a){0,9}){0,9}[bc]", "", 150},
                {"(?>ab)*(?:a|a|a|a|a|a|a|a)*[bc]", "", 100}};
  for (const auto& test : kCases) {
    const PatternObject object(test.pattern, test.options, 1, test.limit);
    for (size_t times = 0; times <= 20 / test.length; ++times) {  // at once where it is short
      EXPECT_EQ(Find(object, std::string(test.length, 'a')).substr(0, 5), "limit") << test.pattern;
    }
  }
}

}  // namespace
}  // namespace vekch::regexp
