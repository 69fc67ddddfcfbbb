// Editing against std::string: every length, positions at the ends and between, results pushed
// against a page that can't be touched, and the overlaps that are allowed.

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "tests/guarded_buffer.h"
#include "vekch/vekch.h"

namespace vekch::test {
namespace {

constexpr size_t kLongest = 300;
constexpr size_t kMargin = 16;
constexpr uint8_t kUnwritten = 0xEE;
const uint8_t kText[] = "abcdefgh";

std::string Text(size_t length, size_t seed) {
  std::string text(length, ' ');
  for (size_t i = 0; i < length; ++i) {
    text[i] = static_cast<char>(i * 31 + i / 16 + seed * 7);
  }
  return text;
}

const uint8_t* Data(const std::string& text) {
  return reinterpret_cast<const uint8_t*>(text.data());
}

int32_t Length(const std::string& text) { return static_cast<int32_t>(text.size()); }

std::string Read(const uint8_t* p, size_t length) {
  return {reinterpret_cast<const char*>(p), length};
}

// Positions worth trying in a string: its ends, what lies beside them, the middle.
std::vector<int32_t> Places(int32_t length) {
  std::vector<int32_t> places = {0};
  for (const int32_t place : {1, length / 2, length - 1, length}) {
    if (place > places.back() && place <= length) {
      places.push_back(place);
    }
  }
  return places;
}

class EditTest : public testing::Test {
 protected:
  // The text against the page behind it, or `shift` bytes before.
  static const uint8_t* Put(const GuardedBuffer& buffer, const std::string& text, size_t shift) {
    uint8_t* p = buffer.AtEnd(text.size(), shift);
    std::memcpy(p, text.data(), text.size());
    return p;
  }

  const uint8_t* PutFirst(const std::string& text, size_t shift = 0) {
    return Put(first_, text, shift);
  }
  const uint8_t* PutSecond(const std::string& text, size_t shift = 0) {
    return Put(second_, text, shift);
  }

  // Room that starts as `initial` and ends as `expected` when `run` has had it; what lies around
  // both stays unwritten.
  void ExpectResult(const std::string& initial, const std::string& expected, size_t shift,
                    const std::function<vekStatus(uint8_t*)>& run) {
    const size_t room = std::max(initial.size(), expected.size());
    uint8_t* p = result_.AtEnd(room, shift);
    std::memset(p - kMargin, kUnwritten, room + kMargin + shift);
    std::memcpy(p, initial.data(), initial.size());
    ASSERT_EQ(run(p), StatusNoError);
    ASSERT_EQ(Read(p, expected.size()), expected) << "of " << room << ", shift " << shift;
    // In place, bytes behind a shorter result stay; elsewhere nothing is behind it.
    const std::string behind =
        initial.size() > expected.size() ? initial.substr(expected.size()) : "";
    ASSERT_EQ(Read(p + expected.size(), behind.size()), behind);
    const std::string margin(kMargin, static_cast<char>(kUnwritten));
    ASSERT_EQ(Read(p - kMargin, kMargin), margin);
    ASSERT_EQ(Read(p + room, shift), margin.substr(0, shift));
  }

