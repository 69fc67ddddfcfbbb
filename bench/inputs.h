// SPDX-License-Identifier: MIT

// Inputs that the families share: buffers with known alignment, filled, random or English.

#ifndef VEKCH_BENCH_INPUTS_H
#define VEKCH_BENCH_INPUTS_H

#include <stdint.h>

#include <string_view>
#include <vector>

namespace vekch_bench {

// From a few bytes to beyond every cache.
constexpr int64_t kAllSizes[] = {1,  2,  3,   5,   8,       13,   16,      24,      31,
                                 48, 64, 100, 256, 1 << 10, 4096, 1 << 16, 1 << 20, 1 << 26};
// Those of them that show the kernels' stages, in caches.
constexpr int64_t kSomeSizes[] = {8, 16, 31, 64, 100, 256, 1 << 10, 4096, 1 << 16};

// Bytes that start `offset` bytes after a 64-byte boundary, with a zero byte after the last.
class Input {
 public:
  explicit Input(int64_t length, int64_t offset = 0)
      : storage_(static_cast<size_t>(length + offset + 128)), length_(length) {
    const uintptr_t start = reinterpret_cast<uintptr_t>(storage_.data());
    data_ = storage_.data() + (64 - start % 64) + offset;
  }
  Input(const Input& other) = delete;  // a copy's alignment would differ
  Input(Input&& other) = default;
  Input& operator=(Input&& other) = default;

  uint8_t* data() const { return data_; }
  char* chars() const { return reinterpret_cast<char*>(data_); }
  int32_t length() const { return static_cast<int32_t>(length_); }
  size_t size() const { return static_cast<size_t>(length_); }
  std::string_view view() const { return {chars(), size()}; }

  // Overwrites the bytes from `position` on; a negative position counts from the end.
  void Put(int64_t position, std::string_view bytes);

 private:
  std::vector<uint8_t> storage_;
  int64_t length_;
  uint8_t* data_;
};

inline std::string_view View(const uint8_t* bytes, int32_t length) {
  return {reinterpret_cast<const char*>(bytes), static_cast<size_t>(length)};
}

// How many of the input's bytes belong to the set.
int64_t Count(const Input& input, std::string_view set);

// The same bytes for the same arguments in every run.
Input Filled(int64_t length, uint8_t value, int64_t offset = 0);
Input Repeated(int64_t length, std::string_view unit, int64_t offset = 0);
Input RandomOf(int64_t length, std::string_view alphabet, int64_t offset = 0);
Input RandomLetters(int64_t length, int64_t offset = 0);  // a to z
Input RandomBytes(int64_t length, int64_t offset = 0);    // 0 to 255
// The licence texts that the system keeps, over and over.
Input English(int64_t length, int64_t offset = 0);

// The same pseudo-random lengths, from lowest to highest, in every run.
std::vector<int32_t> RandomLengths(size_t count, int32_t lowest, int32_t highest);
int64_t Sum(const std::vector<int32_t>& lengths);

}  // namespace vekch_bench

#endif
