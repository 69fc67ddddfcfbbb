// The conversions against a model that follows the rules word by word: every code point, every
// short input, random well-formed and malformed text at every place, length and capacity.

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "tests/guarded_buffer.h"
#include "vekch/vekch.h"

namespace vekch::test {
namespace {

using Bytes = std::vector<uint8_t>;
using Units = std::vector<uint16_t>;

constexpr int32_t kPlenty = 4096;
constexpr uint8_t kUntouched = 0xA7;

uint16_t Swapped(uint32_t unit) { return static_cast<uint16_t>((unit >> 8) | (unit << 8)); }

// ---- The model.

template <class To>
struct Result {
  int32_t read = 0;
  std::vector<To> written;
};

int LeadingOnes(uint8_t byte) {
  int ones = 0;
  while (ones < 8 && (byte << ones & 0x80) != 0) {
    ++ones;
  }
  return ones;
}

int ShortestLength(uint64_t value) {
  int length = 1;
  for (const uint64_t limit : {0x80ULL, 0x800ULL, 0x10000ULL, 0x200000ULL, 0x4000000ULL}) {
    length += value >= limit ? 1 : 0;
  }
  return length;
}

// The value and the length of the sequence at p, or the first byte and 1.
std::pair<uint32_t, int32_t> ModelCharacter(const uint8_t* p, int32_t left) {
  const std::pair<uint32_t, int32_t> firstAlone(*p, 1);
  const int length = LeadingOnes(*p);
  if (length < 2 || length > 6 || length > left) {
    return firstAlone;
  }
  uint32_t value = *p & ((1U << (7 - length)) - 1);
  for (int i = 1; i < length; ++i) {
    if (p[i] / 64 != 2) {
      return firstAlone;
    }
    value = value * 64 + p[i] % 64;
  }
  return ShortestLength(value) == length ? std::make_pair(value, length) : firstAlone;
}

void ModelConvert(const Bytes& from, int32_t capacity, bool swap, Result<uint16_t>* result) {
  const auto length = static_cast<int32_t>(from.size());
  int32_t room = capacity;
  while (result->read < length && room > 0) {
    const auto [value, taken] =
        ModelCharacter(&from[static_cast<size_t>(result->read)], length - result->read);
    result->read += taken;
    if (value > 0xFFFF) {
      const auto high = static_cast<uint16_t>(0xD800 + (((value - 0x10000) >> 10) & 0x3FF));
      const auto low = static_cast<uint16_t>(0xDC00 + (value & 0x3FF));
      result->written.push_back(swap ? low : high);
      result->written.push_back(swap ? high : low);
      room -= 2;
    } else {
      result->written.push_back(swap ? Swapped(value) : static_cast<uint16_t>(value));
      room -= 1;
    }
  }
}

void AppendUtf8(Bytes* text, uint32_t value, int length = 0) {
  length = length != 0 ? length : ShortestLength(value);
  const uint32_t mark = length == 1 ? 0 : 0xFF00U >> length;
  for (int i = length - 1; i >= 0; --i) {
    const uint32_t bits = value >> (6 * i);
    text->push_back(static_cast<uint8_t>(i == length - 1 ? mark | bits : 0x80 | (bits & 0x3F)));
  }
}

void ModelConvert(const Units& from, int32_t capacity, bool swap, Result<uint8_t>* result) {
  const auto unit = [&](size_t i) { return swap ? Swapped(from[i]) : from[i]; };
  for (size_t i = 0; i < from.size(); i = static_cast<size_t>(result->read)) {
    uint32_t value = unit(i);
    int32_t taken = 1;
    if (value / 0x400 == 0x36 && i + 1 < from.size() && unit(i + 1) / 0x400 == 0x37) {
      value = 0x10000 + value % 0x400 * 0x400 + unit(i + 1) % 0x400;
      taken = 2;
    }
    Bytes character;
    AppendUtf8(&character, value);
    if (result->written.size() + character.size() > static_cast<size_t>(capacity)) {
      return;
    }
    result->written.insert(result->written.end(), character.begin(), character.end());
    result->read += taken;
  }
}

vekStatus Convert(const uint8_t* from, int32_t* length, uint16_t* to, int32_t* room, int32_t swap) {
  return veksConvertUTF_8u16u(from, length, to, room, swap);
}

vekStatus Convert(const uint16_t* from, int32_t* length, uint8_t* to, int32_t* room, int32_t swap) {
  return veksConvertUTF_16u8u(from, length, to, room, swap);
}

// ---- Source and destination at chosen distances from pages that can't be touched.

template <class From, class To>
class Bench {
 public:
  void Expect(const std::vector<From>& text, int32_t capacity, int32_t swap, size_t sourceShift = 0,
              size_t destinationShift = 0) {
    Result<To> expected;
    ModelConvert(text, capacity, swap != 0, &expected);
    // The unit of overrun has room exactly where the model needs it.
    const size_t room = std::max(static_cast<size_t>(capacity), expected.written.size());
    uint8_t* from = source_.AtEnd(text.size() * sizeof(From), sourceShift);
    uint8_t* to = destination_.AtEnd(room * sizeof(To), destinationShift);
    if (!text.empty()) {
      std::memcpy(from, text.data(), text.size() * sizeof(From));
    }
    std::memset(to, kUntouched, room * sizeof(To) + destinationShift);
    auto read = static_cast<int32_t>(text.size());
    int32_t written = capacity;
    ASSERT_EQ(Convert(reinterpret_cast<const From*>(from), &read, reinterpret_cast<To*>(to),
                      &written, swap),
              StatusNoError);
    ASSERT_EQ(read, expected.read) << Describe(text, capacity, swap);
    ASSERT_EQ(written, static_cast<int32_t>(expected.written.size()))
        << Describe(text, capacity, swap);
    const size_t size = expected.written.size() * sizeof(To);
    ASSERT_TRUE(size == 0 || std::memcmp(to, expected.written.data(), size) == 0)
        << Describe(text, capacity, swap);
    for (size_t i = size; i < room * sizeof(To) + destinationShift; ++i) {
      ASSERT_EQ(to[i], kUntouched) << "at " << i << ' ' << Describe(text, capacity, swap);
    }
  }

