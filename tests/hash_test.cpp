// SPDX-License-Identifier: MIT

// The string hashes against their defining loops: every length and alignment, elements that only
// the later steps see, every overlap of string and hash, and values that callers may have stored.

#include "tests/byte_string_models.h"

namespace vekch::test {
namespace {

// Random elements, and the extreme ones, for which lanes overflow first.
TEST(HashTest, EveryLengthAndMisalignment) {
  Sweep sweep;
  Random random(1);
  for (size_t length = 0; length <= 2 * kLongest; ++length) {
    for (size_t position = 0; position < 512; position += 15) {
      const Bytes texts[] = {random.Text(length), random.Text(length, 255, 1), Bytes(length, 255)};
      for (const Function& function : kHashFunctions) {
        sweep.Expect(function, {texts[position / 15 % 3]}, position);
      }
    }
  }
}

// A zero element ends the reading, not only the hashing: the length may promise more than there is.
TEST(HashTest, NothingIsReadAfterTheZero) {
  GuardedBuffer buffer(kLongest);
  for (const size_t size : {1U, 2U}) {
    for (size_t length = 0; length < 100; ++length) {
      uint8_t* string = buffer.AtEnd(size * (length + 1));
      std::fill_n(string, size * length, uint8_t{7});
      std::fill_n(string + size * length, size, uint8_t{0});
      Bytes hash(4, 0);
      Bytes expected(4, 0);
      RunHash(kHashes[2], string, INT32_MAX, size, hash.data());
      DefineHash(kHashes[2], string, INT32_MAX, size, expected.data());
      EXPECT_EQ(hash, expected) << length << " elements";
    }
  }
}

TEST(HashTest, EveryOverlap) {
  Random random(7);
  for (const Hash& hash : kHashes) {
    for (size_t length = 0; length <= 140; length += length < 40 ? 1 : 7) {
      for (size_t at = 0; at < kMargin + length + 8; ++at) {
        const size_t size = 1 + length % 2;
        const size_t from = kMargin + length / 2 % 2;
        const auto count = static_cast<int32_t>(length / size);
        Bytes ours = random.Text(2 * kMargin + length);
        Bytes model = ours;
        DefineHash(hash, model.data() + from, count, size, model.data() + at);
        ASSERT_EQ(RunHash(hash, ours.data() + from, count, size, ours.data() + at), StatusNoError);
        ASSERT_EQ(ours, model) << length << " bytes from " << from << " on, hash at " << at;
      }
    }
  }
}

TEST(HashTest, ReferenceValues) {
  struct Reference {
    std::basic_string<uint16_t> string;
    uint32_t hashes[3];
  };
  const Reference references[] = {
      {{}, {0, 0, 5381}},
      {{97}, {97, 97, 177604}},
      {{97, 98, 99}, {291, 96354, 193409669}},
      {{97, 98, 0, 99, 100}, {1442, 92504224, 5860902}},
      {std::basic_string<uint16_t>(40, 65), {63, 2248520320U, 77933445}},
      {{0, 97}, {97, 97, 5381}},
      {{0x0100}, {256, 256, 177317}},
  };
  for (const auto& [string, hashes] : references) {
    const auto length = static_cast<int32_t>(string.size());
    for (size_t i = 0; i < 3; ++i) {
      uint32_t result = 0;
      kHashes[i].units(string.data(), length, &result);
      EXPECT_EQ(result, hashes[i]) << length << " units";
      if (string != references[6].string) {
        kHashes[i].bytes(Bytes(string.begin(), string.end()).data(), length, &result);
        EXPECT_EQ(result, hashes[i]) << length << " bytes";
      }
    }
  }
}

}  // namespace
}  // namespace vekch::test
