// SPDX-License-Identifier: MIT

// The fast matcher: which patterns it takes, how it chooses, what it remembers, and that a call
// ends. That it finds what the exact matcher finds is tested where searches are held against the
// model, with objects that are fresh and with others that have been used.

#include "regexp/fast/fast_matcher.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "regexp/analyse/search_plan.h"
#include "regexp/fast/translator.h"
#include "vekch/vekch.h"

namespace vekch::regexp {
namespace {

#ifdef VEKCH_TEST_INSTRUMENTED
constexpr size_t kShare = 8;  // one of so many cases is tried
#else
constexpr size_t kShare = 1;
#endif

class Object {
 public:
  explicit Object(const std::string& pattern, const char* options = "", int32_t limit = 10000) {
    const auto* text = reinterpret_cast<const uint8_t*>(pattern.c_str());
    int32_t size = 0;
    int32_t offset = 0;
    veksRegExpGetSize(text, &size);
    block.reset(new uint64_t[static_cast<size_t>(size) / 8 + 1]);
    state = reinterpret_cast<RegExpState*>(block.get());
    compiles = veksRegExpInit(text, reinterpret_cast<const uint8_t*>(options), state, &offset) ==
               StatusNoError;
    veksRegExpSetMatchLimit(limit, state);
  }

  // The status, and the bytes of the whole match where there is one.
  std::string Find(const std::string& subject) {
    std::vector<RegExpFindResult> found(40);
    auto count = static_cast<int32_t>(found.size());
    const auto* text = reinterpret_cast<const uint8_t*>(subject.data());
    const vekStatus status =
        veksRegExpFind_8u(text, static_cast<int32_t>(subject.size()), state, found.data(), &count);
    return status != StatusNoError ? std::to_string(status)
           : count == 0
               ? "none"
               : std::to_string(found[0].pointer - text) + "+" + std::to_string(found[0].length);
  }

  const FastProgram* Translated() {
    PlanFor(state, 1000);
    return FastProgramFor(state);
  }

  std::vector<RegExpFindResult> Slots() const {
    return {SlotsOf(state), SlotsOf(state) + state->captureCount};
  }

  RegExpState* state;
  bool compiles;