 private:
  static std::string Describe(const std::vector<From>& text, int32_t capacity, int32_t swap) {
    std::ostringstream line;
    line << "swapped " << swap << ", capacity " << capacity << ", source" << std::hex;
    for (const From value : text) {
      line << ' ' << +value;
    }
    return line.str();
  }

  GuardedBuffer source_{kPlenty * 4};
  GuardedBuffer destination_{kPlenty * 8};
};

using ToUnits = Bench<uint8_t, uint16_t>;
using ToBytes = Bench<uint16_t, uint8_t>;

// ---- Texts.

class Texts {
 public:
  explicit Texts(unsigned seed) : random_(seed) {}

  uint32_t Below(uint32_t limit) { return static_cast<uint32_t>(random_()) % limit; }

  uint32_t Of(std::initializer_list<uint32_t> values) {
    return values.begin()[Below(static_cast<uint32_t>(values.size()))];
  }

  // A value whose shortest form has so many bytes, often one at the edge of the range.
  uint32_t Value(int length) {
    static constexpr uint32_t kLimits[7] = {0,        0x80,      0x800,     0x10000,
                                            0x200000, 0x4000000, 0x80000000};
    const uint32_t lowest = length == 1 ? 0 : kLimits[length - 1];
    const uint32_t highest = kLimits[length] - 1;
    const uint32_t any = lowest + Below(highest - lowest + 1);
    return Of({lowest, highest, any, any, any, any});
  }

  // Runs of characters of one length each, up to the longest; the share of faults is in percent.
  Bytes Utf8(size_t size, int longest, uint32_t faults) {
    Bytes text;
    while (text.size() < size) {
      const int length = 1 + static_cast<int>(Below(static_cast<uint32_t>(longest)));
      for (uint32_t run = 1 + Below(Of({1, 2, 9, 40})); run > 0; --run) {
        if (Below(100) < faults) {
          AppendFault(&text);
        } else {
          AppendUtf8(&text, Value(length));
        }
      }
    }
    text.resize(size);
    return text;
  }