  GuardedBuffer first_{2 * kLongest + kMargin};
  GuardedBuffer second_{2 * kLongest + kMargin};
  GuardedBuffer result_{4 * kLongest + 2 * kMargin};
};

TEST_F(EditTest, Concat) {
  for (size_t length = 0; length <= kLongest; ++length) {
    for (const size_t other : {size_t{0}, size_t{1}, length / 3, length % 67, kLongest - length}) {
      const std::string a = Text(length, other);
      const std::string b = Text(other, length + 1);
      const uint8_t* first = PutFirst(a, other % 16);
      const uint8_t* second = PutSecond(b, length % 16);
      ExpectResult("", a + b, (length + other) % 16, [&](uint8_t* to) {
        return veksConcat_8u(first, Length(a), second, Length(b), to);
      });
    }
  }
}

TEST_F(EditTest, ConcatList) {
  std::mt19937 random(7);
  for (size_t round = 0; round < 2000; ++round) {
    std::vector<std::string> texts(random() % 9 + 1);
    std::vector<const uint8_t*> strings;
    std::vector<int32_t> lengths;
    std::string joined;
    std::string delimited;
    for (std::string& text : texts) {
      text = Text(random() % (random() % 5 == 0 ? 130 : 20), random());
      delimited += (strings.empty() ? "" : ",") + text;
      joined += text;
      strings.push_back(Data(text));
      lengths.push_back(Length(text));
    }
    const auto count = static_cast<int32_t>(texts.size());
    ExpectResult("", joined, round % 16, [&](uint8_t* to) {
      return veksConcat_8u_D2L(strings.data(), lengths.data(), count, to);
    });
    ExpectResult("", delimited, round % 16, [&](uint8_t* to) {
      return veksConcatC_8u_D2L(strings.data(), lengths.data(), count, ',', to);
    });
  }
}

TEST_F(EditTest, ListElementsAreCheckedWhenTheyAreReached) {
  for (size_t bad = 0; bad < 4; ++bad) {
    for (const bool null : {true, false}) {
      std::vector<const uint8_t*> pointers(4, kText);
      std::vector<int32_t> lengths(4, 2);
      pointers[bad] = null ? nullptr : kText;
      lengths[bad] = -1;  // the pointer is looked at first
      uint8_t to[16];
      const auto expectBefore = [&](vekStatus status, const std::string& whole, size_t each) {
        EXPECT_EQ(status, null ? StatusNullPointer : StatusLengthError);
        const size_t written = bad == 0 ? 0 : bad * each - (each - 2);
        EXPECT_EQ(Read(to, written), whole.substr(0, written));
        EXPECT_EQ(to[written], kUnwritten);
      };
      std::memset(to, kUnwritten, sizeof to);
      expectBefore(veksConcat_8u_D2L(pointers.data(), lengths.data(), 4, to), "abababab", 2);
      std::memset(to, kUnwritten, sizeof to);
      expectBefore(veksConcatC_8u_D2L(pointers.data(), lengths.data(), 4, ',', to), "ab,ab,ab,ab",
                   3);
    }
  }
}

TEST_F(EditTest, InsertAndRemove) {
  for (size_t length = 0; length <= kLongest; ++length) {
    const std::string text = Text(length, 1);
    const uint8_t* source = PutFirst(text, length % 16);
    for (const int32_t start : Places(Length(text))) {
      const auto at = static_cast<size_t>(start);
      const size_t shift = (length + at * 5) % 16;
      for (const size_t number : {size_t{1}, size_t{2}, length % 40 + 1, length % 190 + 1}) {
        const std::string inserted = Text(number, 90);
        const uint8_t* insert = PutSecond(inserted, at % 16);
        const std::string longer = std::string(text).insert(at, inserted);
        const auto n = static_cast<int32_t>(number);
        ExpectResult("", longer, shift, [&](uint8_t* to) {
          return veksInsert_8u(source, Length(text), insert, n, to, start);
        });
        ExpectResult(text, longer, shift, [&](uint8_t* buffer) {
          return veksInsert_8u(buffer, Length(text), insert, n, buffer, start);
        });
        int32_t newLength = Length(text);
        ExpectResult(text, longer, shift, [&](uint8_t* buffer) {
          return veksInsert_8u_I(insert, n, buffer, &newLength, start);
        });
        EXPECT_EQ(newLength, Length(longer));
      }
      for (const int32_t number : Places(Length(text) - start)) {
        const std::string shorter = std::string(text).erase(at, static_cast<size_t>(number));
        ExpectResult("", shorter, shift, [&](uint8_t* to) {
          return veksRemove_8u(source, Length(text), to, start, number);
        });
        int32_t newLength = Length(text);
        // The bytes behind the new end stay as they were: so the whole of `text` but its start.
        ExpectResult(text, shorter, shift, [&](uint8_t* buffer) {
          return veksRemove_8u_I(buffer, &newLength, start, number);
        });
        EXPECT_EQ(newLength, Length(shorter));
      }
    }
  }
}

TEST_F(EditTest, InsertedTextInFrontOfTheStart) {
  for (size_t length = 1; length < 200; length += 3) {
    const std::string text = Text(length, 3);
    for (size_t start = 1; start <= length; start += 1 + length / 20) {
      const size_t from = start / 3;
      const size_t number = start - from;
      const std::string longer = std::string(text).insert(start, text.substr(from, number));
      const auto n = static_cast<int32_t>(number);
      const auto at = static_cast<int32_t>(start);
      int32_t newLength = Length(text);
      ExpectResult(text, longer, length % 16, [&](uint8_t* buffer) {
        return veksInsert_8u_I(buffer + from, n, buffer, &newLength, at);
      });
      ExpectResult(text, longer, length % 16, [&](uint8_t* buffer) {
        return veksInsert_8u(buffer, Length(text), buffer + from, n, buffer, at);
      });
    }
  }
}

TEST_F(EditTest, InsertingNothingWritesNothing) {
  uint8_t to[4] = {kUnwritten, kUnwritten, kUnwritten, kUnwritten};
  int32_t length = 3;
  EXPECT_EQ(veksInsert_8u(Data("abc"), 3, Data("x"), 0, to, 1), StatusNoError);
  EXPECT_EQ(veksInsert_8u_I(Data("x"), 0, to, &length, 3), StatusNoError);
  EXPECT_EQ(veksInsert_8u_I(Data("x"), 0, to, &length, 4), StatusLengthError);
  EXPECT_EQ(length, 3);
  EXPECT_EQ(Read(to, 4), std::string(4, static_cast<char>(kUnwritten)));
}

TEST_F(EditTest, Replace) {
  for (size_t length = 0; length <= kLongest; ++length) {
    for (size_t shift = 0; shift < 256; shift += length < 100 ? 1 : 15) {
      // Four values, so that runs, lone bytes and every lane are replaced.
      std::string text = Text(length, shift);
      for (char& c : text) {
        c = static_cast<char>(c & 0x83);
      }
      const auto oldValue = static_cast<uint8_t>(shift * 5 & 0x83);
      const auto newValue = static_cast<uint8_t>(shift % 7 == 0 ? oldValue : shift + 0x70);
      std::string replaced = text;
      for (char& c : replaced) {
        c = static_cast<uint8_t>(c) == oldValue ? static_cast<char>(newValue) : c;
      }
      const uint8_t* source = PutFirst(text, shift / 16);
      ExpectResult("", replaced, shift % 16, [&](uint8_t* to) {
        return veksReplaceC_8u(source, to, Length(text), oldValue, newValue);
      });
      ExpectResult(text, replaced, shift % 16, [&](uint8_t* buffer) {
        return veksReplaceC_8u(buffer, buffer, Length(text), oldValue, newValue);
      });
    }
  }
}

// ---- Splitting.

struct Split {
  vekStatus status = StatusNoError;
  std::vector<std::string> pieces;
};

// Cuts the text into all its pieces first, then deals them out.
Split NaiveSplit(const std::string& text, const std::vector<int32_t>& capacities) {
  std::vector<std::string> all;
  std::string piece;
  for (const char c : text) {
    if (c == ',') {
      all.push_back(piece);
      piece.clear();
    } else {
      piece += c;
    }
  }
  if (!piece.empty()) {
    all.push_back(piece);
  }
  Split split;
  for (size_t i = 0; i < all.size() && i < capacities.size(); ++i) {
    if (Length(all[i]) > capacities[i]) {
      split.status = StatusDestinationTruncated;
    }
    split.pieces.push_back(all[i].substr(0, static_cast<size_t>(capacities[i])));
  }
  if (all.size() > capacities.size()) {
    split.status = StatusDestinationsExhausted;
  }
  return split;
}

class SplitTest : public EditTest {
 protected:
  // Slots that the model leaves unused are made unusable.
  void ExpectLikeModel(const std::string& text, const std::vector<int32_t>& capacities) {
    const Split expected = NaiveSplit(text, capacities);
    const size_t used = expected.pieces.size();
    uint8_t room[9][80];
    uint8_t* pointers[9] = {};
    std::vector<int32_t> lengths = capacities;
    std::memset(room, kUnwritten, sizeof room);
    for (size_t i = 0; i < capacities.size(); ++i) {
      pointers[i] = i < used ? room[i] : nullptr;
      lengths[i] = i < used ? capacities[i] : -1;
    }
    auto count = static_cast<int32_t>(capacities.size());
    ASSERT_EQ(
        veksSplitC_8u_D2L(PutFirst(text), Length(text), ',', pointers, lengths.data(), &count),
        expected.status)
        << text;
    ASSERT_EQ(count, static_cast<int32_t>(used)) << text;
    for (size_t i = 0; i < used; ++i) {
      ASSERT_EQ(lengths[i], Length(expected.pieces[i])) << text << ", piece " << i;
      ASSERT_EQ(Read(room[i], expected.pieces[i].size()), expected.pieces[i]) << text;
      ASSERT_EQ(room[i][lengths[i]], kUnwritten) << text;
    }
  }
};

TEST_F(SplitTest, EveryShortText) {
  for (size_t length = 0; length <= 7; ++length) {
    for (unsigned bits = 0; bits < 1U << length; ++bits) {
      std::string text;
      for (size_t i = 0; i < length; ++i) {
        text += (bits >> i & 1) != 0 ? ',' : static_cast<char>('a' + i);
      }
      for (size_t slots = 1; slots <= 8; ++slots) {
        for (const int32_t capacity : {0, 1, 2, 9}) {
          ExpectLikeModel(text, std::vector<int32_t>(slots, capacity));
        }
      }
    }
  }
}

TEST_F(SplitTest, LongerPieces) {
  std::mt19937 random(11);
  for (int round = 0; round < 20000; ++round) {
    std::string text = Text(random() % 250, random());
    for (size_t i = random() % 60; i < text.size(); i += random() % 80) {
      text[i++] = ',';
    }
    std::vector<int32_t> capacities(random() % 8 + 1);
    for (int32_t& capacity : capacities) {
      capacity = static_cast<int32_t>(random() % (round % 3 == 0 ? 80 : 20));
    }
    ExpectLikeModel(text, capacities);
  }
}

TEST_F(SplitTest, BadSlotLeavesTheCount) {
  for (const bool null : {true, false}) {
    uint8_t room[8] = {};
    uint8_t* pointers[3] = {room, null ? nullptr : room + 4, room + 6};
    int32_t lengths[3] = {4, -1, 2};
    int32_t count = 3;
    EXPECT_EQ(veksSplitC_8u_D2L(Data("ab,cd,e"), 7, ',', pointers, lengths, &count),
              null ? StatusNullPointer : StatusLengthError);
    EXPECT_EQ(count, 3);
    EXPECT_EQ(Read(room, 2), "ab");
    EXPECT_EQ(lengths[0], 2);
    EXPECT_EQ(lengths[1], -1);
  }
}

TEST_F(SplitTest, LongestPiece) {
  // Zeros that are only read take no memory.
  auto* zeros = static_cast<uint8_t*>(std::calloc(INT32_MAX, 1));
  if (zeros == nullptr) {
    GTEST_SKIP() << "no room for 2 GiB";
  }
  uint8_t room[4] = {kUnwritten, kUnwritten, kUnwritten, kUnwritten};
  uint8_t* pointers[2] = {room, nullptr};
  int32_t lengths[2] = {3, -1};
  int32_t count = 2;
  EXPECT_EQ(veksSplitC_8u_D2L(zeros, INT32_MAX, ',', pointers, lengths, &count),
            StatusDestinationTruncated);
  EXPECT_EQ(count, 1);
  EXPECT_EQ(lengths[0], 3);
  EXPECT_EQ(Read(room, 4), std::string("\0\0\0\xEE", 4));
  std::free(zeros);
}

// ---- Checks. Each function is called through a lambda that takes which pointers are null, in the
// order of the arguments, and the numbers, in the same order.

struct Arguments {
  unsigned nulls;
  std::vector<int32_t> numbers;

