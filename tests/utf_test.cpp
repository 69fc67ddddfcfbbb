// SPDX-License-Identifier: MIT

// The conversions against a model that follows the rules word by word: every code point, every
// short input, random well-formed and malformed text at every position, length and capacity.

#include "tests/utf_model.h"

namespace vekch::test {
namespace {

constexpr int32_t kPlenty = 4096;

// ---- Texts.

class Texts : public Random {
 public:
  using Random::Random;

  size_t Of(std::initializer_list<size_t> values) { return values.begin()[Below(values.size())]; }

  // A value whose shortest form has so many bytes, often one at the edge of the range.
  uint32_t Value(size_t length) {
    static constexpr size_t kLimits[] = {0, 0x80, 0x800, 0x10000, 0x200000, 0x4000000, 0x80000000};
    const size_t lowest = kLimits[length - 1];
    const size_t highest = kLimits[length] - 1;
    const size_t any = lowest + Below(highest - lowest + 1);
    return static_cast<uint32_t>(Of({lowest, highest, any, any, any, any}));
  }

  // Runs of characters of one length each, up to the longest; the share of faults is in percent.
  Bytes Utf8(size_t size, size_t longest, size_t faults) {
    Bytes text;
    while (text.size() < size) {
      const size_t length = 1 + Below(longest);
      for (size_t run = 1 + Below(Of({1, 2, 9, 40})); run > 0; --run) {
        const bool fault = Below(100) < faults;
        const size_t bytes = fault ? 1 + Below(6) : length;
        // Overlong forms among the faults; others are cut or have a byte changed.
        AppendUtf8(&text, Value(fault ? 1 + Below(bytes) : bytes), static_cast<int>(bytes));
        if (fault && Below(2) == 1) {
          text.pop_back();
        }
        if (fault && !text.empty() && Below(2) == 0) {
          text[text.size() - 1 - Below(std::min<size_t>(text.size(), 2))] = static_cast<uint8_t>(
              Of({0x80, 0xBF, 0xC0, 0xC1, 0xFE, 0xFF, Below(256), Below(256)}));
        }
      }
    }
    return text.substr(0, size);
  }