  Units Utf16(size_t size, uint32_t kinds, uint32_t faults, bool swap) {
    Units text;
    while (text.size() < size) {
      const uint32_t kind = Below(kinds);
      for (uint32_t run = 1 + Below(Of({1, 2, 9, 40})); run > 0; --run) {
        if (Below(100) < faults) {
          text.push_back(static_cast<uint16_t>(0xD800 + Below(0x800)));
        } else if (kind < 3) {
          const uint32_t value = Value(static_cast<int>(kind) + 1);
          text.push_back(static_cast<uint16_t>(value / 0x800 == 0x1B ? 0xFFFD : value));
        } else {
          text.push_back(static_cast<uint16_t>(0xD800 + Of({0, 0x3FF, Below(0x400)})));
          text.push_back(static_cast<uint16_t>(0xDC00 + Of({0, 0x3FF, Below(0x400)})));
        }
      }
    }
    text.resize(size);
    for (uint16_t& unit : text) {
      unit = swap ? Swapped(unit) : unit;
    }
    return text;
  }

 private:
  void AppendFault(Bytes* text) {
    switch (Below(4)) {
      case 0:  // any byte
        text->push_back(static_cast<uint8_t>(Of({0x80, 0xBF, 0xC0, 0xC1, 0xFE, 0xFF, Below(256)})));
        break;
      case 1: {  // an overlong form
        const int length = 2 + static_cast<int>(Below(5));
        AppendUtf8(text, Value(1 + static_cast<int>(Below(static_cast<uint32_t>(length) - 1))),
                   length);
        break;
      }
      case 2:  // a form of any length, cut
        AppendUtf8(text, Value(2 + static_cast<int>(Below(5))));
        text->pop_back();
        break;
      default:  // a form of any length, one byte changed
        AppendUtf8(text, Value(2 + static_cast<int>(Below(5))));
        *(text->end() - 1 - static_cast<ptrdiff_t>(Below(2))) = static_cast<uint8_t>(Below(256));
    }
  }

