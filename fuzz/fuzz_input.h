// SPDX-License-Identifier: MIT

// What the fuzz targets make of their inputs, and blocks of just the size that is needed.

#ifndef VEKCH_FUZZ_FUZZ_INPUT_H
#define VEKCH_FUZZ_FUZZ_INPUT_H

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "vekch/vekch.h"

namespace vekch::fuzz {

// An input is a head of single bytes, then strings that end with a zero byte, the last one with the
// input. Of what is missing bytes are 0 and strings empty.
constexpr size_t kHeadSize = 8;

class Input {
 public:
  Input(const uint8_t* data, size_t size)
      : head_(size > 0 ? reinterpret_cast<const char*>(data) : "", std::min(size, kHeadSize)),
        rest_(size > kHeadSize ? reinterpret_cast<const char*>(data + kHeadSize) : "",
              size > kHeadSize ? size - kHeadSize : 0) {
    head_.resize(kHeadSize);
  }

  uint8_t Head(size_t i) const { return static_cast<uint8_t>(head_[i]); }

  // The next string.
  std::string Next() {
    const size_t length = std::min(rest_.find('\0'), rest_.size());
    const std::string text = rest_.substr(0, length);
    rest_.erase(0, length + 1);
    return text;
  }

  // What is left, zero bytes included, but no more than `most`.
  std::string Rest(size_t most) const { return rest_.substr(0, most); }

 private:
  std::string head_;
  std::string rest_;
};

inline void Require(bool holds, const std::string& what) {
  if (!holds) {
    std::fprintf(stderr, "%s\n", what.c_str());
    std::abort();
  }
}

template <class T>
using Block = std::unique_ptr<T, decltype(&std::free)>;

constexpr uint8_t kUnwritten = 0xAA;  // what blocks are full of at first

template <class T>
Block<T> MakeBlock(size_t size) {
  Block<T> block(static_cast<T*>(std::malloc(size)), &std::free);
  std::memset(static_cast<void*>(block.get()), kUnwritten, size);
  return block;
}

inline const uint8_t* Bytes(const std::string& text) {
  return reinterpret_cast<const uint8_t*>(text.c_str());
}

// A string as it is, or with its terminator, in a block that ends with it.
inline Block<uint8_t> MakeText(const std::string& text, bool isTerminated) {
  const size_t size = text.size() + (isTerminated ? 1 : 0);
  Block<uint8_t> block = MakeBlock<uint8_t>(size);
  std::copy_n(text.c_str(), size, block.get());
  return block;
}

inline std::string OptionLetters(uint8_t bits) {
  std::string letters;
  for (const char letter : {'s', 'm', 'i', 'x', 'g'}) {
    letters += (bits & 1) != 0 ? std::string(1, letter) : "";
    bits = static_cast<uint8_t>(bits >> 1);
  }
  return letters;
}

inline size_t ObjectSize(const std::string& pattern) {
  int32_t size = 0;
  veksRegExpGetSize(Bytes(pattern), &size);
  return static_cast<size_t>(size);
}

struct Compiled {
  vekStatus status;
  int32_t errorOffset;
};

// The pattern's block is gone when its object is used.
inline Compiled CompileInto(RegExpState* state, const std::string& pattern,
                            const std::string& options) {
  Compiled compiled = {StatusNoError, -1};
  const Block<uint8_t> text = MakeText(pattern, true);
  compiled.status = veksRegExpInit(text.get(), Bytes(options), state, &compiled.errorOffset);
  return compiled;
}

// Null if the pattern doesn't compile.
inline Block<RegExpState> Compile(const std::string& pattern, const std::string& options) {
  Block<RegExpState> state = MakeBlock<RegExpState>(ObjectSize(pattern));
  if (CompileInto(state.get(), pattern, options).status != StatusNoError) {
    state.reset();
  }
  return state;
}

}  // namespace vekch::fuzz

#endif
