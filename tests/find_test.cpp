// The search family against naive models: every length and misalignment, both ends of memory,
// small alphabets, needles made to mislead, sets of every size and shape.

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "tests/guarded_buffer.h"
#include "vekch/vekch.h"

namespace vekch::test {
namespace {

constexpr int32_t kUnwritten = 0x5A5A5A5A;
constexpr int32_t kLongest = 300;

using Bytes = std::basic_string<uint8_t>;

Bytes operator""_b(const char* text, size_t length) { return Bytes(text, text + length); }

// ---- Models: the first or last of the positions at which a predicate holds.

template <class Holds>
int32_t Naive(bool forward, int32_t positions, Holds holds) {
  for (int32_t step = 0; step < positions; ++step) {
    const int32_t i = forward ? step : positions - 1 - step;
    if (holds(i)) {
      return i;
    }
  }
  return -1;
}

int32_t NaiveFind(bool forward, const uint8_t* s, int32_t length, const Bytes& needle) {
  const auto n = static_cast<int32_t>(needle.size());
  return n == 0 ? -1 : Naive(forward, length - n + 1, [&](int32_t i) {
    return std::equal(needle.begin(), needle.end(), s + i);
  });
}

int32_t NaiveFindAny(bool forward, const uint8_t* s, int32_t length, const Bytes& set) {
  return Naive(forward, length, [&](int32_t i) { return set.find(s[i]) != Bytes::npos; });
}

// ---- Both directions of a search, with the index returned and the status expected to be success.

int32_t Find(bool forward, const uint8_t* s, int32_t length, const uint8_t* needle, int32_t n) {
  int32_t index = kUnwritten;
  EXPECT_EQ((forward ? veksFind_8u : veksFindRev_8u)(s, length, needle, n, &index), StatusNoError);
  return index;
}

int32_t FindAny(bool forward, const uint8_t* s, int32_t length, const uint8_t* set, int32_t n) {
  int32_t index = kUnwritten;
  EXPECT_EQ((forward ? veksFindCAny_8u : veksFindRevCAny_8u)(s, length, set, n, &index),
            StatusNoError);
  return index;
}

int32_t FindByte(bool forward, const uint8_t* s, int32_t length, uint8_t value) {
  int32_t index = kUnwritten;
  EXPECT_EQ((forward ? veksFindC_8u : veksFindRevC_8u)(s, length, value, &index), StatusNoError);
  return index;
}

int32_t Size(const Bytes& bytes) { return static_cast<int32_t>(bytes.size()); }

class FindTest : public testing::TestWithParam<bool> {
 protected:
  bool Forward() const { return GetParam(); }

  void ExpectFind(const uint8_t* s, int32_t length, const Bytes& needle) {
    ASSERT_EQ(Find(Forward(), s, length, needle.data(), Size(needle)),
              NaiveFind(Forward(), s, length, needle))
        << "source of " << length << ", needle of " << needle.size();
  }

