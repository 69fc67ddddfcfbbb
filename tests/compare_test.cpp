// SPDX-License-Identifier: MIT

// The comparisons against a naive model: every length and misalignment, every difference.

#include "tests/byte_string_models.h"

namespace vekch::test {
namespace {

// Equal strings but for a pair of bytes at one position, and perhaps the same pair the other way
// round after it, which must not be the difference that is reported.
Input Pair(size_t length, size_t where, uint8_t inText, uint8_t inOther, size_t second = kLongest) {
  Input in = {Bytes(length, 0)};
  for (size_t i = 0; i < length; ++i) {
    in.text[i] = static_cast<uint8_t>(i * 7 + 60);
  }
  in.other = in.text;
  if (second < length) {
    in.text[second] = inOther;
    in.other[second] = inText;
  }
  if (where < length) {
    in.text[where] = inText;
    in.other[where] = inOther;
  }
  return in;
}

constexpr uint8_t kPairs[][2] = {{200, 100}, {0, 255}, {'K', 'k'}, {'[', 'A'}};

TEST(CompareTest, EveryLengthMisalignmentAndDifference) {
  Sweep sweep;
  for (size_t length = 0; length <= kLongest; ++length) {
    const size_t rounds = length < 140 ? std::max<size_t>(512, length * 4) : 512;
    for (size_t round = 0; round < rounds; ++round) {
      const auto& [inText, inOther] = kPairs[round % 4];
      const size_t where = (length < 140 ? round / 4 : round * 31) % (length + 2);
      const Input in = Pair(length, where, inText, inOther, where + round % 9);
      for (const Function& function : kComparisons) {
        sweep.Expect(function, in, round % 512);
      }
    }
  }
}

// Every pair of byte values, in a short string and in every kind of step of a long one.
TEST(CompareTest, EveryPairOfBytes) {
  Sweep sweep;
  for (size_t value = 0; value < 256 * 256; ++value) {
    const auto inText = static_cast<uint8_t>(value / 256);
    const auto inOther = static_cast<uint8_t>(value % 256);
    for (const Function& function : kComparisons) {
      sweep.Expect(function, Pair(5, 3, inText, inOther));
      sweep.Expect(function, Pair(160, value * 37 % 160, inText, inOther));
    }
  }
}

}  // namespace
}  // namespace vekch::test
