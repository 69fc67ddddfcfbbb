// SPDX-License-Identifier: MIT

// What the exact matcher remembers of failures: that it changes nothing, at any limit. That what
// could not be waited for ends by it is tested with the fast matcher; that it matches by the rules,
// where searches are held against the model.

#include <gtest/gtest.h>

#include "regexp/match/matcher.h"
#include "tests/pattern_object.h"

namespace vekch::regexp {
namespace {

using test::BytesOf;
using test::PatternObject;
using test::SearchAnswer;

// Tries every position with one matcher, as a call does: what they gave, and the steps left.
std::string Tries(const PatternObject& object, const std::string& subject, bool remembers,
                  bool* begun) {
  const uint8_t* const text = BytesOf(subject);
  const auto length = static_cast<int32_t>(subject.size());
  Matcher matcher(object.State(), text, length);
  matcher.RememberAfter(remembers ? 0 : 1 << 30);
  std::string answer;
  for (int32_t at = 0; at <= length; ++at) {
    matcher.ClearSlots();
    matcher.requireNonEmpty = at % 2 != 0;  // what fails then may match without
    const MatchResult result = matcher.Match(ProgramOf(object.State()), text + at, text + length);
    answer += " " + std::to_string(static_cast<int>(result));
    if (result == MatchResult::kOk) {
      const RegExpFindResult* const slots = matcher.Slots();
      answer += test::Show(
          SearchAnswer{StatusNoError, 0, {slots, slots + object.State()->captureCount}}, text);
    }
  }
  matcher.requireNonEmpty = false;
  *begun = matcher.Remembers();
  return answer + " " + std::to_string(matcher.StepsLeft());
}

// How often failures were remembered, over the limits.
int32_t CompareTries(PatternObject* object, const std::string& pattern, const std::string& subject,
                     int32_t step) {
  int32_t times = 0;
  for (int32_t limit = 0; limit <= 120; limit += step) {
    veksRegExpSetMatchLimit(limit, object->State());
    bool begun = false;
    const std::string plain = Tries(*object, subject, false, &begun);
    EXPECT_FALSE(begun);
    EXPECT_EQ(Tries(*object, subject, true, &begun), plain)
        << pattern << " on " << subject << " at " << limit;
    times += begun ? 1 : 0;
  }
  return times;
}

TEST(ExactMatcherTest, RemembersNothingThatIsWrong) {
  const test::Words patterns = test::AllTexts(test::Split("a b | ( ) * + +? (?: a? aa"), 4);
  PatternObject object(20);
  int32_t compared = 0;
  int32_t remembered = 0;
  for (size_t i = 0; i < patterns.size(); i += test::kShare) {
    const std::string pattern = "(" + patterns[i] + ")*b";
    if (object.Compile(pattern) == StatusNoError) {
      for (const char* subject : {"aab", "aaaa", "abaac"}) {
        ++compared;
        remembered += CompareTries(&object, pattern, subject, 3) > 0 ? 1 : 0;
      }
    }
  }
  EXPECT_GT(compared, 4000 / static_cast<int32_t>(test::kShare));
  EXPECT_GT(remembered, compared / 2);
}

// Each is answered wrongly where something that counts is left out of what is remembered: the
// repetitions that are due or left, the depth, the group's end without depth, what an abort costs,
// what was captured.
TEST(ExactMatcherTest, WeakerFormsOfTheMemoryAreWrong) {
  constexpr struct {
    const char* pattern;
    const char* subject;
  } kCases[] = {{"(?:a+){3,}", "aaa"},
                {"(a){1,3}b", "aaaab"},
                {"(a)*b", "aaaaab"},
                {"(ba|a)\\1", "baa"},
                {"a?()", "bab"},
                {"(a*)+a{3,}", "aa"},
                {"((a)|a)*b", "aaaaaaa"},
                {"(?:a*|b*)*?b", "aaaaa"},
                {"(a|aa)+?(a?)+$", "aaaaaa!"},
                {"(?i:a?(a)+)*(?!a)", "aaaaaaa"}};
  for (const auto& test : kCases) {
    PatternObject object(test.pattern);
    CompareTries(&object, test.pattern, test.subject, 1);
  }
}

}  // namespace
}  // namespace vekch::regexp
