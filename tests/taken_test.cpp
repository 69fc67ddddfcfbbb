// SPDX-License-Identifier: MIT

// That each way of the kernels and of searches is taken where it should be: one that is lost
// changes no answer. Which rule and which prefilter a pattern gets is seen in its plan elsewhere.

#include "strings/kernels/taken.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "strings/kernels/block_kernels.h"
#include "strings/kernels/cache_budget.h"
#include "strings/kernels/find_kernels.h"
#include "tests/pattern_object.h"

namespace vekch {
namespace {

std::map<std::string, int32_t>& Counts() {
  static std::map<std::string, int32_t> counts;
  return counts;
}

}  // namespace

void NoteTaken(const char* way) { ++Counts()[way]; }

namespace test {
namespace {

// A row of a table: the way, and whether it is taken.
template <class Call>
void Expect(const char* way, bool isTaken, Call call) {
  Counts().clear();
  call();
  EXPECT_EQ(Counts()[way] != 0, isTaken) << way;
}

struct NeedleCase {
  const char* way;
  std::string haystack;
  std::string needle;
  bool isTaken = true;
};

TEST(TakenTest, FindSubstring) {
  const std::string misleading = Repeat("ab", 500);
  const NeedleCase cases[] = {
      {"substring nearby", Repeat("x", 300), "ab"},
      {"substring nearby", Repeat("x", 129), "ab", false},
      {"substring by one byte", Repeat("x", 2000), "abc"},
      {"substring by one byte", Repeat("x", 1000), "abc", false},
      {"substring by one byte", Repeat("abc", 700), "acb", false},
      {"substring by two bytes", Repeat("abc", 700), "acb"},
      {"substring by the byte that failed", Repeat("a", 1000),
       Repeat("a", 20) + "b" + Repeat("a", 20)},
      {"substring by the byte that failed", misleading, "ababbbaba", false},
      {"substring by skipping", Repeat("x", 9000), Repeat("a", 50)},
      {"substring by skipping", Repeat("x", 9000), Repeat("a", 40), false},
      {"substring by skipping", misleading, Repeat("ab", 10) + "bbb" + Repeat("ba", 10)},
      {"substring by four bytes", misleading, "ababbbaba"},
      {"substring by four bytes", Repeat("x", 9000), "ababbbaba", false},
      {"substring by the two-way method", misleading, "ababbbaba"},
      {"substring by the two-way method", Repeat("x", 9000), "ababbbaba", false},
  };
  for (const NeedleCase& test : cases) {
    const auto length = static_cast<int32_t>(test.haystack.size());
    const auto needleLength = static_cast<int32_t>(test.needle.size());
    for (const auto find : {kernels::FindSubstring, kernels::FindLastSubstring}) {
      SCOPED_TRACE(find == kernels::FindSubstring ? "first" : "last");
      Expect(test.way, test.isTaken,
             [&] { find(BytesOf(test.haystack), length, BytesOf(test.needle), needleLength); });
    }
  }
}

TEST(TakenTest, FindInTerminated) {
  const auto find = [](const std::string& haystack) {
    return [&haystack] { kernels::FindInTerminated(BytesOf(haystack), BytesOf("ab")); };
  };
  Expect("terminated nearby", true, find(Repeat("x", 300)));
  Expect("terminated further on", false, find(Repeat("x", 300)));
  Expect("terminated further on", true, find(Repeat("x", 3000)));
}

TEST(TakenTest, FindAnyOf) {
  const std::string scattered = "acegikmoqs";
  const std::string large = "acegikmoqsuwy02468+-/(";
  const struct {
    const char* way;
    int32_t length;
    std::string set;
    bool isTaken = true;
  } cases[] = {
      {"set compared", 1000, "abcd"},          {"set compared", 1000, "abcde", false},
      {"set byte by byte", 8, large},          {"set byte by byte", 9, large, false},
      {"set in groups", 200, "abcdefgh"},      {"set in groups", 200, scattered, false},
      {"set in a table", 200, scattered},      {"set in a table", 319, "abcdefgh", false},
      {"set in one range", 320, "abcdefgh"},   {"set in one range", 319, "abcdefgh", false},
      {"set in two ranges", 320, "abcdwxyz~"}, {"set in ranges", 320, "acd0123xyz"},
  };
  for (const auto& test : cases) {
    const std::string haystack(static_cast<size_t>(test.length), '_');
    for (const auto find : {kernels::FindAnyOf, kernels::FindLastOf}) {
      SCOPED_TRACE(test.set);
      Expect(test.way, test.isTaken, [&] {
        find(BytesOf(haystack), test.length, BytesOf(test.set),
             static_cast<int32_t>(test.set.size()));
      });
    }
  }
}

TEST(TakenTest, BlocksPastTheCache) {
  const std::string from(700000, 'x');
  std::string to(from.size() + 8192, ' ');
  kernels::CacheAnswer small = {true, 1 << 20};
  kernels::CacheAnswer large = {true, 1 << 24};
  const auto copy = [&](size_t distance, int32_t length, kernels::CacheAnswer* cache) {
    return [&to, &from, distance, length, cache] {
      const auto gap =
          reinterpret_cast<uintptr_t>(from.data()) - reinterpret_cast<uintptr_t>(&to[0]);
      auto* const begin = reinterpret_cast<uint8_t*>(&to[gap % 4096 + distance]);
      kernels::Copy(BytesOf(from), begin, length, cache);
    };
  };
  Expect("copy past the cache", true, copy(0, 600000, &small));
  Expect("copy past the cache", false, copy(0, 600000, &large));
  Expect("copy past the cache", false, copy(0, 500000, &small));
  const auto fill = [&](int32_t length, uint32_t cacheSize) {
    auto* const begin = reinterpret_cast<uint8_t*>(&to[0]);
    return [=] { kernels::FillForCache('x', begin, length, cacheSize); };
  };
  Expect("fill past the cache", true, fill(600000, 600000));
  Expect("fill past the cache", false, fill(600000, 600001));
  Expect("fill past the cache", false, fill(500000, 400000));
  Expect("copy from the end", true, copy(100, 8192, &small));
  Expect("copy from the end", false, copy(400, 8192, &small));
  Expect("copy from the end", false, copy(100, 4000, &small));
}

TEST(TakenTest, Searches) {
  const std::string text = Repeat("- ", 400) + "walking";
  const struct {
    const char* way;
    const char* pattern;
    std::string subject;
    bool isTaken = true;
    const char* options = "";
    int32_t before = 0;  // searches before this one
    int32_t limit = kDefaultLimit;
  } cases[] = {
      {"lone literal", "king", text},
      {"lone literal", "kin[g]?", text, false},
      {"suffix literal that is absent", "\\w+=", text},
      {"suffix literal that is absent", "\\w+=", text, false, "", 0, 5},
      {"prefix literal", "wal\\w", text},
      {"prefix literal", "(?:w|x)al\\w", text, false},
      {"alternatives of literals", "walk|talk", text},
      {"alternatives of literals", "walk|tal[k]", text, false},
      {"first position", "^\\w+(?:ing)?", "walking", true, "", 8},
      {"first position", "\\w+", "walking", false},
      {"first position", "\\w+ing", "walking", false, "", 8},
      {"direct", "\\w+ing", "walking", true, "", 8},
      {"direct", "\\w+ing", "walking", false},
      {"direct", "\\w+ing", "walking", false, "g", 8},
      {"direct", "\\w+ing", text, false, "", 8},
      {"lone run", "(\\w+)$", text, true, "gm"},
      {"lone run", "\\w+", text},
      {"lone run", "\\w+?", text, false, "g"},
      {"lone run", "^\\w+", text, false, "gm"},
      {"start positions of the fast matcher", "\\p{Ll}ng", text},
      {"start positions of the fast matcher", "[a-z]ng", text, false},
      {"start positions of the fast matcher", "\\p{Ll}ng", text, true, "", 0, 92},
      {"start positions of the fast matcher", "\\p{Ll}ng", text, false, "", 0, 91},
      {"fast matcher", "\\w+ing", text},
      {"fast matcher", "(w)?(?(1)a|b)", text, false},
      {"exact matcher", "(w)?(?(1)a|b)", text},
      {"exact matcher", "\\w+ing", text, false},
      {"exact matcher", "\\w+ing", "walking"},
      {"fast matcher that gave up", "(?:ab)*c", Repeat("ab", 2000) + "c"},
      {"fast matcher that gave up", "(?:ab)*c", Repeat("ab", 200) + "c", false},
      {"many frames", "(a|a)*[bc]", Repeat("a", 25), true, "", 0, 8000},
      {"many frames", "(a|a)*[bc]", Repeat("a", 25), false, "", 0, 7999},
      {"memory of failures", "(a|a)*[bc]", Repeat("a", 25)},
      {"memory of failures", "(a|a)*[bc]", Repeat("a", 4), false},
  };
  for (const auto& test : cases) {
    PatternObject object(test.pattern, test.options, 1, test.limit);
    const auto find = [&] {
      Search(object.State(), BytesOf(test.subject), static_cast<int32_t>(test.subject.size()));
    };
    for (int32_t i = 0; i < test.before; ++i) {
      find();
    }
    SCOPED_TRACE(test.pattern);
    Expect(test.way, test.isTaken, find);
  }
}

}  // namespace
}  // namespace test
}  // namespace vekch