 private:
  std::unique_ptr<uint64_t[]> block;
};

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
};

uint32_t TraitsOf(const FastProgram* program) {
  if (program == nullptr) {
    return kUntranslated;
  }
  uint32_t traits = 0;
  const auto note = [&traits](bool has, Trait trait) { traits |= has ? uint32_t{trait} : 0U; };
  note(program->remembers, kRemembersAll);
  note(!program->clearsSlots, kSetsEverySlot);
  for (int32_t i = 0; i < program->opCount; ++i) {
    const FastOp& op = program->ops[i];
    const bool isRun = op.code == FastCode::kSetRun || op.code == FastCode::kByteRun ||
                       op.code == FastCode::kOpenSetRun;
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
    {"\\d+-(\\d+)-(\\d+)", kKeepsAll | kSetsEverySlot | kRemembersAll, kUntranslated},
    {"\\w+ing", kGivesBack, kKeepsAll},
    {"[ab]+b", kGivesBack, kKeepsAll},
    {"x(?:abc|def)y", kChoosesByByte, 0},
    {"x(a)?y", kChoosesByByte, kSetsEverySlot},
    {"[^,]*,\\S+ ", kTakesOpenSets | kKeepsAll, kGivesBack},
    {"(?:ab){2,5}c", kKeepsCounts, kRemembersAll},
    {"(?:a|b)*\\d", kRemembersAll, kKeepsCounts},
    {"(\\w)\\1", kSetsEverySlot, kRemembersAll},
    {"a(?=(b))", 0, kRemembersAll | kUntranslated},
    {"(?<!a)b(?>c|d)", kRemembersAll, kUntranslated},
    {"\\p{Lu}\\w+", kRemembersAll, kUntranslated},
    {"\\x{E9}+", kUntranslated, 0},       // counts other bytes than it takes
    {"(a)?(?(1)b|c)", kUntranslated, 0},  // conditionals
    {"(a\\1b)", kUntranslated, 0},        // reads a group while it is open
    {"(?>ab)*c", kUntranslated, 0},       // atomic groups repeated
    {"\\X+", kUntranslated, 0},
};

TEST(FastMatcherTest, TranslatesInto) {
  for (const Translation& test : kTranslations) {
    Object object(test.pattern);
    const uint32_t traits = TraitsOf(object.Translated());
    EXPECT_EQ(traits & test.has, test.has) << test.pattern;
    EXPECT_EQ(traits & test.hasNot, 0U) << test.pattern;
  }
}

// ---- What it gives up.

TEST(FastMatcherTest, GivesUpWhereTheDepthCouldRunOut) {
  Object object("(?:ab)*c");
  const FastProgram* const program = object.Translated();
  ASSERT_NE(program, nullptr);
  std::string subject;
  for (int32_t i = 0; i < 2000; ++i) {
    subject += "ab";
  }
  const auto* text = reinterpret_cast<const uint8_t*>(subject.data());
  const auto result = [&](int32_t length, int32_t limit) {
    veksRegExpSetMatchLimit(limit, object.state);
    FastCall call = FastCallOf(*program, object.state, text, length, INT64_MAX);
    return call.allowance < 0 ? FastResult::kGivesUp : MatchFast(&call, text, text + length);
  };
  EXPECT_EQ(result(100, 10000), FastResult::kFail);
  EXPECT_EQ(result(4000, 10000), FastResult::kGivesUp);
  EXPECT_EQ(result(4000, 100000), FastResult::kFail);
  EXPECT_EQ(result(100, 50), FastResult::kGivesUp);
}

TEST(FastMatcherTest, IsMadeAnewForAnotherFormat) {
  Object object("(?:.)x");
  ASSERT_NE(object.Translated(), nullptr);
  for (const int32_t format : {0, 1, 0}) {
    veksRegExpSetFormat(format, object.state);
    EXPECT_EQ(object.Find("\xC3\xA9x"), format == 0 ? "1+2" : "0+3");
    for (int32_t i = 0; i < 5; ++i) {
      EXPECT_EQ(object.Find(std::string(300, '-') + "\xC3\xA9x"), format == 0 ? "301+2" : "300+3");
    }
    EXPECT_EQ(FastProgramOf(object.state)->isUtf8, format != 0);
  }
}

// ---- No search without end. Each doubles its time with each byte, or grows by a high power of
// their number, where nothing is remembered.

struct Hostile {
  const char* pattern;
  char repeated;
  const char* last;      // with which it matches all
  size_t longest = 400;  // that the depth allows for
};

constexpr Hostile kHostiles[] = {
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
};

TEST(FastMatcherTest, HostilePatternsEnd) {
  for (const Hostile& test : kHostiles) {
    for (size_t length = 25; length <= test.longest; length *= 4) {
      SCOPED_TRACE(test.pattern);
      Object object(test.pattern);
      const std::string subject(length, test.repeated);
      EXPECT_EQ(object.Find(subject + "!"), "none") << test.pattern << " on " << length;
      if (test.last != nullptr) {
        const std::string whole = subject + test.last;
        EXPECT_EQ(object.Find(whole), "0+" + std::to_string(whole.size())) << test.pattern;
      }
    }
  }
}

// With the memory from the first return on, every small pattern gives what it gives without.
TEST(FastMatcherTest, RemembersNothingThatIsWrong) {
  const std::vector<std::string> words = {"a", "b", "|", "(", ")", "*", "+?", "(?:", "(?=", "a?"};
  std::vector<std::string> patterns = {""};
  for (size_t begin = 0, length = 0; length < 5; ++length) {
    for (const size_t end = patterns.size(); begin < end; ++begin) {
      for (const std::string& word : words) {
        patterns.push_back(patterns[begin] + word);
      }
    }
  }
  const std::string subjects[] = {"aab", "abab", "aaaa", "baa"};
  int32_t translated = 0;
  int32_t taken = 0;
  for (size_t i = 0; i < patterns.size(); i += kShare) {
    Object object("(?:" + patterns[i] + ")*b");
    const FastProgram* const program = object.compiles ? object.Translated() : nullptr;
    if (program == nullptr) {
      continue;
    }
    ++translated;
    for (const std::string& subject : subjects) {
      const auto* text = reinterpret_cast<const uint8_t*>(subject.data());
      const auto length = static_cast<int32_t>(subject.size());
      FastCall plain = FastCallOf(*program, object.state, text, length, 1 << 20);
      plain.lightReturns = 1 << 20;
      const FastResult expected = MatchFast(&plain, text, text + length);
      const std::vector<RegExpFindResult> slots = object.Slots();
      FastCall call = FastCallOf(*program, object.state, text, length, 1 << 20);
      call.lightReturns = 0;
      EXPECT_EQ(MatchFast(&call, text, text + length), expected)
          << patterns[i] << " on " << subject;
      taken += call.memory.IsBegun() ? 1 : 0;
      const std::vector<RegExpFindResult> found = object.Slots();
      for (size_t k = 0; k < slots.size() && expected == FastResult::kMatch; ++k) {
        EXPECT_EQ(found[k].pointer, slots[k].pointer) << patterns[i] << " on " << subject;
        EXPECT_EQ(found[k].length, slots[k].length) << patterns[i] << " on " << subject;
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
  } kCases[] = {{"(a)(?:a|a|a|a|a|a|a|a)*\\1(?:[bc])", "g", 100},
                {"(?:(?:a|a){0,9}){0,9}[bc]", "", 150},
                {"(?>ab)*(?:a|a|a|a|a|a|a|a)*[bc]", "", 100}};
  for (const auto& test : kCases) {
    Object object(test.pattern, test.options, test.limit);
    EXPECT_EQ(object.Find(std::string(400, 'a')), "-188") << test.pattern;
  }
}

}  // namespace
}  // namespace vekch::regexp
