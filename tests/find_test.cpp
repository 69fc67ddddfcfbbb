// SPDX-License-Identifier: MIT

// The search family against naive models: every length and misalignment, small alphabets, needles
// made to mislead, sets of every size and shape.

#include <array>

#include "tests/byte_string_models.h"

namespace vekch::test {
namespace {

class FindTest : public testing::Test {
 protected:
  template <size_t kCount>
  void Expect(const Function (&functions)[kCount], const Bytes& text, const Bytes& other,
              size_t position = 0) {
    for (const Function& function : functions) {
      sweep_.Expect(function, {text, other}, position % 512);
    }
  }

  Sweep sweep_{10000};
};

// The byte at no, one or two positions.
TEST_F(FindTest, ByteAtEveryPositionLengthAndMisalignment) {
  for (size_t length = 0; length <= kLongest; ++length) {
    Bytes text(length, 0x43);
    for (size_t position = 0; position < 512; position += 15) {
      Expect(kFindsOfByte, text, "\xC3"_b, position);
    }
    for (size_t where = 0; where < length; where += length < 160 ? 1 : 3) {
      const size_t second = (where * 5 + 3) % length;
      text[where] = text[second] = 0xC3;
      for (size_t position = where % 31; position < 512; position += 31) {
        Expect(kFindsOfByte, text, "\xC3"_b, position);
      }
      text[where] = text[second] = 0x43;
    }
  }
}

TEST_F(FindTest, EveryByteValue) {
  Bytes every;
  for (int value = 0; value < 256; ++value) {
    every.push_back(static_cast<uint8_t>(value));
  }
  for (const uint8_t value : every) {
    Expect(kFindsOfByte, every, Bytes(1, value));
  }
}

// Texts over two letters are full of false candidates and of overlapping occurrences.
TEST_F(FindTest, NeedlesOverSmallAlphabets) {
  Random random(1);
  for (size_t round = 0; round < 60000; ++round) {
    const size_t letters = 2 + random.Below(3);
    const size_t needleLength = random.Below(round % 4 == 0 ? 40 : 7);
    Expect(kFindsOfNeedle, random.Text(random.Below(kLongest + 1), letters, 0xFE),
           random.Text(needleLength, letters, 0xFE), round);
  }
}

TEST_F(FindTest, NeedleAtEveryPosition) {
  for (const size_t n : {1U, 2U, 3U, 4U, 5U, 8U, 15U, 16U, 17U, 33U, 64U, 65U}) {
    Bytes needle;
    for (size_t i = 0; i < n; ++i) {
      needle.push_back(static_cast<uint8_t>("zebra"_b[i % 5] + i / 5));
    }
    for (size_t length = n; length <= kLongest; length += length < 100 ? 1 : 9) {
      for (size_t at = 0; at + n <= length; ++at) {
        Bytes text(length, needle[0]);
        std::copy(needle.begin(), needle.end(), text.begin() + static_cast<ptrdiff_t>(at));
        Expect(kFindsOfNeedle, text, needle, at % 2 * 256);
        text[at + n / 2] ^= 0x80;  // nearly there
        Expect(kFindsOfNeedle, text, needle, at % 2 * 256);
      }
    }
  }
}

Bytes Repeat(const Bytes& unit, size_t count) {
  Bytes text;
  for (size_t i = 0; i < count; ++i) {
    text += unit;
  }
  return text;
}

// Long texts take the choice of needle bytes and, with these needles, the linear method: the
// periods and near misses are the hard cases of a string matcher. A search that is misled gives up
// and leaves the rest to another one, in the end to the two-way method: no position may get lost in
// between, wherever that happens.
TEST_F(FindTest, NeedlesMadeToMislead) {
  const Bytes a = "a"_b;
  const Bytes ab = "ab"_b;
  const struct {
    Bytes unit;    // of the text
    Bytes needle;  // that it misleads
  } cases[] = {
      {ab, "abb"_b},
      {ab, "abababbbababa"_b},
      {ab, Repeat(ab, 5) + "bb"_b + Repeat(ab, 4) + a},
      {ab, Repeat(ab, 20)},
      {ab, Repeat(ab, 20) + "b"_b},
      {a, Repeat(a, 15) + "b"_b + Repeat(a, 16)},
      {a, "b"_b + Repeat(a, 31)},
      {a, Repeat(a, 200)},
      {"abc"_b, Repeat("abc"_b, 6) + "aba"_b},
      {"aab"_b, Repeat("aab"_b, 7) + "aaab"_b},
      {"abcab"_b, Repeat("abcab"_b, 30) + "c"_b + Repeat("abcab"_b, 30)},
      {"abaababaabaababaababaabaababaabaab"_b, "abaababaabaababaababa"_b},
      {"ACGTTGCATGTCGCATGATGCATGAGAGCT"_b, "GCATGAGAGCA"_b},
      {Repeat(a, 30) + "b"_b, Repeat(a, 31) + "b"_b},
      {Repeat(ab, 40) + "b"_b, Repeat(ab, 30) + "aab"_b + Repeat(ab, 30)},
  };
  for (const auto& [unit, needle] : cases) {
    for (const size_t length : {100U, 700U, 1500U}) {
      const Bytes text = Repeat(unit, length / unit.size() + 1);
      for (size_t at = 0; at < text.size(); ++at) {
        Expect(kFindsOfNeedle, Bytes(text).insert(at, needle), needle, at);
      }
    }
    // Every needle, not at all in a long text, and once: early, late or at an end.
    const Bytes text = Repeat(unit, 6000 / unit.size());
    for (const auto& other : cases) {
      Expect(kFindsOfNeedle, text, other.needle);
      Expect(kFindsOfNeedle, text.substr(0, other.needle.size() + 40), other.needle);
      for (const size_t at : {size_t{0}, size_t{1}, size_t{2500}, size_t{5001}, text.size()}) {
        Expect(kFindsOfNeedle, Bytes(text).insert(at, other.needle), other.needle);
      }
    }
  }
}

TEST_F(FindTest, RandomFactorsOfRepetitiveText) {
  Random random(2);
  for (int round = 0; round < 400; ++round) {
    const Bytes unit = random.Text(1 + random.Below(12), 2, 'a');
    Bytes text;
    while (text.size() < 8000) {
      text += unit + random.Text(random.Below(50) == 0 ? 1 : 0, 2, 'a');
    }
    Bytes needle = text.substr(random.Below(7000), 2 + random.Below(600));
    Expect(kFindsOfNeedle, text, needle);
    needle[random.Below(needle.size())] ^= 3;
    Expect(kFindsOfNeedle, text, needle);
  }
}

// Sets of every size, as scattered members and as one to five ranges, with repetitions; texts on
// which the set is hit nowhere, once, or often. In long ones many bytes lie between members.
TEST_F(FindTest, SetsOfEverySizeAndShape) {
  Random random(3);
  for (size_t round = 0; round < 40000; ++round) {
    Bytes set = random.Text(round % 2 == 0 ? random.Below(round % 8 == 0 ? 300 : 20) : 0);
    for (size_t ranges = round % 2 == 0 ? 0 : 1 + random.Below(5); ranges > 0; --ranges) {
      const size_t lowest = random.Below(256);
      const size_t end = std::min(lowest + 1 + random.Below(64), size_t{256});
      for (size_t value = lowest; value < end; ++value) {
        set.insert(random.Below(set.size() + 1), 1, static_cast<uint8_t>(value));
      }
    }
    std::array<bool, 256> members = {};
    for (const uint8_t byte : set) {
      members[byte] = true;
    }
    const size_t longest = round % 32 < 2 ? 2000 : round % 3 == 0 ? kLongest : 40;
    Bytes text = random.Text(random.Below(longest + 1), round % 64 < 2 ? 256 : 128);
    for (uint8_t& byte : text) {
      for (int tries = 0; tries < 256 && members[byte]; ++tries) {
        ++byte;
      }
    }
    for (size_t hits = random.Below(3); hits > 0 && !text.empty() && !set.empty(); --hits) {
      text[random.Below(text.size())] = set[random.Below(set.size())];
    }
    Expect(kFindsOfSet, text, set, round);
  }
}

TEST_F(FindTest, LastByteBetweenMembersOfARange) {
  for (const size_t length : {1U, 300U, 319U, 400U}) {
    Expect(kFindsOfSet, "B"_b + Bytes(length, '_') + "B"_b, "ACEGI"_b);
  }
}

// Every range of byte values as a set, the set of all bytes included: its ends are hit, the values
// next to it are not.
TEST_F(FindTest, EveryRangeAsASet) {
  for (int lowest = 0; lowest < 256; ++lowest) {
    Bytes set(16, static_cast<uint8_t>(lowest));
    for (int highest = lowest; highest < 256; ++highest) {
      set.push_back(static_cast<uint8_t>(highest));
      Bytes text(highest % 4 == 0 ? 200 : 257, 0);
      std::fill(text.begin(), text.end(), highest % 2 == 0 ? lowest - 1 : highest + 1);
      text[100] = static_cast<uint8_t>(lowest);
      text[101] = static_cast<uint8_t>(highest);
      Expect(kFindsOfSet, text, set);
    }
  }
}

// ---- Zero-terminated strings

class FindZeroTerminated : public testing::Test, protected TerminatedFinds {};

TEST_F(FindZeroTerminated, ByteInEveryLengthAndPosition) {
  for (size_t length = 0; length <= kLongest; ++length) {
    const Bytes text(length, 0xE1);
    for (size_t position = length % 3; position < TerminatedString::kPositions; position += 3) {
      ExpectByte(text, 0, position);
      ExpectByte(text, 'k', position);
    }
    for (size_t where = 0; where < length; where += 1 + where % 5) {
      Bytes hit = text;
      hit[where] = hit[length - 1] = 'k';
      ExpectByte(hit, 'k', (where * 11 + length) % TerminatedString::kPositions);
    }
  }
}

TEST_F(FindZeroTerminated, NeedleInEveryLengthAndPosition) {
  Random random(4);
  for (size_t round = 0; round < 20000; ++round) {
    const size_t letters = 2 + random.Below(2);
    const Bytes needle = random.Text(random.Below(round % 8 == 0 ? 90 : 6), letters, 'a');
    Bytes text = random.Text(random.Below(kLongest + 1), letters, round % 3 == 0 ? 'x' : 'a');
    if (round % 3 == 0 && needle.size() <= text.size()) {
      text.replace(random.Below(text.size() - needle.size() + 1), needle.size(), needle);
    }
    ExpectNeedle(text, needle, round % TerminatedString::kPositions);
  }
}

// The pieces in which a long string is searched: the needle at every position around where one
// could end, in whole or but for a byte, and cut off by the terminator.
TEST_F(FindZeroTerminated, NeedleAcrossPiecesOfALongString) {
  Random random(5);
  for (const size_t n : {1U, 2U, 7U, 64U, 2500U, 5000U}) {
    const Bytes needle = random.Text(n - 1, 26, 'a') + "!"_b;
    for (size_t from = 64; from <= 65536; from = from < 2048 ? 2 * from : from + 4095) {
      for (const size_t after : {size_t{0}, size_t{1}, n / 2, n - 1, n, n + 40}) {
        const size_t at = from < after ? 0 : from - after;
        Bytes text = random.Text(at, 26, 'a') + needle + random.Text(after % 3 * 20, 26, 'a');
        const size_t position = (from / 64 + after) * 7 % TerminatedString::kPositions;
        ExpectNeedle(text, needle, position);
        ExpectNeedle(text.substr(0, at + n - 1), needle, position);
        text[at + n / 2] ^= 0x80;
        ExpectNeedle(text, needle, position);
      }
    }
  }
  for (size_t position = 0; position < TerminatedString::kPositions; ++position) {
    ExpectNeedle(Bytes(60, 'a'), Bytes(38, 'a') + "b"_b, position);  // takes long, and is over
  }
  // Every position at which the first piece can end.
  for (size_t at = 6000; at < 6400; ++at) {
    ExpectNeedle(Bytes(at, 'a') + "needle"_b + Bytes(2000, 'a'), "needle"_b,
                 TerminatedString::kGroup);
  }
}

}  // namespace
}  // namespace vekch::test