  std::mt19937 random_;
};

// ---- Tests.

TEST(UtfTest, WhatTheContractNames) {
  const struct {
    Bytes from;
    int32_t swap;
    int32_t capacity;
    int32_t read;
    Units to;
  } toUnits[] = {
      {{0xC0, 0x80}, 0, 9, 2, {0xC0, 0x80}},
      {{0xF0, 0x9F, 0x98, 0x80}, 0, 9, 4, {0xD83D, 0xDE00}},
      {{0xF0, 0x9F, 0x98, 0x80}, 1, 9, 4, {0xDE00, 0xD83D}},
      {{0xF0, 0x9F, 0x98, 0x80, 'A'}, 0, 1, 4, {0xD83D, 0xDE00}},  // one unit over
      {{'A'}, INT32_MIN, 9, 1, {0x4100}},
      {{0xED, 0xA0, 0xBD}, 0, 9, 3, {0xD83D}},
      {{0xF7, 0xBF, 0xBF, 0xBF}, 0, 9, 4, {0xDBBF, 0xDFFF}},  // 0x1FFFFF
      {{0xFD, 0xBF, 0xBF, 0xBF, 0xBF, 0xBF}, 0, 9, 6, {0xDBBF, 0xDFFF}},
      {{0xE2, 0x82}, 0, 9, 2, {0xE2, 0x82}},
      {{0xFE, 0x80}, 1, 9, 2, {0xFE00, 0x8000}},
  };
  for (const auto& row : toUnits) {
    Units to(row.to.size() + 8);
    auto read = static_cast<int32_t>(row.from.size());
    int32_t written = row.capacity;
    EXPECT_EQ(veksConvertUTF_8u16u(row.from.data(), &read, to.data(), &written, row.swap), 0);
    EXPECT_EQ(read, row.read);
    to.resize(static_cast<size_t>(written));
    EXPECT_EQ(to, row.to);
  }
  const struct {
    Units from;
    int32_t swap;
    int32_t capacity;
    int32_t read;
    Bytes to;
  } toBytes[] = {
      {{0xD83D, 0x41}, 0, 9, 2, {0xED, 0xA0, 0xBD, 0x41}},
      {{0xDE00}, 0, 9, 1, {0xED, 0xB8, 0x80}},
      {{0xD83D}, 0, 9, 1, {0xED, 0xA0, 0xBD}},
      {{'a', 0xD83D}, 0, 3, 1, {'a'}},
      {{0xD83D, 0xD83D, 0xDE00}, 0, 9, 3, {0xED, 0xA0, 0xBD, 0xF0, 0x9F, 0x98, 0x80}},
      {{0x3DD8, 0x00DE}, 1, 9, 2, {0xF0, 0x9F, 0x98, 0x80}},
      {{0xD83D, 0xDE00}, 0, 3, 0, {}},
      {{0x20AC}, 0, 2, 0, {}},
  };
  for (const auto& row : toBytes) {
    Bytes to(16);
    auto read = static_cast<int32_t>(row.from.size());
    int32_t written = row.capacity;
    EXPECT_EQ(veksConvertUTF_16u8u(row.from.data(), &read, to.data(), &written, row.swap), 0);
    EXPECT_EQ(read, row.read);
    to.resize(static_cast<size_t>(written));
    EXPECT_EQ(to, row.to);
  }
}

TEST(UtfTest, NullPointersAndEmptyTexts) {
  const uint8_t bytes[2] = {'a', 'b'};
  const uint16_t units[2] = {'a', 'b'};
  for (int nulls = 0; nulls < 16; ++nulls) {
    for (const int32_t length : {INT32_MIN, -1, 0, 2}) {
      for (const int32_t capacity : {INT32_MIN, -1, 0, 2}) {
        const vekStatus status = nulls != 0 ? StatusNullPointer : StatusNoError;
        const bool empty = length <= 0 || capacity <= 0;
        const auto check = [&](const auto* from, auto* to) {
          const auto before = to[0];
          int32_t read = length;
          int32_t written = capacity;
          EXPECT_EQ(
              Convert((nulls & 1) != 0 ? nullptr : from, (nulls & 2) != 0 ? nullptr : &read,
                      (nulls & 4) != 0 ? nullptr : to, (nulls & 8) != 0 ? nullptr : &written, 0),
              status);
          EXPECT_EQ(read, nulls != 0 ? length : empty ? 0 : length);
          EXPECT_EQ(written, nulls != 0 ? capacity : empty ? 0 : capacity);
          EXPECT_EQ(to[0] == before, nulls != 0 || empty);
        };
        uint16_t toUnits[2] = {};
        uint8_t toBytes[2] = {};
        check(bytes, toUnits);
        check(units, toBytes);
      }
    }
  }
}

// Alone, and as one long text of which every step sees some.
TEST(UtfTest, EveryCodePoint) {
  ToUnits toUnits;
  ToBytes toBytes;
  Bytes bytes;
  Units units;
  for (uint32_t value = 0; value <= 0x10FFFF; ++value) {
    Bytes character;
    AppendUtf8(&character, value);
    Units pair = {static_cast<uint16_t>(value)};
    if (value > 0xFFFF) {
      pair = {static_cast<uint16_t>(0xD7C0 + (value >> 10)),
              static_cast<uint16_t>(0xDC00 + value % 0x400)};
    }
    const Units swappedPair = {Swapped(pair.front()), Swapped(pair.back())};
    toUnits.Expect(character, 2, 0);
    toUnits.Expect(character, 2, 1);
    toBytes.Expect(pair, 4, 0);
    toBytes.Expect(value > 0xFFFF ? swappedPair : Units{swappedPair[0]}, 4, 1);
    bytes.insert(bytes.end(), character.begin(), character.end());
    units.insert(units.end(), pair.begin(), pair.end());
    if (units.size() > 500 || value == 0x10FFFF) {
      toUnits.Expect(bytes, kPlenty, 0);
      toUnits.Expect(bytes, kPlenty, 1);
      toBytes.Expect(units, kPlenty, 0);
      for (uint16_t& unit : units) {
        unit = Swapped(unit);
      }
      toBytes.Expect(units, kPlenty, 1);
      bytes.clear();
      units.clear();
    }
  }
}

// Compared with the model's characters directly: there are 16 million of them.
TEST(UtfTest, EveryInputOfOneTwoAndThreeBytes) {
  for (uint32_t input = 0; input < 1U << 24; ++input) {
    const uint8_t bytes[3] = {static_cast<uint8_t>(input), static_cast<uint8_t>(input >> 8),
                              static_cast<uint8_t>(input >> 16)};
    for (int32_t length = 3; length == 3 || (length > 0 && input >> (8 * length) == 0); --length) {
      uint16_t units[4] = {};
      int32_t read = length;
      int32_t written = 3;
      veksConvertUTF_8u16u(bytes, &read, units, &written, 0);
      int32_t count = 0;
      for (int32_t i = 0; i < length; ++count) {
        const auto [value, taken] = ModelCharacter(bytes + i, length - i);
        ASSERT_EQ(units[count], value) << std::hex << input;
        i += taken;
      }
      ASSERT_TRUE(read == length && written == count) << std::hex << input;
    }
  }
}

// All sequences of four bytes at the edges of the ranges, where the steps see them.
TEST(UtfTest, EdgesOfTheByteRangesInsideLongText) {
  ToUnits bench;
  const Bytes edges = {0x00, 0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF, 0xC0,
                       0xC1, 0xC2, 0xDF, 0xE0, 0xE1, 0xED, 0xEF, 0xF0, 0xF1,
                       0xF4, 0xF7, 0xF8, 0xFB, 0xFC, 0xFD, 0xFE, 0xFF};
  const char* fillers[] = {"a", "\xD0\x96", "\xE3\x81\x82", "\xF0\x9F\x98\x80",
                           "\xC3\xA9 x\xE2\x80\xA6"};
  const size_t count = edges.size();
  for (size_t i = 0; i < count * count * count * count; ++i) {
    const std::string filler = fillers[i % 5];
    Bytes text;
    while (text.size() < i % 19) {
      text.insert(text.end(), filler.begin(), filler.end());
    }
    for (size_t j = 1; j < count * count * count * count; j *= count) {
      text.push_back(edges[i / j % count]);
    }
    while (text.size() < 75) {
      text.insert(text.end(), filler.begin(), filler.end());
    }
    bench.Expect(text, 80, static_cast<int32_t>(i / 5 % 2));
  }
}

TEST(UtfTest, RandomTextAtEveryLengthAndPlace) {
  Texts texts(1);
  ToUnits toUnits;
  ToBytes toBytes;
  for (size_t length = 0; length <= 260; ++length) {
    for (size_t shift = 0; shift < 64; ++shift) {
      const int longest = 1 + static_cast<int>(shift % 6);
      const uint32_t faults = texts.Of({0, 0, 1, 5, 30});
      const auto swap = static_cast<int32_t>(shift / 6 % 2);
      toUnits.Expect(texts.Utf8(length, longest, faults), kPlenty, swap, shift % 16, shift / 4);
      toBytes.Expect(texts.Utf16(length, 1 + static_cast<uint32_t>(shift % 4), faults, swap != 0),
                     kPlenty, swap, shift / 4, shift % 16);
    }
  }
}

TEST(UtfTest, EveryCapacity) {
  Texts texts(2);
  ToUnits toUnits;
  ToBytes toBytes;
  for (int round = 0; round < 120; ++round) {
    const uint32_t faults = texts.Of({0, 0, 1, 10});
    const int32_t swap = round % 2;
    const Bytes bytes = texts.Utf8(150, 1 + round % 6, faults);
    const Units units = texts.Utf16(90, 1 + static_cast<uint32_t>(round % 4), faults, swap != 0);
    for (int32_t capacity = 0; capacity <= 280; ++capacity) {
      toUnits.Expect(bytes, capacity, swap);
      toBytes.Expect(units, capacity, swap);
    }
  }
}

}  // namespace
}  // namespace vekch::test
