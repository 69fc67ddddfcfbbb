// SPDX-License-Identifier: MIT

// Editing against std::string: every length, positions at the ends and between, and the overlaps
// that are allowed.

#include <set>
#include <vector>

#include "tests/byte_string_models.h"

namespace vekch::test {
namespace {

// Positions worth trying in a string: its ends, what lies beside them, the middle.
std::set<int32_t> Positions(int32_t length) {
  return {0, std::min(1, length), length / 2, std::max(length - 1, 0), length};
}

class EditTest : public testing::Test {
 protected:
  void Expect(const Function& function, const Input& input) {
    sweep_.Expect(function, input, ++position_ % 512);
  }

  Sweep sweep_;
  Random random_{1};
  size_t position_ = 0;
};

TEST_F(EditTest, InsertRemoveAndConcat) {
  for (size_t length = 0; length <= 2 * kLongest; length += length < kLongest ? 1 : 23) {
    const Bytes text = random_.Text(length);
    for (const size_t other : {size_t{0}, size_t{1}, length / 3, length % 67, length % 300}) {
      Expect(kConcat, {text, random_.Text(other)});
    }
    for (const int32_t start : Positions(Size(text))) {
      for (const size_t number : {size_t{1}, size_t{2}, length % 40 + 1, length % 190 + 1}) {
        const Bytes inserted = random_.Text(number);
        Expect(kInsertions[0], {text, inserted, start});
        Expect(kInsertions[1], {text, inserted, start});
        if (number <= static_cast<size_t>(start)) {
          Expect(kInsertions[2], {text, inserted, start});
        }
      }
      for (const int32_t number : Positions(Size(text) - start)) {
        Expect(kRemovals[0], {text, {}, start, number});
        Expect(kRemovals[1], {text, {}, start, number});
      }
    }
  }
}

TEST_F(EditTest, InsertingNothingWritesNothing) {
  uint8_t to[4] = {kUnwritten, kUnwritten, kUnwritten, kUnwritten};
  int32_t length = 3;
  EXPECT_EQ(veksInsert_8u("abc"_b.data(), 3, to, 0, to, 1), StatusNoError);
  EXPECT_EQ(veksInsert_8u_I(to, 0, to, &length, 3), StatusNoError);
  EXPECT_EQ(length, 3);
  EXPECT_EQ(Bytes(to, 4), Bytes(4, kUnwritten));
}

TEST_F(EditTest, Replace) {
  for (size_t length = 0; length <= kLongest; ++length) {
    for (size_t round = 0; round < 256; round += length < 100 ? 1 : 15) {
      // Two values, so that runs, lone bytes and every lane are replaced.
      const auto newValue = static_cast<int32_t>((round + random_.Below(3)) % 256);
      const auto oldValue = static_cast<int32_t>(round);
      Expect(kReplaceC, {random_.Text(length, 2, round), {}, oldValue, newValue});
    }
  }
}

// ---- Lists.

TEST_F(EditTest, ConcatList) {
  for (size_t round = 0; round < 4000; ++round) {
    std::vector<Bytes> texts(random_.Below(9) + 1);
    for (Bytes& text : texts) {
      text = random_.Text(random_.Below(random_.Below(5) == 0 ? 130 : 20));
    }
    ASSERT_NO_FATAL_FAILURE(ExpectConcatList(texts, round % 2 == 0));
  }
}

TEST_F(EditTest, ListElementsAreCheckedWhenTheyAreReached) {
  for (size_t bad = 0; bad < 4; ++bad) {
    for (const bool null : {true, false}) {
      for (const bool delimited : {true, false}) {
        const Bytes text = "ab"_b;
        std::vector<const uint8_t*> strings(4, text.data());
        std::vector<int32_t> lengths(4, 2);
        strings[bad] = null ? nullptr : text.data();
        lengths[bad] = -1;  // the pointer is looked at first
        Bytes to(16, kUnwritten);
        const vekStatus status =
            delimited ? veksConcatC_8u_D2L(strings.data(), lengths.data(), 4, ',', to.data())
                      : veksConcat_8u_D2L(strings.data(), lengths.data(), 4, to.data());
        EXPECT_EQ(status, null ? StatusNullPointer : StatusLengthError);
        const size_t written = delimited && bad > 0 ? 3 * bad - 1 : 2 * bad;
        const Bytes whole = delimited ? "ab,ab,ab"_b : "ababab"_b;
        EXPECT_EQ(to, whole.substr(0, written) + Bytes(16 - written, kUnwritten));
      }
    }
  }
}

// ---- Splitting.

TEST(SplitTest, EveryShortText) {
  for (size_t length = 0; length <= 7; ++length) {
    for (unsigned bits = 0; bits < 1U << length; ++bits) {
      Bytes text;
      for (size_t i = 0; i < length; ++i) {
        text += static_cast<uint8_t>((bits >> i & 1) != 0 ? ',' : 'a' + i);
      }
      for (size_t slots = 1; slots <= 8; ++slots) {
        for (const int32_t capacity : {0, 1, 2, 9}) {
          ExpectSplit(text, std::vector<int32_t>(slots, capacity));
        }
      }
    }
  }
}

TEST(SplitTest, LongerPieces) {
  Random random(11);
  for (size_t round = 0; round < 10000; ++round) {
    Bytes text = random.Text(random.Below(250));
    for (size_t i = random.Below(60); i < text.size(); i += 1 + random.Below(80)) {
      text[i] = ',';
    }
    std::vector<int32_t> capacities(random.Below(8) + 1);
    for (int32_t& capacity : capacities) {
      capacity = static_cast<int32_t>(random.Below(round % 3 == 0 ? 80 : 20));
    }
    ExpectSplit(text, capacities);
  }
}

TEST(SplitTest, BadSlotLeavesTheCount) {
  for (const bool null : {true, false}) {
    uint8_t room[8] = {};
    uint8_t* pointers[3] = {room, null ? nullptr : room + 4, room + 6};
    int32_t lengths[3] = {4, -1, 2};
    int32_t count = 3;
    EXPECT_EQ(veksSplitC_8u_D2L("ab,cd,e"_b.data(), 7, ',', pointers, lengths, &count),
              null ? StatusNullPointer : StatusLengthError);
    EXPECT_EQ(count, 3);
    EXPECT_EQ(Bytes(room, 2), "ab"_b);
    EXPECT_EQ(lengths[0], 2);
    EXPECT_EQ(lengths[1], -1);
  }
}

}  // namespace
}  // namespace vekch::test
