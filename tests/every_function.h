// SPDX-License-Identifier: MIT

// The one table of the exported functions: each with arguments that it takes and with numbers that
// it refuses. The checks of arguments run over it, and so do the threads.

#ifndef VEKCH_TESTS_EVERY_FUNCTION_H
#define VEKCH_TESTS_EVERY_FUNCTION_H

#include <cstring>
#include <tuple>
#include <vector>

#include "vekch/regexp_program.h"
#include "vekch/vekch.h"

namespace vekch::test {

using Numbers = std::vector<int32_t>;

// What functions only read.
constexpr uint8_t kText[] = "abcdefgh";
constexpr int32_t kTextSize = sizeof kText - 1;
constexpr uint16_t kUnits[] = {'a', 'b', 0xE9, 0x4E2D, 'e', 'f', 'g', 'h', 0};
constexpr const uint8_t* kStrings[] = {kText, kText, kText};
constexpr int32_t kLengths[] = {1, 2, 3};

// What they may write, with values that each of them takes.
struct Written {
  uint8_t bytes[64];
  uint16_t units[8];
  uint8_t* slots[2];
  int32_t number, length, count, offset;
  uint32_t hash;
  RegExpFindResult result;
  uint64_t replacement[2 + 2 * kTextSize];
  uint64_t object[(RegExpFixedSize + RegExpSizePerByte * kTextSize) / sizeof(uint64_t)];

  RegExpState* State() { return reinterpret_cast<RegExpState*>(object); }
  RegExpReplaceState* Template() { return reinterpret_cast<RegExpReplaceState*>(replacement); }

