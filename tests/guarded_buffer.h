// SPDX-License-Identifier: MIT

// Memory between two pages that can't be touched: a byte read or written before it or after
// it ends the test program.

#ifndef VEKCH_TESTS_GUARDED_BUFFER_H
#define VEKCH_TESTS_GUARDED_BUFFER_H

#include <cstddef>
#include <cstdint>

namespace vekch::test {

class GuardedBuffer {
 public:
  // Whole pages for at least `capacity` bytes, filled with 0xA5.
  explicit GuardedBuffer(size_t capacity);
  ~GuardedBuffer();
  GuardedBuffer(const GuardedBuffer&) = delete;
  GuardedBuffer& operator=(const GuardedBuffer&) = delete;

  // The last `length` bytes before the page that follows, or `distance` bytes before that.
  uint8_t* AtEnd(size_t length, size_t distance = 0) const {
    return begin_ + size_ - distance - length;
  }

  // The first byte after the page that precedes, or `distance` bytes after that.
  uint8_t* AtStart(size_t distance = 0) const { return begin_ + distance; }

 private:
  uint8_t* begin_;
  size_t size_;
};

}  // namespace vekch::test

#endif
