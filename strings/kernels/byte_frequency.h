// SPDX-License-Identifier: MIT

// How frequent byte values are in texts, as ranks.

#ifndef VEKCH_STRINGS_KERNELS_BYTE_FREQUENCY_H
#define VEKCH_STRINGS_KERNELS_BYTE_FREQUENCY_H

#include <stdint.h>

namespace vekch::kernels {

// Byte values from the most to the less frequent in text; what is not listed is rarer still.
constexpr char kCommonBytes[] =
    " etaoinsrhldcumfpgwybv,.\nkTIASECx-ROPLNDMFq0\"j1H'2WU)(B/:zGV=;_3Y*549K867J<>";

struct ByteFrequencyRank {
  uint8_t of[256];

  constexpr ByteFrequencyRank() : of() {
    constexpr int32_t kCount = sizeof kCommonBytes - 1;
    for (int32_t i = 0; i < kCount; ++i) {
      of[static_cast<uint8_t>(kCommonBytes[i])] = static_cast<uint8_t>(kCount - i);
    }
    of[0] = 255;  // fills binary files
  }
};
constexpr ByteFrequencyRank kByteFrequencyRank;

}  // namespace vekch::kernels

#endif
