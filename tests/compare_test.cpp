// The comparisons against a naive model: every length, every misalignment, both ends of memory.

#include <gtest/gtest.h>

#include <ostream>
#include <vector>

#include "tests/guarded_buffer.h"
#include "vekch/vekch.h"

namespace vekch::test {
namespace {

constexpr int32_t kUnwritten = 0x5A5A5A5A;
constexpr int32_t kLongest = 300;

using CompareFunction = vekStatus (*)(const uint8_t*, const uint8_t*, int32_t, int32_t*) noexcept;

int FoldLatin(uint8_t byte) { return byte >= 'A' && byte <= 'Z' ? byte + 32 : byte; }

int32_t NaiveCompare(const uint8_t* a, const uint8_t* b, int32_t length) {
  for (int32_t i = 0; i < length; ++i) {
    if (a[i] != b[i]) {
      return a[i] - b[i];
    }
  }
  return 0;
}

int32_t NaiveCompareFolded(const uint8_t* a, const uint8_t* b, int32_t length) {
  for (int32_t i = 0; i < length; ++i) {
    if (FoldLatin(a[i]) != FoldLatin(b[i])) {
      return FoldLatin(a[i]) - FoldLatin(b[i]);
    }
  }
  return 0;
}

int32_t NaiveEqual(const uint8_t* a, const uint8_t* b, int32_t length) {
  return NaiveCompare(a, b, length) == 0 ? 1 : 0;
}

struct Comparison {
  const char* name;
  CompareFunction function;
  int32_t (*model)(const uint8_t*, const uint8_t*, int32_t);
};

void PrintTo(const Comparison& comparison, std::ostream* out) { *out << comparison.name; }

class CompareTest : public testing::TestWithParam<Comparison> {
 protected:
  // Equal but for the bytes given; `where` outside the string leaves the strings equal.
  void ExpectLikeModel(uint8_t* a, uint8_t* b, int32_t length, int32_t where, uint8_t inA,
                       uint8_t inB) {
    for (int32_t i = 0; i < length; ++i) {
      a[i] = b[i] = static_cast<uint8_t>(i * 7 + 60);
    }
    if (where >= 0 && where < length) {
      a[where] = inA;
      b[where] = inB;
    }
    int32_t result = kUnwritten;
    ASSERT_EQ(GetParam().function(a, b, length, &result), StatusNoError);
    ASSERT_EQ(result, GetParam().model(a, b, length))
        << "length " << length << ", difference at " << where << ": " << +inA << ", " << +inB;
  }
};

TEST_P(CompareTest, EveryLengthAndMisalignment) {
  GuardedBuffer bufferA(kLongest + 16);
  GuardedBuffer bufferB(kLongest + 16);
  for (int32_t length = 0; length <= kLongest; ++length) {
    for (size_t shift = 0; shift < 256; ++shift) {
      const int32_t where = static_cast<int32_t>(shift * 31 % (static_cast<size_t>(length) + 2));
      ExpectLikeModel(bufferA.AtEnd(static_cast<size_t>(length), shift % 16),
                      bufferB.AtStart(shift / 16), length, where, 200, 100);
    }
  }
}

TEST_P(CompareTest, EveryDifferenceBetweenTheGuards) {
  GuardedBuffer bufferA(kLongest);
  GuardedBuffer bufferB(kLongest);
  for (int32_t length = 1; length <= kLongest; length += length < 140 ? 1 : 23) {
    const auto size = static_cast<size_t>(length);
    for (int32_t where = -1; where < length; ++where) {
      ExpectLikeModel(bufferA.AtEnd(size), bufferB.AtEnd(size), length, where, 0, 255);
      ExpectLikeModel(bufferA.AtStart(), bufferB.AtEnd(size), length, where, 'K', 'k');
      ExpectLikeModel(bufferA.AtEnd(size), bufferB.AtStart(), length, where, '[', 'A');
    }
  }
}

// Every pair of byte values, in a short string and in every kind of step of a long one.
TEST_P(CompareTest, EveryPairOfBytes) {
  std::vector<uint8_t> a(160);
  std::vector<uint8_t> b(160);
  for (int value = 0; value < 256 * 256; ++value) {
    const auto inA = static_cast<uint8_t>(value / 256);
    const auto inB = static_cast<uint8_t>(value % 256);
    ExpectLikeModel(a.data(), b.data(), 5, 3, inA, inB);
    ExpectLikeModel(a.data(), b.data(), 160, (value * 37) % 160, inA, inB);
  }
}

// A second difference, of the other sign, must not be the one reported.
TEST_P(CompareTest, FirstOfTwoDifferences) {
  std::vector<uint8_t> a(200, 'x');
  std::vector<uint8_t> b(200, 'x');
  for (size_t i = 0; i + 1 < 200; ++i) {
    for (size_t j = i + 1; j < 200; j += 13) {
      a[i] = b[j] = 'y';
      int32_t result = kUnwritten;
      GetParam().function(a.data(), b.data(), 200, &result);
      ASSERT_EQ(result, GetParam().model(a.data(), b.data(), 200)) << i << ", " << j;
      a[i] = b[j] = 'x';
    }
  }
}

TEST_P(CompareTest, SameStringAndOverlap) {
  std::vector<uint8_t> text(100, 'q');
  int32_t result = kUnwritten;
  for (int32_t shift = 0; shift < 20; ++shift) {
    GetParam().function(text.data(), text.data() + shift, 80, &result);
    EXPECT_EQ(result, GetParam().model(text.data(), text.data() + shift, 80));
  }
}

TEST_P(CompareTest, ChecksInOrder) {
  const uint8_t text[1] = {'a'};
  for (int nulls = 0; nulls < 8; ++nulls) {
    for (const int32_t length : {INT32_MIN, -1, 0, 1}) {
      int32_t result = kUnwritten;
      const vekStatus expected = nulls != 0   ? StatusNullPointer
                                 : length < 0 ? StatusLengthError
                                              : StatusNoError;
      EXPECT_EQ(
          GetParam().function((nulls & 1) != 0 ? nullptr : text, (nulls & 2) != 0 ? nullptr : text,
                              length, (nulls & 4) != 0 ? nullptr : &result),
          expected);
      EXPECT_EQ(result == kUnwritten, expected != StatusNoError);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(All, CompareTest,
                         testing::Values(Comparison{"Compare", veksCompare_8u, NaiveCompare},
                                         Comparison{"IgnoreCase", veksCompareIgnoreCaseLatin_8u,
                                                    NaiveCompareFolded},
                                         Comparison{"Equal", veksEqual_8u, NaiveEqual}),
                         [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace vekch::test
