// SPDX-License-Identifier: MIT

// Case mapping against a model that spells the letters out: every length and misalignment, every
// byte value at every position many times over, into a copy and onto the text.

#include "tests/byte_string_models.h"

namespace vekch::test {
namespace {

TEST(CaseTest, EveryLengthAndMisalignment) {
  Sweep sweep;
  Random random(1);
  for (size_t length = 0; length <= kLongest; ++length) {
    for (size_t position = 0; position < 256; ++position) {
      const Bytes text = position % 2 == 0 ? random.Text(length) : random.Text(length, 64, 0x3D);
      for (const Function& function : kMappings) {
        sweep.Expect(function, {text}, position + length % 2 * 256);
      }
    }
  }
}

}  // namespace
}  // namespace vekch::test
