// SPDX-License-Identifier: MIT

// A pattern's object for tests: compiled flush against a page that can't be touched, searched with,
// and what a search answers in one form.

#ifndef VEKCH_TESTS_PATTERN_OBJECT_H
#define VEKCH_TESTS_PATTERN_OBJECT_H

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

#include "tests/guarded_buffer.h"
#include "vekch/regexp_program.h"
#include "vekch/vekch.h"

inline bool operator==(const RegExpFindResult& a, const RegExpFindResult& b) {
  return a.pointer == b.pointer && a.length == b.length;
}

namespace vekch::test {

#ifdef VEKCH_TEST_INSTRUMENTED
constexpr bool kIsInstrumented = true;
#else
constexpr bool kIsInstrumented = false;
#endif
constexpr size_t kShare = VEKCH_TEST_SHARE;  // one of so many patterns is tried

// Whether one of them is: spread so that no period of what a list is made of is met.
constexpr bool IsInShare(size_t number) {
  return (number * 0x9E3779B97F4A7C15U >> 32) % kShare == 0;
}

constexpr int32_t kDefaultLimit = 10000;
constexpr int32_t kNoOffset = 0x5A5A5A5A;

inline const uint8_t* BytesOf(const std::string& text) {
  return reinterpret_cast<const uint8_t*>(text.c_str());
}

inline std::string Repeat(const std::string& text, size_t times) {
  std::string all;
  while (times-- > 0) {
    all += text;
  }
  return all;
}

using Words = std::vector<std::string>;

// What spaces separate; nothing is a word as well.
inline Words Split(const std::string& text) {
  Words words;
  std::istringstream parts(text + " ");
  for (std::string word; std::getline(parts, word, ' ');) {
    words.push_back(word);
  }
  return words;
}

// Every text of up to `most` words.
inline Words AllTexts(const Words& words, size_t most) {
  Words texts = {""};
  for (size_t begin = 0; most > 0; --most) {
    for (const size_t end = texts.size(); begin < end; ++begin) {
      for (const std::string& word : words) {
        texts.push_back(texts[begin] + word);
      }
    }
  }
  return texts;
}

class PatternObject {
 public:
  // For patterns of up to so many bytes.
  explicit PatternObject(size_t longest)
      : pattern_(longest + 1), blocks_(RegExpFixedSize + RegExpSizePerByte * longest) {}

  // A test must not go on without the pattern that it is about.
  explicit PatternObject(const std::string& pattern, const std::string& options = "",
                         int32_t format = 1, int32_t limit = kDefaultLimit)
      : PatternObject(pattern.size()) {
    if (Compile(pattern, options.c_str()) != StatusNoError) {
      std::abort();
    }
    veksRegExpSetFormat(format, state_);
    veksRegExpSetMatchLimit(limit, state_);
  }

  vekStatus Compile(const std::string& pattern, const char* options = nullptr) {
    uint8_t* const text = pattern_.AtEnd(pattern.size() + 1);
    std::memcpy(text, pattern.c_str(), pattern.size() + 1);
    int32_t size = 0;
    veksRegExpGetSize(text, &size);
    state_ = reinterpret_cast<RegExpState*>(blocks_.AtEnd(static_cast<size_t>(size)));
    offset_ = kNoOffset;
    const vekStatus status =
        veksRegExpInit(text, reinterpret_cast<const uint8_t*>(options), state_, &offset_);
    std::memset(text, '?', pattern.size());  // the object does not need it any more
    return status;
  }

  // Of all memory in which objects may lie.
  void Fill(uint8_t value) { std::fill(blocks_.AtStart(), blocks_.AtEnd(0), value); }

  RegExpState* State() const { return state_; }
  int32_t Offset() const { return offset_; }  // of the fault

 private:
  GuardedBuffer pattern_;
  GuardedBuffer blocks_;
  RegExpState* state_ = nullptr;
  int32_t offset_ = kNoOffset;
};

struct SearchAnswer {
  vekStatus status = StatusNoError;
  int32_t count = 0;
  std::vector<RegExpFindResult> results;  // `count` of them, unless the status is an error
  bool isComplete = true;                 // false if it was given up, after too many steps
};

inline SearchAnswer Search(RegExpState* state, const uint8_t* subject, int32_t length,
                           int32_t room = 40) {
  SearchAnswer answer;
  answer.count = room;
  answer.results.resize(static_cast<size_t>(room));
  answer.status = veksRegExpFind_8u(subject, length, state, answer.results.data(), &answer.count);
  answer.results.resize(answer.status < 0 ? 0 : static_cast<size_t>(answer.count));
  return answer;
}

// "start+length", "-" for none, and the status where it is another one.
inline std::string Show(const SearchAnswer& answer, const uint8_t* subject) {
  std::string text = answer.status == StatusNoError                  ? ""
                     : answer.status == StatusRegExpResultsTruncated ? "truncated "
                     : answer.status == StatusRegExpMatchLimit       ? "limit "
                                                                     : "? ";
  text += answer.status < 0 ? std::to_string(answer.count) + " " : "";
  for (const RegExpFindResult& each : answer.results) {
    text += each.pointer == nullptr
                ? each.length == -1 ? "- " : "? "
                : std::to_string(each.pointer - subject) + "+" + std::to_string(each.length) + " ";
  }
  return text.substr(0, text.size() - (text.empty() ? 0 : 1));
}

}  // namespace vekch::test

#endif