  void ExpectFindAny(const uint8_t* s, int32_t length, const Bytes& set) {
    ASSERT_EQ(FindAny(Forward(), s, length, set.data(), Size(set)),
              NaiveFindAny(Forward(), s, length, set))
        << "source of " << length << ", set of " << set.size();
  }
};

INSTANTIATE_TEST_SUITE_P(Both, FindTest, testing::Bool(),
                         [](const auto& test) { return test.param ? "Forward" : "Backward"; });

// ---- One byte

// The byte at no, one or two positions, with the string against both guards; the bytes outside the
// string are the byte sought, so that a read beyond an end is an answer beyond it.
TEST_P(FindTest, ByteAtEveryPositionLengthAndMisalignment) {
  GuardedBuffer buffer(kLongest + 32);
  uint8_t* all = buffer.AtStart();
  for (int32_t length = 0; length <= kLongest; ++length) {
    const auto size = static_cast<size_t>(length);
    for (size_t shift = 0; shift < 17; ++shift) {
      for (uint8_t* s : {buffer.AtStart(shift), buffer.AtEnd(size, shift)}) {
        std::fill(all, buffer.AtEnd(0), uint8_t{0xC3});
        std::fill(s, s + length, uint8_t{0x43});
        ASSERT_EQ(FindByte(Forward(), s, length, 0xC3), -1);
        for (int32_t where = 0; where < length; where += length < 80 ? 1 : 7) {
          const int32_t second = (where * 5 + 3) % length;
          s[where] = s[second] = 0xC3;
          ASSERT_EQ(FindByte(Forward(), s, length, 0xC3),
                    Forward() ? std::min(where, second) : std::max(where, second))
              << "length " << length << ", at " << where << " and " << second;
          s[where] = s[second] = 0x43;
        }
      }
    }
  }
}

TEST_P(FindTest, EveryByteValue) {
  Bytes every;
  for (int value = 0; value < 256; ++value) {
    every.push_back(static_cast<uint8_t>(value));
  }
  for (int value = 0; value < 256; ++value) {
    EXPECT_EQ(FindByte(Forward(), every.data(), 256, every[static_cast<size_t>(value)]), value);
  }
}

// ---- Substrings

// Sources over two letters are full of false candidates and of overlapping occurrences.
TEST_P(FindTest, NeedlesOverSmallAlphabets) {
  std::mt19937 random(1);
  GuardedBuffer sources(kLongest + 32);
  GuardedBuffer needles(kLongest);
  for (int round = 0; round < 60000; ++round) {
    const auto length = static_cast<int32_t>(random() % (kLongest + 1));
    const auto needleLength = static_cast<int32_t>(random() % (round % 4 == 0 ? 40 : 7));
    const size_t letters = 2 + random() % 3;
    uint8_t* s = round % 2 == 0 ? sources.AtEnd(static_cast<size_t>(length), random() % 16)
                                : sources.AtStart(random() % 16);
    uint8_t* needle = needles.AtEnd(static_cast<size_t>(needleLength));
    std::generate(s, s + length, [&] { return static_cast<uint8_t>(0xFE + random() % letters); });
    std::generate(needle, needle + needleLength,
                  [&] { return static_cast<uint8_t>(0xFE + random() % letters); });
    ASSERT_EQ(Find(Forward(), s, length, needle, needleLength),
              NaiveFind(Forward(), s, length, Bytes(needle, needle + needleLength)));
  }
}

// A needle placed at every position of every length, against both guards.
TEST_P(FindTest, NeedleAtEveryPosition) {
  GuardedBuffer buffer(kLongest + 16);
  for (const int32_t n : {1, 2, 3, 4, 5, 8, 15, 16, 17, 33, 64, 65}) {
    Bytes needle;
    for (int32_t i = 0; i < n; ++i) {
      needle.push_back(static_cast<uint8_t>("zebra"[i % 5] + i / 5));
    }
    for (int32_t length = n; length <= kLongest; length += length < 100 ? 1 : 9) {
      for (uint8_t* s : {buffer.AtStart(), buffer.AtEnd(static_cast<size_t>(length))}) {
        for (int32_t at = 0; at + n <= length; ++at) {
          std::fill(s, s + length, needle[0]);
          std::copy(needle.begin(), needle.end(), s + at);
          ExpectFind(s, length, needle);
          s[at + n / 2] ^= 0x80;  // nearly there
          ExpectFind(s, length, needle);
        }
      }
    }
  }
}

// Long sources take the choice of needle bytes and, with these needles, the linear method: the
// periods and near misses are the hard cases of a string matcher.
TEST_P(FindTest, NeedlesMadeToMislead) {
  const auto repeat = [](const Bytes& unit, size_t count) {
    Bytes text;
    while (count-- > 0) {
      text += unit;
    }
    return text;
  };
  const Bytes a = "a"_b;
  const std::vector<Bytes> needles = {
      repeat(a, 31) + "b"_b,
      "b"_b + repeat(a, 31),
      repeat(a, 15) + "b"_b + repeat(a, 16),
      repeat("ab"_b, 20) + "b"_b,
      repeat("ab"_b, 20),
      repeat("aab"_b, 7) + "aaab"_b,
      repeat("abcab"_b, 30) + "c"_b + repeat("abcab"_b, 30),
      "abaababaabaababaababa"_b,
      repeat(a, 200),
  };
  const std::vector<Bytes> texts = {repeat(a, 6000),
                                    repeat("ab"_b, 3000),
                                    repeat("aab"_b, 2000),
                                    repeat("abcab"_b, 1500),
                                    repeat("abaababaabaababaababaabaababaabaab"_b, 150),
                                    repeat(repeat(a, 30) + "b"_b, 200)};
  for (const Bytes& text : texts) {
    for (const Bytes& needle : needles) {
      ExpectFind(text.data(), Size(text), needle);
      // Once in the text, early, late or at an end.
      for (const size_t at : {size_t{0}, size_t{1}, size_t{2500}, size_t{5001}, text.size()}) {
        Bytes with = text;
        with.insert(at, needle);
        ExpectFind(with.data(), Size(with), needle);
      }
    }
  }
}

TEST_P(FindTest, RandomFactorsOfRepetitiveText) {
  std::mt19937 random(2);
  for (int round = 0; round < 400; ++round) {
    Bytes unit;
    for (size_t i = 0, n = 1 + random() % 12; i < n; ++i) {
      unit.push_back(static_cast<uint8_t>('a' + random() % 2));
    }
    Bytes text;
    while (text.size() < 8000) {
      text += unit;
      if (random() % 50 == 0) {
        text.push_back(static_cast<uint8_t>('a' + random() % 2));
      }
    }
    Bytes needle = text.substr(random() % 7000, 2 + random() % 600);
    ExpectFind(text.data(), Size(text), needle);
    needle[random() % needle.size()] ^= 3;
    ExpectFind(text.data(), Size(text), needle);
  }
}

// ---- Sets

// Sets of every size, as scattered members and as one to five ranges, with repetitions; sources on
// which the set is hit nowhere, once, or often.
TEST_P(FindTest, SetsOfEverySizeAndShape) {
  std::mt19937 random(3);
  GuardedBuffer sources(kLongest + 16);
  GuardedBuffer sets(600);
  for (int round = 0; round < 40000; ++round) {
    Bytes members;
    if (round % 2 == 0) {
      for (size_t n = random() % (round % 8 == 0 ? 300 : 20); members.size() < n;) {
        members.push_back(static_cast<uint8_t>(random()));
      }
    } else {
      for (size_t range = 1 + random() % 5; range > 0; --range) {
        const size_t lowest = random() % 256;
        const size_t highest = std::min(lowest + random() % 64, size_t{255});
        for (size_t value = lowest; value <= highest; ++value) {
          members.push_back(static_cast<uint8_t>(value));
        }
      }
    }
    Bytes others;
    for (int value = 0; value < 256; ++value) {
      if (members.find(static_cast<uint8_t>(value)) == Bytes::npos) {
        others.push_back(static_cast<uint8_t>(value));
      }
    }
    std::shuffle(members.begin(), members.end(), random);
    uint8_t* set = sets.AtEnd(members.size());
    std::copy(members.begin(), members.end(), set);
    const auto length = static_cast<int32_t>(random() % (round % 3 == 0 ? kLongest + 1 : 40));
    uint8_t* s = round % 4 < 2 ? sources.AtEnd(static_cast<size_t>(length)) : sources.AtStart();
    std::generate(s, s + length, [&] {
      return others.empty() ? static_cast<uint8_t>(random()) : others[random() % others.size()];
    });
    for (size_t hits = random() % 3; hits > 0 && length > 0 && !members.empty(); --hits) {
      s[random() % static_cast<size_t>(length)] = members[random() % members.size()];
    }
    ASSERT_EQ(FindAny(Forward(), s, length, set, Size(members)),
              NaiveFindAny(Forward(), s, length, members))
        << "source of " << length << ", set of " << members.size();
  }
}

// Every range of byte values as a set, the set of all bytes included: its ends are hit, the values
// next to it are not.
TEST_P(FindTest, EveryRangeAsASet) {
  Bytes source(200, 0);
  for (int lowest = 0; lowest < 256; ++lowest) {
    Bytes set(16, static_cast<uint8_t>(lowest));
    for (int highest = lowest; highest < 256; ++highest) {
      set.push_back(static_cast<uint8_t>(highest));
      for (const int outside : {lowest - 1, highest + 1}) {
        for (const int inside : {lowest, highest}) {
          std::fill(source.begin(), source.end(), static_cast<uint8_t>(outside));
          source[100] = static_cast<uint8_t>(inside);
          const bool all = lowest == 0 && highest == 255;
          ASSERT_EQ(FindAny(Forward(), source.data(), 200, set.data(), Size(set)), !all ? 100
                                                                                   : Forward()
                                                                                       ? 0
                                                                                       : 199)
              << lowest << " to " << highest << ", beside " << outside;
        }
      }
    }
  }
}

// ---- Zero-terminated strings

// The terminator in the last byte of a page, at every misalignment of the string's start; behind
// the terminator of a string that does not end its page stand bytes that must not count.
TEST(FindZeroTerminated, LengthsAndPositionsUpToTheGuard) {
  GuardedBuffer buffer(kLongest + 32);
  GuardedBuffer needleBuffer(16);
  for (int32_t length = 0; length <= kLongest; ++length) {
    for (size_t behind = 0; behind < 17; behind += length < 40 ? 1 : 5) {
      uint8_t* s = buffer.AtEnd(static_cast<size_t>(length) + 1, behind);
      std::fill(buffer.AtStart(), buffer.AtEnd(0), uint8_t{'k'});
      std::fill(s, s + length, uint8_t{0xE1});
      s[length] = 0;
      int32_t index = kUnwritten;
      ASSERT_EQ(veksFindC_Z_8u(s, 0, &index), StatusNoError);
      ASSERT_EQ(index, length);
      ASSERT_EQ(veksFindC_Z_8u(s, 'k', &index), StatusNoError);
      ASSERT_EQ(index, -1);
      for (int32_t where = 0; where + 2 < length; where += 3) {
        s[where] = 'k';
        s[where + 1] = 'l';
        ASSERT_EQ(veksFindC_Z_8u(s, 'k', &index), StatusNoError);
        ASSERT_EQ(index, where);
        uint8_t* needle = needleBuffer.AtEnd(3);
        std::copy_n("kl", 3, needle);
        ASSERT_EQ(veksFind_Z_8u(s, needle, &index), StatusNoError);
        ASSERT_EQ(index, where);
        ASSERT_EQ(veksFind_Z_8u(s, needle + 2, &index), StatusNoError);
        ASSERT_EQ(index, -1) << "an empty needle";
        s[where] = s[where + 1] = 0xE1;
      }
    }
  }
}

// ---- Fixed results and checks

TEST_P(FindTest, FixedResults) {
  struct Row {
    Bytes source;
    Bytes needle;
    int32_t forward;
    int32_t backward;
  };
  const Row rows[] = {
      {"abab"_b, "ab"_b, 0, 2},    {"aaa"_b, "aa"_b, 0, 1},      {"abc"_b, "abc"_b, 0, 0},
      {"abc"_b, ""_b, -1, -1},     {""_b, ""_b, -1, -1},         {""_b, "a"_b, -1, -1},
      {"abc"_b, "abcd"_b, -1, -1}, {"a\0b\0b"_b, "\0b"_b, 1, 3},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(
        Find(Forward(), row.source.data(), Size(row.source), row.needle.data(), Size(row.needle)),
        Forward() ? row.forward : row.backward);
  }
  EXPECT_EQ(FindAny(Forward(), rows[0].source.data(), 4, rows[0].needle.data(), 0), -1);
  EXPECT_EQ(FindAny(Forward(), rows[0].source.data(), 0, rows[0].needle.data(), 2), -1);
}

// Every combination of null pointers with every combination of negative lengths.
TEST(FindChecks, InOrderAndWithoutWriting) {
  using Search = vekStatus (*)(const uint8_t*, int32_t, const uint8_t*, int32_t, int32_t*);
  struct Row {
    Search call;
    bool usesPattern;
  };
  const Row rows[] = {
      {[](auto s, auto n, auto p, auto m, auto i) { return veksFind_8u(s, n, p, m, i); }, true},
      {[](auto s, auto n, auto p, auto m, auto i) { return veksFindRev_8u(s, n, p, m, i); }, true},
      {[](auto s, auto n, auto p, auto m, auto i) { return veksFindCAny_8u(s, n, p, m, i); }, true},
      {[](auto s, auto n, auto p, auto m, auto i) { return veksFindRevCAny_8u(s, n, p, m, i); },
       true},
      {[](auto s, auto n, auto, auto, auto i) { return veksFindC_8u(s, n, 'a', i); }, false},
      {[](auto s, auto n, auto, auto, auto i) { return veksFindRevC_8u(s, n, 'a', i); }, false},
  };
  const uint8_t text[2] = {'a', 0};
  for (const Row& row : rows) {
    for (int nulls = 0; nulls < 8; ++nulls) {
      for (const int32_t length : {INT32_MIN, -1, 0, 1}) {
        for (const int32_t patternLength : {INT32_MIN, -1, 0, 1}) {
          const bool anyNull = (nulls & 5) != 0 || (row.usesPattern && (nulls & 2) != 0);
          const bool anyNegative = length < 0 || (row.usesPattern && patternLength < 0);
          const vekStatus expected = anyNull       ? StatusNullPointer
                                     : anyNegative ? StatusLengthError
                                                   : StatusNoError;
          int32_t index = kUnwritten;
          EXPECT_EQ(
              row.call((nulls & 1) != 0 ? nullptr : text, length, (nulls & 2) != 0 ? nullptr : text,
                       patternLength, (nulls & 4) != 0 ? nullptr : &index),
              expected);
          EXPECT_EQ(index == kUnwritten, expected != StatusNoError);
        }
      }
    }
  }
}

TEST(FindChecks, ZeroTerminatedForms) {
  const uint8_t text[2] = {'a', 0};
  int32_t index = kUnwritten;
  EXPECT_EQ(veksFind_Z_8u(nullptr, text, &index), StatusNullPointer);
  EXPECT_EQ(veksFind_Z_8u(text, nullptr, &index), StatusNullPointer);
  EXPECT_EQ(veksFind_Z_8u(text, text, nullptr), StatusNullPointer);
  EXPECT_EQ(veksFindC_Z_8u(nullptr, 'a', &index), StatusNullPointer);
  EXPECT_EQ(veksFindC_Z_8u(nullptr, 0, &index), StatusNullPointer);
  EXPECT_EQ(veksFindC_Z_8u(text, 'a', nullptr), StatusNullPointer);
  EXPECT_EQ(veksFindC_Z_8u(text, 'b', nullptr), StatusNullPointer);
  EXPECT_EQ(index, kUnwritten);
  // The value 0 asks for the length and does not test the index: nothing to call it with but a
  // writable one.
  EXPECT_EQ(veksFindC_Z_8u(text + 1, 0, &index), StatusNoError);
  EXPECT_EQ(index, 0);
}

}  // namespace
}  // namespace vekch::test
