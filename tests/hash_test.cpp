// The string hashes against their defining loops: reference values, every length and alignment,
// elements that only the later steps see, and every overlap of string and hash.

#include <gtest/gtest.h>

#include <cstring>
#include <ostream>
#include <string>
#include <vector>

#include "tests/guarded_buffer.h"
#include "vekch/vekch.h"

namespace vekch::test {
namespace {

constexpr uint32_t kUnwritten = 0x5A5A5A5A;
constexpr int32_t kLongest = 300;

uint32_t StepShiftXor(uint32_t h, uint32_t c) { return (h << 1) ^ c; }
uint32_t StepMultiply31(uint32_t h, uint32_t c) { return h * 31 + c; }
uint32_t StepMultiply33(uint32_t h, uint32_t c) { return (h * 33) ^ c; }

struct Hash {
  const char* name;
  vekStatus (*bytes)(const uint8_t*, int32_t, uint32_t*) noexcept;
  vekStatus (*units)(const uint16_t*, int32_t, uint32_t*) noexcept;
  uint32_t (*step)(uint32_t, uint32_t);
  uint32_t start;
  bool stopsAtZero;
  bool storesEach;  // an overlapping hash is stored before every read
};

void PrintTo(const Hash& hash, std::ostream* out) { *out << hash.name; }

uint32_t Element(const uint8_t* string, size_t size, int32_t i) {
  const uint8_t* p = string + static_cast<size_t>(i) * size;
  return size == 1 ? *p : *p + p[1] * 256U;
}

class HashTest : public testing::TestWithParam<Hash> {
 protected:
  // Elements of `size` bytes, at any address; `hash` is an address too.
  static vekStatus Call(const uint8_t* string, size_t size, int32_t length, uint8_t* hash) {
    auto* to = reinterpret_cast<uint32_t*>(hash);
    return size == 1 ? GetParam().bytes(string, length, to)
                     : GetParam().units(reinterpret_cast<const uint16_t*>(string), length, to);
  }

  // The definition, with the hash kept where the caller wants it.
  static void Model(const uint8_t* string, size_t size, int32_t length, uint8_t* hash) {
    const Hash& definition = GetParam();
    uint32_t h = definition.start;
    const auto store = [&] { memcpy(hash, &h, sizeof h); };
    for (int32_t i = 0; i < length; ++i) {
      if (definition.storesEach) {
        store();
      }
      const uint32_t element = Element(string, size, i);
      if (definition.stopsAtZero && element == 0) {
        break;
      }
      h = definition.step(h, element);
    }
    store();
  }

  static void ExpectLikeModel(const uint8_t* string, size_t size, int32_t length) {
    uint32_t hash = kUnwritten;
    uint32_t expected = 0;
    Model(string, size, length, reinterpret_cast<uint8_t*>(&expected));
    ASSERT_EQ(Call(string, size, length, reinterpret_cast<uint8_t*>(&hash)), StatusNoError);
    ASSERT_EQ(hash, expected) << length << " elements of " << size << " bytes";
  }

