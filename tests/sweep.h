// SPDX-License-Identifier: MIT

// One harness for all functions that read one or two strings and give a number, a string or both:
// a function is a row with its naive model, an input is tried where its strings lie between pages
// that can't be touched.

#ifndef VEKCH_TESTS_SWEEP_H
#define VEKCH_TESTS_SWEEP_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>

#include "tests/guarded_buffer.h"
#include "vekch/status.h"

namespace vekch::test {

using Bytes = std::basic_string<uint8_t>;

inline Bytes operator""_b(const char* text, size_t length) { return Bytes(text, text + length); }

inline int32_t Size(const Bytes& bytes) { return static_cast<int32_t>(bytes.size()); }

#ifdef VEKCH_TEST_SANITIZED
constexpr size_t kInputShare = 7;  // one of so many inputs is tried, where every step costs more
#else
constexpr size_t kInputShare = 1;
#endif
constexpr size_t kAlways = 200;   // of a sweep's inputs are tried anyway
constexpr size_t kLongest = 300;  // beyond, the loops of all functions repeat
constexpr size_t kMargin = 16;
constexpr uint8_t kUnwritten = 0xEE;
constexpr int32_t kNoNumber = 0x5A5A5A5A;

// What a function is given. `x` and `y` are byte values, positions or counts.
struct Call {
  const uint8_t* text;
  int32_t length;
  const uint8_t* other;
  int32_t otherLength;
  int32_t x, y;
  uint8_t* to;
  int32_t number = kNoNumber;
};

struct Input {
  Bytes text;
  Bytes other = {};
  int32_t x = 0;
  int32_t y = 0;
};

struct Output {
  int32_t number = kNoNumber;
  Bytes stored = {};
};

enum Positions { kApart = 1, kInPlace = 2, kAnyPosition = 3 };

struct Function {
  const char* name;
  vekStatus (*run)(Call& call);
  Output (*model)(const Input& input);
  Positions positions = kApart;  // where the result may go: beside the text, onto it
};

class Sweep {
 public:
  explicit Sweep(size_t longest = 3 * kLongest)
      : text_(longest), other_(longest), result_(longest + 2 * kMargin) {}

  // `position` from 0 to 511 says how the strings lie: at all distances from the page after them,
  // or before them, and from each other.
  void Expect(const Function& function, const Input& input, size_t position = 0) {
    if (++calls_ > kAlways && calls_ % kInputShare != 0) {
      return;
    }
    const Output expected = function.model(input);
    const uint8_t* other = Put(other_.AtEnd(input.other.size(), position / 16 % 16), input.other);
    for (const Positions where : {kApart, kInPlace}) {
      if ((function.positions & where) == 0) {
        continue;
      }
      const bool inPlace = where == kInPlace;
      const Bytes before = inPlace ? input.text : Bytes();
      const size_t room = std::max(before.size(), expected.stored.size());
      const size_t gap = (position * 5 + position / 16) % 16;
      uint8_t* to = result_.AtEnd(room, gap);
      std::memset(to - kMargin, kUnwritten, room + kMargin + gap);
      Put(to, before);
      const uint8_t* text = inPlace ? to : PutText(input, position);
      Call call = {text,    Size(input.text), other, Size(input.other),
                   input.x, input.y,          to,    kNoNumber};
      ASSERT_EQ(function.run(call), StatusNoError) << function.name;
      ASSERT_EQ(call.number, expected.number) << Describe(function, input, position);
      // In place, bytes after a shorter result stay.
      const Bytes rest = before.substr(std::min(before.size(), expected.stored.size()));
      const Bytes after =
          Bytes(kMargin, kUnwritten) + expected.stored + rest + Bytes(gap, kUnwritten);
      ASSERT_EQ(std::memcmp(to - kMargin, after.data(), after.size()), 0)
          << Describe(function, input, position) << (inPlace ? ", in place" : "");
      ASSERT_TRUE(inPlace || std::equal(input.text.begin(), input.text.end(), text));
    }
  }

 private:
  static uint8_t* Put(uint8_t* p, const Bytes& bytes) {
    std::copy(bytes.begin(), bytes.end(), p);
    return p;
  }

  // The bytes around the text are what is sought in it, so that one read beyond an end counts.
  const uint8_t* PutText(const Input& input, size_t position) {
    const size_t shift = position % 16;
    const uint8_t sought = input.other.empty() ? kUnwritten : input.other[0];
    const bool atEnd = position < 256;
    uint8_t* p = atEnd ? text_.AtEnd(input.text.size(), shift) : text_.AtStart(shift);
    std::memset(atEnd ? p + input.text.size() : text_.AtStart(), sought, shift);
    std::memset(atEnd ? p - kMargin : p + input.text.size(), sought, kMargin);
    return Put(p, input.text);
  }

  static std::string Describe(const Function& function, const Input& input, size_t position) {
    return std::string(function.name) + " of " + std::to_string(input.text.size()) + " and " +
           std::to_string(input.other.size()) + " bytes, " + std::to_string(input.x) + ", " +
           std::to_string(input.y) + ", position " + std::to_string(position);
  }

  GuardedBuffer text_;
  GuardedBuffer other_;
  GuardedBuffer result_;
  size_t calls_ = 0;
};

class Random {
 public:
  explicit Random(unsigned seed) : engine_(seed) {}

  size_t Below(size_t limit) { return engine_() % limit; }

  // Bytes from `lowest` on, of so many values.
  Bytes Text(size_t length, size_t values = 256, size_t lowest = 0) {
    Bytes text(length, 0);
    for (uint8_t& byte : text) {
      byte = static_cast<uint8_t>(lowest + Below(values));
    }
    return text;
  }

 private:
  std::mt19937 engine_;
};

}  // namespace vekch::test

#endif
