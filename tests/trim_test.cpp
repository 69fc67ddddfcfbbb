// Trimming against a naive model: every number of bytes dropped at either end of short strings, all
// kinds of lengths beyond, sets of every size class, into a copy and onto the source, between pages
// that can't be touched.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "tests/guarded_buffer.h"
#include "vekch/vekch.h"

namespace vekch::test {
namespace {

constexpr size_t kLongest = 300;
constexpr size_t kMargin = 16;
constexpr uint8_t kUnwritten = 0xEE;

using TrimFunction = vekStatus (*)(const uint8_t*, int32_t, const uint8_t*, int32_t, uint8_t*,
                                   int32_t*) noexcept;

// The functions for one byte value, as if its set had been given.
vekStatus TrimByte(const uint8_t* source, int32_t length, const uint8_t* set, int32_t setLength,
                   uint8_t* destination, int32_t* destinationLength) noexcept {
  EXPECT_EQ(setLength, 1);
  return veksTrimC_8u(source, length, *set, destination, destinationLength);
}

vekStatus TrimByteInPlace(const uint8_t* source, int32_t length, const uint8_t* set,
                          int32_t setLength, uint8_t* destination,
                          int32_t* destinationLength) noexcept {
  EXPECT_EQ(setLength, 1);
  std::memmove(destination, source, static_cast<size_t>(length));
  *destinationLength = length;
  return veksTrimC_8u_I(destination, destinationLength, *set);
}

struct Trimming {
  const char* name;
  TrimFunction function;
  bool start;
  bool end;
  bool oneByte;  // takes no other sets
  bool inPlace;  // leaves the source behind the result
};

const Trimming kTrimmings[] = {{"TrimC", TrimByte, true, true, true, false},
                               {"TrimC_I", TrimByteInPlace, true, true, true, true},
                               {"TrimCAny", veksTrimCAny_8u, true, true, false, false},
                               {"TrimStartCAny", veksTrimStartCAny_8u, true, false, false, false},
                               {"TrimEndCAny", veksTrimEndCAny_8u, false, true, false, false}};

// The members of a set, among them 0 and 255, out of order.
std::string SetOf(size_t size) {
  std::string set;
  for (size_t i = 0; i < size; ++i) {
    set += static_cast<char>(size == 1 ? ' ' : i * 85);
  }
  return set;
}

std::string NaiveTrim(std::string text, const std::string& set, const Trimming& trimming) {
  const auto drops = [&](char c) { return std::find(set.begin(), set.end(), c) != set.end(); };
  while (trimming.start && !text.empty() && drops(text.front())) {
    text.erase(0, 1);
  }
  while (trimming.end && !text.empty() && drops(text.back())) {
    text.pop_back();
  }
  return text;
}

class TrimTest : public testing::Test {
 protected:
  // Members at the ends; between them bytes of all kinds, the first and the last no members.
  static std::string Text(size_t length, size_t atStart, size_t atEnd, const std::string& set) {
    std::string text(length, ' ');
    for (size_t i = 0; i < length; ++i) {
      const bool member = i < atStart || i >= length - std::min(atEnd, length);
      const bool edge = i == atStart || i + atEnd + 1 == length;
      char c = member && !set.empty() ? set[i * 7 % set.size()] : static_cast<char>(i * 3);
      while (edge && !member && set.size() < 256 && set.find(c) != std::string::npos) {
        ++c;
      }
      text[i] = c;
    }
    return text;
  }

  static uint8_t* Put(uint8_t* p, const std::string& text) {
    std::memcpy(p, text.data(), text.size());
    return p;
  }

  void ExpectLikeModel(const Trimming& trimming, const std::string& text, const std::string& set,
                       size_t shift) {
    const std::string expected = NaiveTrim(text, set, trimming);
    const size_t size = text.size();
    uint8_t* source =
        Put(shift % 2 == 0 ? from_.AtEnd(size, shift / 2) : from_.AtStart(shift / 2), text);
    uint8_t* destination = to_.AtEnd(size, shift);
    std::memset(destination - kMargin, kUnwritten, size + kMargin + shift);
    const std::string untouched =
        trimming.inPlace ? text.substr(expected.size())
                         : std::string(size - expected.size(), static_cast<char>(kUnwritten));
    ExpectTrimmed(trimming, source, text, set, destination, expected + untouched, expected.size());
    EXPECT_EQ(std::count(destination - kMargin, destination, kUnwritten), kMargin);
    EXPECT_EQ(std::count(destination + size, destination + size + shift, kUnwritten), shift);
    // Onto the source: what is behind the result stays.
    ExpectTrimmed(trimming, source, text, set, source, expected + text.substr(expected.size()),
                  expected.size());
  }

