// The pattern object as one block: its size, and clearing it.

#ifndef VEKCH_REGEXP_OBJECT_OBJECT_H
#define VEKCH_REGEXP_OBJECT_OBJECT_H

#include <stdint.h>

#include "vekch/regexp_program.h"

namespace vekch::regexp {

// Bytes of a pattern up to its terminating zero byte, which is the last byte read.
inline uint32_t LengthOf(const uint8_t* pattern) {
  uint32_t length = 0;
  while (pattern[length] != 0) {
    ++length;
  }
  return length;
}

constexpr uint32_t ObjectSize(uint32_t patternLength) {
  return RegExpFixedSize + RegExpSizePerByte * patternLength;
}

}  // namespace vekch::regexp

#endif