  template <class T>
  T* Pointer(int i, T* p) const {
    return (nulls >> i & 1) != 0 ? nullptr : p;
  }
};

struct Outputs {
  uint8_t bytes[64];
  int32_t length;
};

struct Checked {
  const char* name;
  int pointers;
  vekStatus (*call)(const Arguments& a, Outputs* out);
  std::vector<std::vector<int32_t>> bad;  // numbers that give expected, in every combination
  vekStatus expected;
};

const uint8_t* const kStrings[] = {kText, kText, kText};
constexpr int32_t kLengths[] = {1, 2, 3};

vekStatus CallConcat(const Arguments& a, Outputs* out) {
  return veksConcat_8u(a.Pointer(0, kText), a.numbers[0], a.Pointer(1, kText), a.numbers[1],
                       a.Pointer(2, out->bytes));
}
vekStatus CallConcatList(const Arguments& a, Outputs* out) {
  return veksConcat_8u_D2L(a.Pointer(0, kStrings), a.Pointer(1, kLengths), a.numbers[0],
                           a.Pointer(2, out->bytes));
}
vekStatus CallConcatListC(const Arguments& a, Outputs* out) {
  return veksConcatC_8u_D2L(a.Pointer(0, kStrings), a.Pointer(1, kLengths), a.numbers[0], ',',
                            a.Pointer(2, out->bytes));
}
vekStatus CallInsert(const Arguments& a, Outputs* out) {
  return veksInsert_8u(a.Pointer(0, kText), a.numbers[0], a.Pointer(1, kText), a.numbers[1],
                       a.Pointer(2, out->bytes), a.numbers[2]);
}
vekStatus CallInsertInPlace(const Arguments& a, Outputs* out) {
  out->length = a.numbers[0];
  const vekStatus status =
      veksInsert_8u_I(a.Pointer(0, kText), a.numbers[1], a.Pointer(1, out->bytes),
                      a.Pointer(2, &out->length), a.numbers[2]);
  EXPECT_EQ(out->length, a.numbers[0]);
  return status;
}
vekStatus CallRemove(const Arguments& a, Outputs* out) {
  return veksRemove_8u(a.Pointer(0, kText), a.numbers[0], a.Pointer(1, out->bytes), a.numbers[1],
                       a.numbers[2]);
}
vekStatus CallRemoveInPlace(const Arguments& a, Outputs* out) {
  out->length = a.numbers[0];
  const vekStatus status = veksRemove_8u_I(a.Pointer(0, out->bytes), a.Pointer(1, &out->length),
                                           a.numbers[1], a.numbers[2]);
  EXPECT_EQ(out->length, a.numbers[0]);
  return status;
}
vekStatus CallReplace(const Arguments& a, Outputs* out) {
  return veksReplaceC_8u(a.Pointer(0, kText), a.Pointer(1, out->bytes), a.numbers[0], 'a', 'b');
}
vekStatus CallSplit(const Arguments& a, Outputs* out) {
  uint8_t* pointers[1] = {out->bytes};
  int32_t capacity = 4;
  out->length = a.numbers[1];
  const vekStatus status =
      veksSplitC_8u_D2L(a.Pointer(0, kText), a.numbers[0], ',', a.Pointer(1, pointers),
                        a.Pointer(2, &capacity), a.Pointer(3, &out->length));
  EXPECT_EQ(out->length, a.numbers[1]);
  EXPECT_EQ(capacity, 4);
  return status;
}

TEST(EditChecksTest, NullsThenLengthsThenCounts) {
  const int32_t kMin = INT32_MIN;
  const int32_t kMax = INT32_MAX;
  const Checked functions[] = {
      {"Concat", 3, CallConcat, {{-1, 0}, {0, -1}, {kMin, kMin}}, StatusLengthError},
      {"ConcatList", 3, CallConcatList, {{0}, {-1}, {kMin}}, StatusSizeError},
      {"ConcatListC", 3, CallConcatListC, {{0}, {-1}, {kMin}}, StatusSizeError},
      {"Insert",
       3,
       CallInsert,
       {{-1, 1, 0}, {4, -1, 0}, {4, 1, -1}, {4, 1, 5}, {4, 0, 5}, {4, 1, kMax}, {0, 1, kMin}},
       StatusLengthError},
      {"InsertInPlace",
       3,
       CallInsertInPlace,
       {{-1, 1, 0}, {4, -1, 0}, {4, 1, -1}, {4, 1, 5}, {4, 0, 5}, {4, 1, kMax}, {0, 1, kMin}},
       StatusLengthError},
      {"Remove",
       2,
       CallRemove,
       {{4, 0, -1},
        {4, -1, 0},
        {4, 5, 0},
        {4, 0, 5},
        {4, 3, 2},
        {-1, 0, 0},
        {4, -1, 1},
        {4, kMax, kMax},
        {4, 4, kMax},
        {4, kMax, 1},
        {kMin, kMin, kMin},
        {-2, -1, -1}},
       StatusLengthError},
      {"RemoveInPlace",
       2,
       CallRemoveInPlace,
       {{4, 0, -1},
        {4, -1, 0},
        {4, 5, 0},
        {4, 0, 5},
        {4, 3, 2},
        {-1, 0, 0},
        {4, -1, 1},
        {4, kMax, kMax},
        {4, 4, kMax},
        {4, kMax, 1},
        {kMin, kMin, kMin},
        {-2, -1, -1}},
       StatusLengthError},
      {"Replace", 2, CallReplace, {{-1}, {kMin}}, StatusLengthError},
      {"Split", 4, CallSplit, {{-1, 1}, {-1, 0}, {kMin, -1}}, StatusLengthError},
      {"SplitCount", 4, CallSplit, {{0, 0}, {4, -1}, {4, kMin}}, StatusSizeError},
  };
  for (const Checked& function : functions) {
    for (const std::vector<int32_t>& numbers : function.bad) {
      for (unsigned nulls = 0; nulls < 1U << function.pointers; ++nulls) {
        Outputs out;
        std::memset(&out, kUnwritten, sizeof out);
        EXPECT_EQ(function.call({nulls, numbers}, &out),
                  nulls != 0 ? StatusNullPointer : function.expected)
            << function.name << ", nulls " << nulls << ", first number " << numbers[0];
        EXPECT_EQ(Read(out.bytes, sizeof out.bytes),
                  std::string(sizeof out.bytes, static_cast<char>(kUnwritten)))
            << function.name;
      }
    }
  }
}

}  // namespace
}  // namespace vekch::test