  void ExpectTrimmed(const Trimming& trimming, const uint8_t* source, const std::string& text,
                     const std::string& set, uint8_t* destination, const std::string& written,
                     size_t keptLength) {
    int32_t length = -7;
    const uint8_t* members = Put(set_.AtEnd(set.size()), set);
    ASSERT_EQ(trimming.function(source, static_cast<int32_t>(text.size()), members,
                                static_cast<int32_t>(set.size()), destination, &length),
              StatusNoError);
    ASSERT_EQ(length, static_cast<int32_t>(keptLength)) << trimming.name << ", " << set.size();
    ASSERT_EQ(std::string(destination, destination + written.size()), written)
        << trimming.name << ", " << set.size() << " members, " << text.size() << " bytes";
  }

  GuardedBuffer from_{kLongest + kMargin};
  GuardedBuffer to_{kLongest + 2 * kMargin};
  GuardedBuffer set_{300};
};

TEST_F(TrimTest, EveryNumberDroppedFromShortStrings) {
  for (const size_t setSize : {1U, 2U, 3U, 4U, 7U, 8U, 9U, 16U, 17U, 64U}) {
    const std::string set = SetOf(setSize);
    for (size_t length = 0; length <= 40; ++length) {
      for (size_t atStart = 0; atStart <= length; ++atStart) {
        for (size_t atEnd = 0; atEnd + atStart <= length; atEnd += 1 + atEnd / 18) {
          const std::string text = Text(length, atStart, atEnd, set);
          for (const Trimming& trimming : kTrimmings) {
            if (!trimming.oneByte || setSize == 1) {
              ExpectLikeModel(trimming, text, set, (length + atStart + atEnd) % kMargin);
            }
          }
        }
      }
    }
  }
}

TEST_F(TrimTest, EveryLengthAndSetSize) {
  for (size_t length = 0; length <= kLongest; length += 1 + length / 70) {
    for (const size_t setSize :
         {0U, 1U, 2U, 3U, 4U, 5U, 8U, 11U, 15U, 16U, 17U, 18U, 33U, 255U, 256U}) {
      const std::string set = SetOf(setSize);
      for (const size_t atStart : {size_t{0}, size_t{2}, length % 90, length / 2, length}) {
        for (const size_t atEnd : {size_t{0}, size_t{1}, length % 77, length / 2}) {
          const size_t start = std::min(atStart, length);
          const std::string text = Text(length, start, std::min(atEnd, length - start), set);
          for (const Trimming& trimming : kTrimmings) {
            if (!trimming.oneByte || setSize == 1) {
              ExpectLikeModel(trimming, text, set, (length + setSize) % kMargin);
            }
          }
        }
      }
    }
  }
}

TEST_F(TrimTest, EveryByteValue) {
  for (int value = 0; value < 256; ++value) {
    for (const size_t setSize : {1U, 4U, 13U, 30U}) {
      std::string set;
      for (size_t i = 0; i < setSize; ++i) {
        set += static_cast<char>(value + static_cast<int>(i / 2) * 3);  // repetitions too
      }
      for (const size_t length : {3U, 20U, 70U}) {
        const std::string text = Text(length, length / 3, length / 3, set);
        for (const Trimming& trimming : kTrimmings) {
          if (!trimming.oneByte || setSize == 1) {
            ExpectLikeModel(trimming, text, set, length % kMargin);
          }
        }
      }
    }
  }
}

// Each null and each bad length, alone and together: a null counts first, and nothing is written.
TEST_F(TrimTest, ChecksInOrder) {
  const auto expectUnwritten = [](const std::string& bytes, int32_t length, int32_t before) {
    EXPECT_EQ(bytes, "  x  ");
    EXPECT_EQ(length, before);
  };
  for (unsigned nulls = 0; nulls < 16; ++nulls) {
    for (const int32_t bad : {-1, INT32_MIN}) {
      std::string text = "  x  ";
      auto* bytes = reinterpret_cast<uint8_t*>(text.data());
      const uint8_t set[] = " ";
      const auto null = [&](unsigned i) { return (nulls >> i & 1) != 0; };
      const vekStatus expected = nulls != 0 ? StatusNullPointer : StatusLengthError;
      int32_t length = 77;
      for (const Trimming& trimming : kTrimmings) {
        for (int which = 1; which <= 3 && !trimming.oneByte; ++which) {
          EXPECT_EQ(trimming.function(null(0) ? nullptr : bytes, (which & 1) != 0 ? bad : 5,
                                      null(1) ? nullptr : set, (which & 2) != 0 ? bad : 1,
                                      null(2) ? nullptr : bytes, null(3) ? nullptr : &length),
                    expected)
              << trimming.name << ", nulls " << nulls;
        }
      }
      expectUnwritten(text, length, 77);
      if (!null(3)) {
        EXPECT_EQ(veksTrimC_8u(null(0) ? nullptr : bytes, bad, ' ', null(1) ? nullptr : bytes,
                               null(2) ? nullptr : &length),
                  expected);
        expectUnwritten(text, length, 77);
      }
      if (nulls < 4) {
        length = bad;
        EXPECT_EQ(veksTrimC_8u_I(null(0) ? nullptr : bytes, null(1) ? nullptr : &length, ' '),
                  expected);
        expectUnwritten(text, length, bad);
      }
    }
  }
}

}  // namespace
}  // namespace vekch::test