  static uint8_t Random(uint32_t* state) {
    *state = *state * 1664525 + 1013904223;
    return static_cast<uint8_t>(*state >> 24);
  }
};

// Random elements, and the extreme ones, for which lanes overflow first.
TEST_P(HashTest, EveryLengthAndMisalignment) {
  GuardedBuffer buffer(2 * kLongest + 32);
  uint32_t state = 1;
  for (int32_t length = 0; length <= kLongest; ++length) {
    for (const size_t size : {1U, 2U}) {
      const size_t bytes = static_cast<size_t>(length) * size;
      for (size_t shift = 0; shift < 16; ++shift) {
        for (uint8_t* string : {buffer.AtEnd(bytes, shift), buffer.AtStart(shift)}) {
          for (size_t i = 0; i < bytes; ++i) {
            string[i] = shift == 15 ? 255 : Random(&state) | (shift % 2);
          }
          ExpectLikeModel(string, size, length);
        }
      }
    }
  }
}

// One odd element, each value of a byte and the edges of a unit, at every position.
TEST_P(HashTest, EveryElementEverywhere) {
  std::vector<uint8_t> string(2 * 100);
  for (const size_t size : {1U, 2U}) {
    for (size_t where = 0; where < 100; ++where) {
      for (const uint8_t filler : {uint8_t{1}, uint8_t{0xFF}}) {
        for (int value = 0; value < 256; ++value) {
          std::fill(string.begin(), string.end(), filler);
          string[where * size] = static_cast<uint8_t>(value);
          string[where * size + size - 1] = static_cast<uint8_t>(size == 1 ? value : value * 85);
          ExpectLikeModel(string.data(), size, 100);
        }
      }
    }
  }
}

// A zero element ends the reading, not only the hashing: the length may promise more than there is.
TEST(HashTerminated, NothingIsReadBehindTheZero) {
  GuardedBuffer buffer(kLongest);
  for (size_t length = 0; length < 100; ++length) {
    uint8_t* bytes = buffer.AtEnd(length + 1);
    uint8_t* units = buffer.AtEnd(2 * length + 2);
    std::fill_n(units, 2 * length, uint8_t{7});
    units[2 * length] = units[2 * length + 1] = 0;
    for (const bool isUnits : {false, true}) {
      uint32_t hashes[2] = {kUnwritten, kUnwritten};
      for (const int32_t promised : {static_cast<int32_t>(length), INT32_MAX}) {
        uint32_t* hash = &hashes[promised == INT32_MAX ? 1 : 0];
        isUnits ? veksHashMSCS_16u32u(reinterpret_cast<uint16_t*>(units), promised, hash)
                : veksHashMSCS_8u32u(bytes, promised, hash);
      }
      EXPECT_EQ(hashes[0], hashes[1]) << length << " elements";
    }
  }
}

TEST_P(HashTest, EveryOverlap) {
  constexpr size_t kRoom = 16;
  uint32_t state = 7;
  for (const size_t size : {1U, 2U}) {
    for (int32_t length = 0; length <= 70; length += length < 20 ? 1 : 7) {
      const size_t bytes = static_cast<size_t>(length) * size;
      for (size_t shift = 0; shift < 2; ++shift) {
        for (size_t at = 0; at < kRoom + bytes + 8; ++at) {
          std::vector<uint8_t> ours(2 * kRoom + bytes);
          for (uint8_t& byte : ours) {
            byte = Random(&state);
          }
          std::vector<uint8_t> model = ours;
          Model(model.data() + kRoom + shift, size, length, model.data() + at);
          ASSERT_EQ(Call(ours.data() + kRoom + shift, size, length, ours.data() + at),
                    StatusNoError);
          ASSERT_EQ(ours, model) << length << " elements of " << size << " bytes from "
                                 << kRoom + shift << " on, hash at " << at;
        }
      }
    }
  }
}

TEST_P(HashTest, ChecksInOrder) {
  const uint8_t string[2] = {'a', 0};
  for (const size_t size : {1U, 2U}) {
    for (int nulls = 0; nulls < 4; ++nulls) {
      for (const int32_t length : {INT32_MIN, -1, 0, 1}) {
        uint32_t hash = kUnwritten;
        const vekStatus expected = nulls != 0   ? StatusNullPointer
                                   : length < 0 ? StatusLengthError
                                                : StatusNoError;
        EXPECT_EQ(Call((nulls & 1) != 0 ? nullptr : string, size, length,
                       (nulls & 2) != 0 ? nullptr : reinterpret_cast<uint8_t*>(&hash)),
                  expected);
        EXPECT_EQ(hash == kUnwritten, expected != StatusNoError);
      }
    }
  }
}

constexpr Hash kShiftXor = {"ShiftXor", veksHash_8u32u, veksHash_16u32u, StepShiftXor, 0,
                            false,      false};
constexpr Hash kMultiply31 = {
    "Multiply31", veksHashSJ2_8u32u, veksHashSJ2_16u32u, StepMultiply31, 0, false, true};
constexpr Hash kMultiply33 = {
    "Multiply33", veksHashMSCS_8u32u, veksHashMSCS_16u32u, StepMultiply33, 5381, true, false};

INSTANTIATE_TEST_SUITE_P(All, HashTest, testing::Values(kShiftXor, kMultiply31, kMultiply33),
                         [](const auto& test) { return test.param.name; });

// Values that callers may have stored.
TEST(HashReference, Values) {
  struct Reference {
    std::vector<uint16_t> string;
    uint32_t shiftXor, multiply31, multiply33;
  };
  const Reference references[] = {
      {{}, 0, 0, 5381},
      {{97}, 97, 97, 177604},
      {{97, 98, 99}, 291, 96354, 193409669},
      {{97, 98, 0, 99, 100}, 1442, 92504224, 5860902},
      {std::vector<uint16_t>(40, 65), 63, 2248520320U, 77933445},
      {{0, 97}, 97, 97, 5381},
      {{0x0100}, 256, 256, 177317},
  };
  for (const Reference& reference : references) {
    std::vector<uint16_t> units = reference.string;
    std::vector<uint8_t> bytes;
    bool isBytes = true;
    for (const uint16_t unit : units) {
      bytes.push_back(static_cast<uint8_t>(unit));
      isBytes = isBytes && unit < 256;
    }
    const auto length = static_cast<int32_t>(units.size());
    units.push_back(0xFFFF);  // so that even the empty string has an address
    bytes.push_back(0xFF);
    const std::pair<const Hash&, uint32_t> expectations[] = {{kShiftXor, reference.shiftXor},
                                                             {kMultiply31, reference.multiply31},
                                                             {kMultiply33, reference.multiply33}};
    for (const auto& [hash, expected] : expectations) {
      uint32_t result = kUnwritten;
      hash.units(units.data(), length, &result);
      EXPECT_EQ(result, expected) << hash.name << ", " << length << " units";
      if (isBytes) {
        hash.bytes(bytes.data(), length, &result);
        EXPECT_EQ(result, expected) << hash.name << ", " << length << " bytes";
      }
    }
  }
}

}  // namespace
}  // namespace vekch::test
