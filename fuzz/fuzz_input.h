// SPDX-License-Identifier: MIT

// What the fuzz targets make of their inputs: options, and blocks of just the size that is needed.

#ifndef VEKCH_FUZZ_FUZZ_INPUT_H
#define VEKCH_FUZZ_FUZZ_INPUT_H

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

namespace vekch::fuzz {

template <class T>
using Block = std::unique_ptr<T, decltype(&std::free)>;

template <class T>
Block<T> MakeBlock(size_t size) {
  return {static_cast<T*>(std::malloc(size)), &std::free};
}

inline std::string OptionLetters(uint8_t bits) {
  std::string letters;
  for (const char letter : {'s', 'm', 'i', 'x', 'g'}) {
    letters += (bits & 1) != 0 ? std::string(1, letter) : "";
    bits = static_cast<uint8_t>(bits >> 1);
  }
  return letters;
}

}  // namespace vekch::fuzz

#endif
