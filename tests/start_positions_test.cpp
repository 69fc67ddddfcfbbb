// SPDX-License-Identifier: MIT

// Which way and which prefilter a pattern's start positions are found by: each is taken by one
// pattern and left by a like one. That the answers are the same either way is the business of the
// searches' tests.

#include "regexp/search/start_positions.h"

#include <gtest/gtest.h>

#include "tests/pattern_object.h"

namespace vekch::regexp {
namespace {

constexpr int32_t kLong = 1000;  // a subject that a plan is made for at once

using test::PatternObject;

TEST(StartPositionsTest, PrefiltersOfPatterns) {
  using Plan = SearchPlan;
  struct Case {
    const char* pattern;
    Plan::Strategy strategy;
  };
  const Case cases[] = {
      {".*x", Plan::kLineStart},
      {"a.*x", Plan::kPrefixLiteral},
      {"ab+c", Plan::kPrefixLiteral},
      {"(?<=x)[ab]", Plan::kPrefixLiteral},
      {"[ab]c", Plan::kPackedPair},
      {"\\w+@\\w", Plan::kInnerLiteral},
      {"\\w+[@#]", Plan::kClassWindow},
      {"\\w{1,9}@", Plan::kInnerLiteral},
      {"[a-z]{1,3}@", Plan::kClassWindow},
      {"[A-Z][a-z]+", Plan::kPackedPair},
      {"[\\d\u03B1]", Plan::kPackedPair},  // of the characters beyond ASCII one
      {"\\b\\w{5}\\b", Plan::kWordStart},
      {"\\b[A-Z]\\d", Plan::kPackedPair},
      {"[^,a-f;i-n][^,a-f;i-n]", Plan::kClassWindow},
      {"license|program", Plan::kHashedPairs},
      {"if|then", Plan::kPackedPair},
      {"\\b(?:copy|licen[cs]e)", Plan::kHashedPairs},
      {"(?:copy|[ls]oan)", Plan::kPackedPair},
      {"\\d?", Plan::kNoPrefilter},
      {"(a)?\\1b", Plan::kNoPrefilter},
  };
  for (const Case& test : cases) {
    const PatternObject pattern(test.pattern);
    const Plan* const plan = PlanFor(pattern.State(), kLong);
    ASSERT_NE(plan, nullptr) << test.pattern;
    EXPECT_EQ(plan->strategy, test.strategy) << test.pattern;
  }
}

TEST(StartPositionsTest, RunsThatDecide) {
  const auto decides = [](const char* text) {
    const PatternObject pattern(text);
    return PlanFor(pattern.State(), kLong)->runDecides != 0;
  };
  for (const char* pattern : {"(\\w+)$", "[^a]+?\\d", "\\w+@"}) {
    EXPECT_TRUE(decides(pattern)) << pattern;
  }
  for (const char* pattern :
       {"\\B\\w+$", "(\\w+)[ab]\\1", "\\w{1,9}$", "\\w{2,}$", "\\pL+$", "\\w+$|a"}) {
    EXPECT_FALSE(decides(pattern)) << pattern;
  }
}

TEST(StartPositionsTest, RulesOfPatterns) {
  struct Case {
    const char* pattern;
    const char* options;
    StartRule::Way way;
  };
  const Case cases[] = {
      {"^abc", "", StartRule::kFirst},
      {"^abc", "m", StartRule::kLineStarts},
      {"\\Aabc", "m", StartRule::kFirst},
      {"\\Gabc", "", StartRule::kFirst},
      {"^*abc", "", StartRule::kEveryCharacter},
      {"^a|b", "", StartRule::kEveryCharacter},
      {"\\Zabc", "", StartRule::kEveryCharacter},
      {"(^abc)", "", StartRule::kEveryCharacter},
  };
  for (const Case& test : cases) {
    const PatternObject pattern(test.pattern, test.options);
    const StartRule rule = StartRuleFor(pattern.State(), kLong);
    EXPECT_EQ(rule.way, test.way) << test.pattern;
    EXPECT_EQ(rule.plan == nullptr, test.way == StartRule::kFirst) << test.pattern;
  }
}

// A short subject isn't worth a plan until the object has been used some times, and without the
// depth that positions passed over could have taken none is used.
TEST(StartPositionsTest, WhenAPlanIsUsed) {
  const PatternObject pattern("[ab]c");
  for (int32_t search = 0; search < 4; ++search) {
    EXPECT_EQ(StartRuleFor(pattern.State(), 10).plan, nullptr);
  }
  EXPECT_NE(StartRuleFor(pattern.State(), 10).plan, nullptr);
  veksRegExpSetMatchLimit(20, pattern.State());
  EXPECT_EQ(StartRuleFor(pattern.State(), kLong).plan, nullptr);

  const PatternObject manyClasses(test::Repeat("[ab]{0}", 200) + "[ab]c");
  EXPECT_EQ(StartRuleFor(manyClasses.State(), kLong).plan, nullptr);  // no room is left
}

}  // namespace
}  // namespace vekch::regexp