  // The same of units: of one to three bytes in UTF-8, and of surrogates, which are also the
  // faults.
  Bytes Utf16(size_t units, size_t kinds, size_t faults, bool swap) {
    Bytes text;
    while (text.size() < 2 * units) {
      const size_t kind = 1 + Below(kinds);
      for (size_t run = 1 + Below(Of({1, 2, 9, 40})); run > 0; --run) {
        if (Below(100) < faults) {
          AppendUnit(&text, static_cast<uint32_t>(0xD800 + Below(0x800)), swap);
        } else if (kind < 4) {
          const uint32_t value = Value(kind);
          AppendUnit(&text, value / 0x800 == 0x1B ? 0xFFFD : value, swap);
        } else {
          AppendUnit(&text, static_cast<uint32_t>(0xD800 + Of({0, 0x3FF, Below(0x400)})), swap);
          AppendUnit(&text, static_cast<uint32_t>(0xDC00 + Of({0, 0x3FF, Below(0x400)})), swap);
        }
      }
    }
    return text.substr(0, 2 * units);
  }
};

// ---- Tests.

TEST(UtfTest, WhatTheContractNames) {
  const struct {
    const Function& function;
    Bytes from;
    int32_t swapped, capacity, read;
    Bytes to;
  } rows[] = {
      {kToUnits, "\xC0\x80"_b, 0, 9, 2, "\xC0\0\x80\0"_b},
      {kToUnits, "\xF0\x9F\x98\x80"_b, 0, 9, 4, "\x3D\xD8\x00\xDE"_b},
      {kToUnits, "\xF0\x9F\x98\x80"_b, 1, 9, 4, "\x00\xDE\x3D\xD8"_b},
      {kToUnits, "\xF0\x9F\x98\x80\x41"_b, 0, 1, 4, "\x3D\xD8\x00\xDE"_b},  // one unit over
      {kToUnits, "A"_b, INT32_MIN, 9, 1, "\0A"_b},
      {kToUnits, "\xED\xA0\xBD"_b, 0, 9, 3, "\x3D\xD8"_b},
      {kToUnits, "\xF7\xBF\xBF\xBF"_b, 0, 9, 4, "\xBF\xDB\xFF\xDF"_b},  // 0x1FFFFF
      {kToUnits, "\xFD\xBF\xBF\xBF\xBF\xBF"_b, 0, 9, 6, "\xBF\xDB\xFF\xDF"_b},
      {kToUnits, "\xE2\x82"_b, 0, 9, 2, "\xE2\0\x82\0"_b},
      {kToUnits, "\xFE\x80"_b, 1, 9, 2, "\0\xFE\0\x80"_b},
      {kToBytes, "\x3D\xD8\x41\0"_b, 0, 9, 2, "\xED\xA0\xBD\x41"_b},
      {kToBytes, "\x00\xDE"_b, 0, 9, 1, "\xED\xB8\x80"_b},
      {kToBytes, "a\0\x3D\xD8"_b, 0, 3, 1, "a"_b},
      {kToBytes, "\x3D\xD8\x3D\xD8\x00\xDE"_b, 0, 9, 3, "\xED\xA0\xBD\xF0\x9F\x98\x80"_b},
      {kToBytes, "\xD8\x3D\xDE\x00"_b, 1, 9, 2, "\xF0\x9F\x98\x80"_b},
      {kToBytes, "\x3D\xD8\x00\xDE"_b, 0, 3, 0, ""_b},
      {kToBytes, "\xAC\x20"_b, 0, 2, 0, ""_b},
  };
  Sweep sweep;
  for (const auto& row : rows) {
    const Input in = {row.from, {}, row.swapped, row.capacity};
    const Output expected = row.function.model(in);
    EXPECT_EQ(expected.stored, row.to);
    EXPECT_EQ(expected.number / 100000, row.read);
    sweep.Expect(row.function, in);
  }
}

TEST(UtfTest, WithoutTextOrRoomNothingIsWritten) {
  uint16_t units[2] = {'a', 'b'};
  uint8_t bytes[2] = {'c', 'd'};
  for (const auto& [length, capacity] :
       {std::make_pair(0, 2), {2, 0}, {-1, 2}, {2, -1}, {INT32_MIN, 1}, {1, INT32_MIN}}) {
    for (const bool toUnits : {true, false}) {
      int32_t read = length;
      int32_t written = capacity;
      EXPECT_EQ(toUnits ? veksConvertUTF_8u16u(bytes, &read, units, &written, 0)
                        : veksConvertUTF_16u8u(units, &read, bytes, &written, 0),
                StatusNoError);
      EXPECT_TRUE(read == 0 && written == 0) << length << ", " << capacity;
      EXPECT_TRUE(units[0] == 'a' && bytes[0] == 'c') << length << ", " << capacity;
    }
  }
}

// Alone, and as one long text of which every step sees some.
TEST(UtfTest, EveryCodePoint) {
  Sweep sweep(3 * kPlenty);
  Bytes bytes;
  Bytes units[2];  // in their order and swapped
  for (uint32_t value = 0; value <= 0x10FFFF; ++value) {
    Bytes character;
    AppendUtf8(&character, value, ShortestLength(value));
    bytes += character;
    for (const int32_t swap : {0, 1}) {
      Bytes pair;
      AppendUnit(&pair, value > 0xFFFF ? 0xD7C0 + (value >> 10) : value, swap != 0);
      if (value > 0xFFFF) {
        AppendUnit(&pair, 0xDC00 + value % 0x400, swap != 0);
      }
      units[swap] += pair;
      // Alone they go through steps that don't look at more of the value than its kind.
      if (value <= 0xFFFF || value % 0x3FD == 0) {
        sweep.Expect(kToUnits, {character, {}, swap, 2});
        sweep.Expect(kToBytes, {pair, {}, swap, 4});
      }
    }
    if (bytes.size() > 1500 || value == 0x10FFFF) {
      for (const int32_t swap : {0, 1}) {
        sweep.Expect(kToUnits, {bytes, {}, swap, kPlenty});
        sweep.Expect(kToBytes, {units[swap], {}, swap, kPlenty});
        units[swap].clear();
      }
      bytes.clear();
    }
  }
}

// All sequences of four bytes at the edges of the ranges, where the steps see them.
TEST(UtfTest, EdgesOfTheByteRangesInsideLongText) {
  Sweep sweep;
  const Bytes edges =
      "\x00\x7F\x80\x8F\x90\x9F\xA0\xBF\xC0\xC1\xC2\xDF\xE0\xE1\xED\xEF\xF0\xF1\xF4\xF7\xF8\xFB"
      "\xFC\xFD\xFE\xFF"_b;
  const Bytes fillers[] = {"a"_b, "\xD0\x96"_b, "\xE3\x81\x82"_b, "\xF0\x9F\x98\x80"_b,
                           "\xC3\xA9 x\xE2\x80\xA6"_b};
  const size_t count = edges.size();
  for (size_t i = 0; i < count * count * count * count; ++i) {
    const auto fill = [&fillers, i](Bytes* text, size_t size) {
      while (text->size() < size) {
        *text += fillers[i % 5];
      }
    };
    Bytes text;
    fill(&text, i % 19);
    for (size_t j = 1; j < count * count * count * count; j *= count) {
      text.push_back(edges[i / j % count]);
    }
    fill(&text, 75);
    sweep.Expect(kToUnits, {text, {}, static_cast<int32_t>(i / 5 % 2), 80});
  }
}

TEST(UtfTest, RandomTextAtEveryLengthPositionAndCapacity) {
  Texts texts(1);
  Sweep sweep(3 * kPlenty);
  for (size_t length = 0; length <= 260; ++length) {
    for (size_t round = 0; round < 192; ++round) {
      const size_t faults = texts.Of({0, 0, 1, 5, 30});
      const auto swap = static_cast<int32_t>(round / 6 % 2);
      const auto capacity =
          static_cast<int32_t>(round < 64 ? kPlenty : texts.Below(2 * length + 1));
      sweep.Expect(kToUnits, {texts.Utf8(length, 1 + round % 6, faults), {}, swap, capacity},
                   round * 5 + length);
      sweep.Expect(kToBytes,
                   {texts.Utf16(length, 1 + round % 4, faults, swap != 0), {}, swap, capacity},
                   round * 5 + length);
    }
  }
}

}  // namespace
}  // namespace vekch::test