  void Prepare() {
    std::memset(this, 0x5A, sizeof *this);
    slots[0] = slots[1] = bytes;
    number = length = kTextSize;
    count = 1;
    veksRegExpReplaceInit(kText, Template());
    veksRegExpInit(kText, nullptr, State(), &offset);
  }
};

// Calls visit(function, arguments, status, rows, mayBeNull) for every function but the one without
// arguments. Each row are numbers that make the function refuse with `status`: those of the plain
// arguments in their order; where there are more, the first are those that pointers lead to.
// `mayBeNull` has a bit for each pointer, from the first on.
template <class Visit>
void EveryFunction(Written& written, const RegExpReplaceState* replacement, Visit& visit) {
  constexpr int32_t kMin = INT32_MIN;
  constexpr int32_t kMax = INT32_MAX;
  constexpr vekStatus kLength = StatusLengthError;
  constexpr vekStatus kSize = StatusSizeError;
  int32_t* number = &written.number;
  int32_t* length = &written.length;
  int32_t* count = &written.count;
  uint8_t* to = written.bytes;
  RegExpState* state = written.State();

  const std::vector<Numbers> oneLength = {{-1}, {kMin}};
  const std::vector<Numbers> twoLengths = {{-1, 1}, {1, -1}, {kMin, kMin}};
  for (const auto function : {veksCompare_8u, veksCompareIgnoreCaseLatin_8u, veksEqual_8u}) {
    visit(function, {kText, kText, kTextSize, number}, kLength, oneLength);
  }
  for (const auto function : {veksLowercaseLatin_8u, veksUppercaseLatin_8u}) {
    visit(function, {kText, to, kTextSize}, kLength, oneLength);
  }
  for (const auto function : {veksLowercaseLatin_8u_I, veksUppercaseLatin_8u_I}) {
    visit(function, {to, kTextSize}, kLength, oneLength);
  }
  for (const auto function : {veksFind_8u, veksFindRev_8u, veksFindCAny_8u, veksFindRevCAny_8u}) {
    visit(function, {kText, kTextSize, kText + 3, 2, number}, kLength, twoLengths);
  }
  for (const auto function : {veksFindC_8u, veksFindRevC_8u}) {
    visit(function, {kText, kTextSize, 'e', number}, kLength, oneLength);
  }
  visit(veksFind_Z_8u, {kText, kText + 3, number}, StatusNoError, {{}});
  visit(veksFindC_Z_8u, {kText, 'e', number}, StatusNoError, {{}});
  for (const auto function : {veksHash_8u32u, veksHashSJ2_8u32u, veksHashMSCS_8u32u}) {
    visit(function, {kText, kTextSize, &written.hash}, kLength, oneLength);
  }
  for (const auto function : {veksHash_16u32u, veksHashSJ2_16u32u, veksHashMSCS_16u32u}) {
    visit(function, {kUnits, kTextSize, &written.hash}, kLength, oneLength);
  }
  for (const auto function : {veksTrimCAny_8u, veksTrimStartCAny_8u, veksTrimEndCAny_8u}) {
    visit(function, {kText, kTextSize, kText, 2, to, number}, kLength, twoLengths);
  }
  visit(veksTrimC_8u, {kText, kTextSize, 'a', to, number}, kLength, oneLength);
  visit(veksTrimC_8u_I, {to, number, 'a'}, kLength, oneLength);
  visit(veksConvertUTF_8u16u, {kText, number, written.units, length, 0}, StatusNoError, {{2, 2}});
  visit(veksConvertUTF_16u8u, {kUnits, number, to, length, 0}, StatusNoError, {{2, 2}});

  visit(veksConcat_8u, {kText, 4, kText, 4, to}, kLength, {{-1, 0}, {0, -1}, {kMin, kMin}});
  visit(veksConcat_8u_D2L, {kStrings, kLengths, 3, to}, kSize, {{0}, {-1}, {kMin}});
  visit(veksConcatC_8u_D2L, {kStrings, kLengths, 3, ',', to}, kSize, {{0}, {-1}, {kMin}});
  // Lengths of the text and of what is inserted, start.
  const std::vector<Numbers> insertions = {{-1, 1, 0}, {4, -1, 0},   {4, 1, -1},  {4, 1, 5},
                                           {4, 0, 5},  {0, 1, kMin}, {4, 1, kMax}};
  visit(veksInsert_8u, {kText, 4, kText, 4, to, 2}, kLength, insertions);
  visit(veksInsert_8u_I, {kText, 4, to, number, 2}, kLength, insertions);
  // Length of the text, start, number.
  const std::vector<Numbers> removals = {{4, 0, -1},      {4, -1, 1},  {4, 5, 0},    {4, 0, 5},
                                         {4, 3, 2},       {-1, 0, 0},  {4, kMax, 1}, {4, 4, kMax},
                                         {4, kMax, kMax}, {-2, -1, -1}};
  visit(veksRemove_8u, {kText, kTextSize, to, 2, 3}, kLength, removals);
  visit(veksRemove_8u_I, {to, number, 2, 3}, kLength, removals);
  visit(veksReplaceC_8u, {kText, to, kTextSize, 'a', 'b'}, kLength, oneLength);
  // Capacity, count of the slots, length of the text.
  const std::tuple<const uint8_t*, int32_t, uint8_t, uint8_t* const*, int32_t*, int32_t*> split = {
      kText, kTextSize, 'e', written.slots, number, count};
  visit(veksSplitC_8u_D2L, split, kLength, {{4, 1, -1}, {4, 0, -1}, {4, -1, kMin}});
  visit(veksSplitC_8u_D2L, split, kSize, {{4, 0, 0}, {4, -1, 4}, {4, kMin, 4}});

  visit(veksRegExpGetSize, {kText, number}, StatusNoError, {{}});
  visit(veksRegExpInit, {kText, nullptr, state, &written.offset}, StatusNoError, {{}}, 2);
  visit(veksRegExpSetMatchLimit, {100, state}, kLength, {{-1}, {kMin}});
  visit(veksRegExpSetFormat, {0, state}, StatusRangeError, {{-1}, {2}, {kMin}, {kMax}});
  // Count of the results, length of the text.
  visit(veksRegExpFind_8u, {kText, kTextSize, state, &written.result, count}, kLength,
        {{1, -1}, {0, -1}, {-1, kMin}});
  visit(veksRegExpFind_8u, {kText, kTextSize, state, &written.result, count}, kSize,
        {{0, 1}, {-1, 1}, {kMin, 0}});
  visit(veksRegExpReplaceGetSize, {kText, number}, StatusNoError, {{}}, 1);
  visit(veksRegExpReplaceInit, {kText, written.Template()}, StatusNoError, {{}}, 1);
  // Lengths of the source and of the destination, count of the results.
  visit(veksRegExpReplace_8u,
        {kText, number, to, length, &written.result, count, state, replacement}, kSize,
        {{0, 4, 4}, {4, 0, 4}, {-1, -1, -1}, {kMin, 4, 0}, {4, kMin, 0}});
}

}  // namespace vekch::test

#endif
