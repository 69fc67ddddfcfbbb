// SPDX-License-Identifier: MIT

// Trimming against a naive model: every number of bytes dropped at either end of short strings, all
// kinds of lengths beyond, sets of every size class, into a copy and onto the source.

#include "tests/byte_string_models.h"

namespace vekch::test {
namespace {

class TrimTest : public testing::Test {
 protected:
  // Members at the ends; between them bytes of all kinds, the first and the last no members.
  static Bytes Text(size_t length, size_t atStart, size_t atEnd, const Bytes& set) {
    Bytes text(length, 0);
    for (size_t i = 0; i < length; ++i) {
      const bool member = !set.empty() && (i < atStart || i + atEnd >= length);
      const bool edge = i == atStart || i + atEnd + 1 == length;
      text[i] = member ? set[i * 7 % set.size()] : static_cast<uint8_t>(edge ? 0 : i * 3);
      while (edge && !member && set.size() < 256 && set.find(text[i]) != Bytes::npos) {
        ++text[i];
      }
    }
    return text;
  }

  void Expect(size_t length, size_t atStart, size_t atEnd, const Bytes& set) {
    const Input in = {Text(length, std::min(atStart, length), atEnd, set), set};
    for (const Function& function : kTrimsOfSet) {
      sweep_.Expect(function, in, ++position_ % 512);
    }
    for (const Function& function : kTrimsOfByte) {
      if (set.size() == 1) {
        sweep_.Expect(function, in, position_ % 512);
      }
    }
  }

  Sweep sweep_;
  size_t position_ = 0;
};

// Members in steps from a first one, out of order and, for large sets, with repetitions.
Bytes SetOf(size_t size, size_t first, size_t step) {
  Bytes set;
  for (size_t i = 0; i < size; ++i) {
    set += static_cast<uint8_t>(first + i * step);
  }
  return set;
}

TEST_F(TrimTest, EveryNumberDroppedFromShortStrings) {
  for (const size_t setSize : {1U, 2U, 3U, 4U, 7U, 8U, 9U, 16U, 17U, 64U}) {
    const Bytes set = SetOf(setSize, 0, 85);
    for (size_t length = 0; length <= 40; ++length) {
      for (size_t atStart = 0; atStart <= length; ++atStart) {
        for (size_t atEnd = 0; atEnd + atStart <= length; atEnd += 1 + atEnd / 18) {
          Expect(length, atStart, atEnd, set);
        }
      }
    }
  }
}

TEST_F(TrimTest, EveryLengthAndSetSize) {
  for (size_t length = 0; length <= 2 * kLongest; length += 1 + length / 70) {
    for (const size_t setSize :
         {0U, 1U, 2U, 3U, 4U, 5U, 8U, 11U, 15U, 16U, 17U, 18U, 33U, 255U, 256U}) {
      const Bytes set = SetOf(setSize, 0, 85);
      for (const size_t atStart : {size_t{0}, size_t{2}, length % 90, length / 2, length}) {
        for (const size_t atEnd : {size_t{0}, size_t{1}, length % 77, length / 2}) {
          Expect(length, atStart, std::min(atEnd, length - std::min(atStart, length)), set);
        }
      }
    }
  }
}

TEST_F(TrimTest, EveryByteValue) {
  for (size_t value = 0; value < 256; ++value) {
    for (const size_t setSize : {1U, 4U, 13U, 30U}) {
      const Bytes half = SetOf(setSize / 2, value, 3);
      for (const size_t length : {3U, 20U, 70U}) {
        Expect(length, length / 3, length / 3, half + SetOf(setSize - half.size(), value, 3));
      }
    }
  }
}

}  // namespace
}  // namespace vekch::test
