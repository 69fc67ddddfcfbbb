// Case mapping against a naive model, in the copying form, the copying form onto itself and the
// in-place form: every length, every misalignment, every byte value, both ends of memory.

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <vector>

#include "tests/guarded_buffer.h"
#include "vekch/vekch.h"

namespace vekch::test {
namespace {

constexpr int32_t kLongest = 300;
constexpr uint8_t kUnwritten = 0xA5;

struct CaseMapping {
  const char* name;
  vekStatus (*copy)(const uint8_t*, uint8_t*, int32_t) noexcept;
  vekStatus (*inPlace)(uint8_t*, int32_t) noexcept;
  const char* from;
  const char* to;
};

void PrintTo(const CaseMapping& mapping, std::ostream* out) { *out << mapping.name; }

class CaseTest : public testing::TestWithParam<CaseMapping> {
 protected:
  // Spells the letters out rather than comparing with a range.
  static uint8_t Model(uint8_t byte) {
    for (int i = 0; i < 26; ++i) {
      if (byte == static_cast<uint8_t>(GetParam().from[i])) {
        return static_cast<uint8_t>(GetParam().to[i]);
      }
    }
    return byte;
  }

  void SetUp() override {
    for (int value = 0; value < 256; ++value) {
      mapped_[value] = Model(static_cast<uint8_t>(value));
    }
  }

  // Some letters of both cases, their neighbours and bytes above 127, in a row that no period of a
  // block repeats.
  static uint8_t ByteAt(int32_t i, size_t seed) {
    return static_cast<uint8_t>(static_cast<size_t>(i) * 37 + static_cast<size_t>(i) / 16 + seed);
  }

  void ExpectMapped(const uint8_t* destination, int32_t length, size_t seed) {
    for (int32_t i = 0; i < length; ++i) {
      ASSERT_EQ(+destination[i], +mapped_[ByteAt(i, seed)]) << "at " << i << " of " << length;
    }
  }

  uint8_t mapped_[256] = {};
};

void Fill(uint8_t* p, int32_t length, size_t seed, uint8_t (*byteAt)(int32_t, size_t)) {
  for (int32_t i = 0; i < length; ++i) {
    p[i] = byteAt(i, seed);
  }
}

TEST_P(CaseTest, EveryLengthAndMisalignment) {
  GuardedBuffer from(kLongest + 16);
  GuardedBuffer to(kLongest + 48);
  for (int32_t length = 0; length <= kLongest; ++length) {
    const auto size = static_cast<size_t>(length);
    for (size_t shift = 0; shift < 256; ++shift) {
      uint8_t* source = from.AtEnd(size, shift / 16);
      uint8_t* destination = to.AtStart(16 + shift % 16);
      Fill(source, length, shift, ByteAt);
      std::fill_n(to.AtStart(), size + 48, kUnwritten);
      ASSERT_EQ(GetParam().copy(source, destination, length), StatusNoError);
      ExpectMapped(destination, length, shift);
      ASSERT_EQ(std::count(to.AtStart(), destination, kUnwritten), destination - to.AtStart());
      ASSERT_EQ(std::count(destination + size, destination + size + 16, kUnwritten), 16);
      for (int32_t i = 0; i < length; ++i) {
        ASSERT_EQ(source[i], ByteAt(i, shift)) << "the source changed at " << i;
      }
    }
  }
}

TEST_P(CaseTest, OntoItselfBetweenTheGuards) {
  GuardedBuffer buffer(kLongest + 16);
  for (int32_t length = 0; length <= kLongest; ++length) {
    for (size_t shift = 0; shift < 16; ++shift) {
      for (uint8_t* p : {buffer.AtStart(shift), buffer.AtEnd(static_cast<size_t>(length), shift)}) {
        Fill(p, length, shift, ByteAt);
        ASSERT_EQ(GetParam().inPlace(p, length), StatusNoError);
        ExpectMapped(p, length, shift);
        Fill(p, length, shift + 50, ByteAt);
        ASSERT_EQ(GetParam().copy(p, p, length), StatusNoError);
        ExpectMapped(p, length, shift + 50);
      }
    }
  }
}

// Every byte value at every position of short and long strings, all other bytes being letters.
TEST_P(CaseTest, EveryByteEverywhere) {
  const std::vector<int32_t> lengths = {1, 3, 7, 15, 31, 63, 150};
  constexpr uint8_t kFiller = 'k';
  std::vector<uint8_t> text(150);
  for (const int32_t length : lengths) {
    for (int32_t where = 0; where < length; ++where) {
      for (int value = 0; value < 256; ++value) {
        std::fill(text.begin(), text.end(), kFiller);
        text[static_cast<size_t>(where)] = static_cast<uint8_t>(value);
        GetParam().inPlace(text.data(), length);
        ASSERT_EQ(+text[static_cast<size_t>(where)], +mapped_[value]) << where << " of " << length;
        const auto untouched = std::count(text.begin(), text.begin() + length, mapped_[kFiller]);
        ASSERT_EQ(untouched, length - (mapped_[value] == mapped_[kFiller] ? 0 : 1));
      }
    }
  }
}

TEST_P(CaseTest, ChecksInOrder) {
  for (int nulls = 0; nulls < 4; ++nulls) {
    for (const int32_t length : {INT32_MIN, -1, 0, 1}) {
      uint8_t text[2] = {'a', 'A'};
      uint8_t* source = (nulls & 1) != 0 ? nullptr : text;
      uint8_t* destination = (nulls & 2) != 0 ? nullptr : text + 1;
      const auto expected = [=](bool anyNull) {
        return anyNull ? StatusNullPointer : length < 0 ? StatusLengthError : StatusNoError;
      };
      EXPECT_EQ(GetParam().copy(source, destination, length), expected(nulls != 0));
      EXPECT_EQ(+text[1], nulls == 0 && length == 1 ? +mapped_[97] : +'A');
      EXPECT_EQ(GetParam().inPlace(source, length), expected(source == nullptr));
      EXPECT_EQ(+text[0], source != nullptr && length == 1 ? +mapped_[97] : +'a');
    }
  }
}

constexpr char kCapitals[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
constexpr char kSmall[] = "abcdefghijklmnopqrstuvwxyz";

INSTANTIATE_TEST_SUITE_P(All, CaseTest,
                         testing::Values(CaseMapping{"Lower", veksLowercaseLatin_8u,
                                                     veksLowercaseLatin_8u_I, kCapitals, kSmall},
                                         CaseMapping{"Upper", veksUppercaseLatin_8u,
                                                     veksUppercaseLatin_8u_I, kSmall, kCapitals}),
                         [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace vekch::test
