// SPDX-License-Identifier: MIT

// Which bytes of a literal to look for first.

#ifndef VEKCH_REGEXP_CHARACTERS_RAREST_BYTES_H
#define VEKCH_REGEXP_CHARACTERS_RAREST_BYTES_H

#include <stdint.h>

#include "regexp/characters/bytes.h"
#include "regexp/object/record.h"
#include "strings/kernels/byte_frequency.h"

namespace vekch::regexp {

// Where the bytes of a literal are that texts hold least often in both cases; the second is the
// first again in a literal of one byte.
struct RarestBytes {
  int32_t first = 0;
  int32_t second = 0;

  RarestBytes(int32_t firstPosition, int32_t secondPosition)
      : first(firstPosition), second(secondPosition) {}

  explicit RarestBytes(const Literal& literal) {
    for (int32_t i = 1; i < literal.length; ++i) {
      if (FrequencyRank(literal.bytes[i]) < FrequencyRank(literal.bytes[first])) {
        second = first;
        first = i;
      } else if (second == first ||
                 FrequencyRank(literal.bytes[i]) < FrequencyRank(literal.bytes[second])) {
        second = i;
      }
    }
  }

  static int32_t FrequencyRank(uint8_t byte) {
    return kernels::kByteFrequencyRank.of[IsAsciiLetter(byte) ? byte | 0x20 : byte];
  }
};

}  // namespace vekch::regexp

#endif
