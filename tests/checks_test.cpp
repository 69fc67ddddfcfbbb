// SPDX-License-Identifier: MIT

// The checks of arguments: every function with every combination of null pointers, and with numbers
// out of range. Nulls count first, then lengths, then counts; and what fails writes nothing.

#include <gtest/gtest.h>

#include <cstring>
#include <tuple>
#include <type_traits>
#include <vector>

#include "vekch/regexp_program.h"
#include "vekch/vekch.h"

namespace vekch::test {
namespace {

using Numbers = std::vector<int32_t>;

constexpr int32_t kMin = INT32_MIN;
constexpr int32_t kMax = INT32_MAX;
constexpr vekStatus kLength = StatusLengthError;
constexpr vekStatus kSize = StatusSizeError;

// All that the functions get: what is read, and what may be written.
const uint8_t kText[] = "abcdefgh";
const uint16_t kUnits[] = {'a', 'b', 'c', 'd', 0};
const uint8_t* const kStrings[] = {kText, kText, kText};
constexpr int32_t kLengths[] = {1, 2, 3};

struct Written {
  uint8_t bytes[64];
  uint16_t units[8];
  uint8_t* slots[2];
  int32_t number, length, count;
  uint32_t hash;
  RegExpState state;
  RegExpReplaceState replaceState;
  RegExpFindResult result;
} written;

// An argument of a call that must fail: a null, or the next of the numbers.
struct Filler {
  unsigned nulls;
  const Numbers& numbers;
  size_t next = 0;

  void Take(int32_t* number) { *number = next < numbers.size() ? numbers[next++] : *number; }

  template <class T>
  void Plain(T* argument) {
    if constexpr (std::is_same_v<T, int32_t>) {
      Take(argument);
    }
  }

  template <class T>
  void Pointer(T* argument) {
    if constexpr (std::is_same_v<T, int32_t*>) {
      Take(*argument);
    }
    if constexpr (std::is_pointer_v<T>) {
      *argument = (nulls & 1) != 0 ? nullptr : *argument;
      nulls >>= 1;
    }
  }
};

// Numbers are those of the plain arguments in their order. Where there are more, the first are
// those that pointers lead to.
template <class... A>
void Expect(vekStatus (*function)(A...) noexcept, const std::tuple<A...>& arguments,
            vekStatus status, const std::vector<Numbers>& rows) {
  std::memset(&written, 0x5A, sizeof written);
  for (const Numbers& row : rows) {
    for (unsigned nulls = 0; nulls < 1U << (std::is_pointer_v<A> + ... + 0); ++nulls) {
      if (nulls == 0 && status == StatusNoError) {
        continue;
      }
      std::tuple<A...> changed = arguments;
      Filler filler = {nulls, row};
      const bool plainFirst = row.size() <= (std::is_same_v<A, int32_t> + ... + 0);
      for (const bool plain : {plainFirst, !plainFirst}) {
        std::apply([&](auto&... a) { ((plain ? filler.Plain(&a) : filler.Pointer(&a)), ...); },
                   changed);
      }
      const std::vector<uint8_t> before(reinterpret_cast<uint8_t*>(&written),
                                        reinterpret_cast<uint8_t*>(&written + 1));
      EXPECT_EQ(std::apply(function, changed), nulls != 0 ? StatusNullPointer : status)
          << "nulls " << nulls << ", first number " << (row.empty() ? 0 : row[0]);
      EXPECT_EQ(std::memcmp(&written, before.data(), before.size()), 0);
    }
  }
}

// A null is no fault of the options.
vekStatus InitWithoutOptions(const uint8_t* pattern, RegExpState* state, int32_t* offset) noexcept {
  return veksRegExpInit(pattern, nullptr, state, offset);
}

// Nor is it one of the templates.
vekStatus ReplaceGetSize(int32_t* size) noexcept { return veksRegExpReplaceGetSize(kText, size); }
vekStatus ReplaceInit(RegExpReplaceState* state) noexcept {
  return veksRegExpReplaceInit(kText, state);
}

TEST(ChecksTest, Strings) {
  const std::vector<Numbers> oneLength = {{-1}, {kMin}};
  const std::vector<Numbers> twoLengths = {{-1, 1}, {1, -1}, {kMin, kMin}};
  int32_t* number = &written.number;
  uint8_t* to = written.bytes;
  for (const auto function : {veksCompare_8u, veksCompareIgnoreCaseLatin_8u, veksEqual_8u}) {
    Expect(function, {kText, kText, 1, number}, kLength, oneLength);
  }
  for (const auto function : {veksLowercaseLatin_8u, veksUppercaseLatin_8u}) {
    Expect(function, {kText, to, 1}, kLength, oneLength);
  }
  for (const auto function : {veksLowercaseLatin_8u_I, veksUppercaseLatin_8u_I}) {
    Expect(function, {to, 1}, kLength, oneLength);
  }
  for (const auto function : {veksFind_8u, veksFindRev_8u, veksFindCAny_8u, veksFindRevCAny_8u}) {
    Expect(function, {kText, 1, kText, 1, number}, kLength, twoLengths);
  }
  for (const auto function : {veksFindC_8u, veksFindRevC_8u}) {
    Expect(function, {kText, 1, 'a', number}, kLength, oneLength);
  }
  Expect(veksFind_Z_8u, {kText, kText, number}, StatusNoError, {{}});
  Expect(veksFindC_Z_8u, {kText, 'a', number}, StatusNoError, {{}});
  EXPECT_EQ(veksFindC_Z_8u(nullptr, 0, number), StatusNullPointer);
  for (const auto function : {veksHash_8u32u, veksHashSJ2_8u32u, veksHashMSCS_8u32u}) {
    Expect(function, {kText, 1, &written.hash}, kLength, oneLength);
  }
  for (const auto function : {veksHash_16u32u, veksHashSJ2_16u32u, veksHashMSCS_16u32u}) {
    Expect(function, {kUnits, 1, &written.hash}, kLength, oneLength);
  }
  for (const auto function : {veksTrimCAny_8u, veksTrimStartCAny_8u, veksTrimEndCAny_8u}) {
    Expect(function, {kText, 1, kText, 1, to, number}, kLength, twoLengths);
  }
  Expect(veksTrimC_8u, {kText, 1, 'a', to, number}, kLength, oneLength);
  Expect(veksTrimC_8u_I, {to, number, 'a'}, kLength, oneLength);
  Expect(veksConvertUTF_8u16u, {kText, number, written.units, &written.length, 0}, StatusNoError,
         {{2, 2}});
  Expect(veksConvertUTF_16u8u, {kUnits, number, to, &written.length, 0}, StatusNoError, {{2, 2}});
}

TEST(ChecksTest, Edits) {
  int32_t* number = &written.number;
  uint8_t* to = written.bytes;
  Expect(veksConcat_8u, {kText, 1, kText, 1, to}, kLength, {{-1, 0}, {0, -1}, {kMin, kMin}});
  Expect(veksConcat_8u_D2L, {kStrings, kLengths, 1, to}, kSize, {{0}, {-1}, {kMin}});
  Expect(veksConcatC_8u_D2L, {kStrings, kLengths, 1, ',', to}, kSize, {{0}, {-1}, {kMin}});
  // Lengths of the text and of what is inserted, start.
  const std::vector<Numbers> insertions = {{-1, 1, 0}, {4, -1, 0},   {4, 1, -1},  {4, 1, 5},
                                           {4, 0, 5},  {0, 1, kMin}, {4, 1, kMax}};
  Expect(veksInsert_8u, {kText, 4, kText, 1, to, 0}, kLength, insertions);
  Expect(veksInsert_8u_I, {kText, 1, to, number, 0}, kLength, insertions);
  // Length of the text, start, number.
  const std::vector<Numbers> removals = {{4, 0, -1},      {4, -1, 1},  {4, 5, 0},    {4, 0, 5},
                                         {4, 3, 2},       {-1, 0, 0},  {4, kMax, 1}, {4, 4, kMax},
                                         {4, kMax, kMax}, {-2, -1, -1}};
  Expect(veksRemove_8u, {kText, 4, to, 0, 1}, kLength, removals);
  Expect(veksRemove_8u_I, {to, number, 0, 1}, kLength, removals);
  Expect(veksReplaceC_8u, {kText, to, 1, 'a', 'b'}, kLength, {{-1}, {kMin}});
  // Capacity, count of the slots, length of the text.
  const std::tuple<const uint8_t*, int32_t, uint8_t, uint8_t* const*, int32_t*, int32_t*>
      splitArguments = {kText, 4, ',', written.slots, number, &written.count};
  Expect(veksSplitC_8u_D2L, splitArguments, kLength, {{4, 1, -1}, {4, 0, -1}, {4, -1, kMin}});
  Expect(veksSplitC_8u_D2L, splitArguments, kSize, {{4, 0, 0}, {4, -1, 4}, {4, kMin, 4}});
}

TEST(ChecksTest, Patterns) {
  Expect(InitWithoutOptions, {kText, &written.state, &written.number}, StatusNoError, {{}});
  Expect(veksRegExpGetSize, {kText, &written.number}, StatusNoError, {{}});
  Expect(veksRegExpSetMatchLimit, {0, &written.state}, kLength, {{-1}, {kMin}});
  Expect(veksRegExpSetFormat, {0, &written.state}, StatusRangeError, {{-1}, {2}, {kMin}, {kMax}});
  // Count of the results, length of the subject; the last fault is that of the object.
  const std::tuple<const uint8_t*, int32_t, RegExpState*, RegExpFindResult*, int32_t*> search = {
      kText, 1, &written.state, &written.result, &written.count};
  Expect(veksRegExpFind_8u, search, kLength, {{0, -1}, {1, kMin}});
  Expect(veksRegExpFind_8u, search, kSize, {{0, 1}, {-1, 0}, {kMin, kMax}});
  Expect(veksRegExpFind_8u, search, StatusRegExpError, {{1, 1}, {kMax, 0}});
  Expect(ReplaceGetSize, {&written.number}, StatusNoError, {{}});
  Expect(ReplaceInit, {&written.replaceState}, StatusNoError, {{}});
  // Lengths of the source and of the destination, count of the results.
  Expect(veksRegExpReplace_8u,
         {kText, &written.number, written.bytes, &written.length, &written.result, &written.count,
          &written.state, &written.replaceState},
         kSize, {{0, 4, 4}, {4, 0, 4}, {-1, -1, -1}, {kMin, 4, 0}, {4, kMin, 0}});
}

}  // namespace
}  // namespace vekch::test
