// The block kernels and the cache budget, beneath the exported functions: linked from the archive.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <utility>
#include <vector>

#include "strings/block_routines.h"
#include "strings/kernels/cache_budget.h"
#include "tests/guarded_buffer.h"

namespace vekch::test {
namespace {

using Bytes = std::vector<uint8_t>;

constexpr int32_t kLongest = 300;
constexpr size_t kChunk = size_t{256} * 1024;

Bytes RandomBytes(size_t length, unsigned seed = 1) {
  std::mt19937 random(seed);
  Bytes bytes(length);
  for (uint8_t& byte : bytes) {
    byte = static_cast<uint8_t>(random());
  }
  return bytes;
}

void FillBytes(const uint8_t* source, uint8_t* destination, int32_t length) {
  kernels::Fill(*source, destination, length);
}

void FillBytesPastCache(const uint8_t* source, uint8_t* destination, int32_t length) {
  kernels::FillPastCache(*source, destination, length);
}

struct Kernel {
  const char* name;
  void (*run)(const uint8_t*, uint8_t*, int32_t);
  bool fills;
  bool alignedOnly;
};

void PrintTo(const Kernel& kernel, std::ostream* out) { *out << kernel.name; }

class BlockTest : public testing::TestWithParam<Kernel> {
 protected:
  // Runs the kernel and expects exactly `length` bytes of the result.
  void ExpectStored(const uint8_t* source, uint8_t* destination, size_t length) {
    const auto expected = [&](size_t i) { return GetParam().fills ? source[0] : source[i]; };
    constexpr size_t kMargin = 16;
    uint8_t before[kMargin];
    std::memcpy(before, destination - kMargin, kMargin);
    std::memset(destination, ~source[0], length);
    GetParam().run(source, destination, static_cast<int32_t>(length));
    ASSERT_EQ(std::memcmp(before, destination - kMargin, kMargin), 0) << length;
    for (size_t i = 0; i < length; ++i) {
      ASSERT_EQ(destination[i], expected(i)) << "byte " << i << " of " << length;
    }
  }

  bool Takes(const uint8_t* destination) const {
    return !GetParam().alignedOnly || reinterpret_cast<uintptr_t>(destination) % 16 == 0;
  }
};

TEST_P(BlockTest, EveryLengthAndMisalignment) {
  const Bytes text = RandomBytes(kLongest + 16);
  GuardedBuffer from(text.size());
  GuardedBuffer to(text.size() + 64);
  for (size_t length = 0; length <= kLongest; ++length) {
    for (size_t shifts = 0; shifts < 256; ++shifts) {
      uint8_t* source = shifts % 2 == 0 ? from.AtEnd(std::max<size_t>(length, 1), shifts % 16)
                                        : from.AtStart(shifts % 16);
      uint8_t* destination = to.AtEnd(length, shifts / 16);
      if (Takes(destination)) {
        std::memcpy(source, text.data(), std::max<size_t>(length, 1));
        // The bytes behind the destination, up to the page that can't be touched.
        std::memset(destination + length, 0x77, shifts / 16);
        ExpectStored(source, destination, length);
        ASSERT_TRUE(std::all_of(destination + length, destination + length + shifts / 16,
                                [](uint8_t byte) { return byte == 0x77; }));
      }
    }
  }
}

// Around every threshold, with a remainder of every size, at every alignment.
TEST_P(BlockTest, LargeBlocks) {
  const size_t most = 3 * kChunk + 64;
  const Bytes text = RandomBytes(most + 32);
  GuardedBuffer from(text.size());
  GuardedBuffer to(text.size() + 64);
  std::vector<std::pair<size_t, size_t>> cases;  // length and shift
  for (size_t i = 0; i < 16; ++i) {
    cases.insert(cases.end(), {{2 * kChunk - 1 + i, i}, {3 * kChunk + 1, i}, {3 * kChunk + i, 0}});
    cases.insert(cases.end(), {{kChunk + 128 + i, i * 5}, {kChunk - i, i * 3}, {5000 + i, i * 7}});
  }
  for (const auto& [length, shift] : cases) {
    uint8_t* source = from.AtEnd(length, shift % 16);
    std::memcpy(source, text.data(), length);
    for (size_t place = 0; place < 16; ++place) {
      uint8_t* destination = to.AtEnd(length, place);
      if (Takes(destination) &&
          (length < 6000 || (place * 5 + shift) % 4 == 0 || GetParam().alignedOnly)) {
        ExpectStored(source, destination, length);
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(All, BlockTest,
                         testing::Values(Kernel{"Copy", kernels::Copy, false, false},
                                         Kernel{"Move", kernels::Move, false, false},
                                         Kernel{"Fill", FillBytes, true, false},
                                         Kernel{"CopyPastCache", kernels::CopyPastCache, false,
                                                true},
                                         Kernel{"FillPastCache", FillBytesPastCache, true, true}),
                         [](const auto& test) { return test.param.name; });

TEST(BlockMoveTest, OverlapInBothDirections) {
  const Bytes text = RandomBytes(4200);
  const auto expectMoved = [&](size_t from, size_t to, size_t length) {
    Bytes moved = text;
    Bytes expected = text;
    std::copy_n(text.begin() + static_cast<ptrdiff_t>(from), length,
                expected.begin() + static_cast<ptrdiff_t>(to));
    kernels::Move(moved.data() + from, moved.data() + to, static_cast<int32_t>(length));
    ASSERT_EQ(moved, expected) << length << " bytes from " << from << " to " << to;
  };
  for (size_t length = 0; length <= kLongest; ++length) {
    for (size_t shift = 0; shift <= 80; ++shift) {
      expectMoved(100 + length % 16, 100 + shift, length);
      expectMoved(100 + shift, 100 + length % 16, length);
    }
  }
  for (const size_t shift : {0U, 1U, 15U, 16U, 17U, 63U, 64U, 65U, 500U}) {
    expectMoved(1, 1 + shift, 3000 + shift);
    expectMoved(1 + shift, 1, 3000 + shift);
  }
}

TEST(BlockRoutinesTest, ChecksInOrder) {
  uint8_t from[4] = {1, 2, 3, 4};
  for (const int32_t length : {INT32_MIN, -1, 0, 4}) {
    const vekStatus expected = length < 1 ? StatusSizeError : StatusNoError;
    for (const auto routine : {BlockCopy, BlockMove}) {
      uint8_t to[4] = {9, 9, 9, 9};
      EXPECT_EQ(routine(nullptr, to, length), StatusNullPointer);
      EXPECT_EQ(routine(from, nullptr, length), StatusNullPointer);
      EXPECT_EQ(routine(from, to, length), expected);
      EXPECT_EQ(to[0], length < 1 ? 9 : 1);
    }
    uint8_t to[4] = {9, 9, 9, 9};
    EXPECT_EQ(BlockFill(7, nullptr, length), StatusNullPointer);
    EXPECT_EQ(BlockFill(7, to, length), expected);
    EXPECT_EQ(to[3], length < 1 ? 9 : 7);
  }
}

// ---- The cache budget, from answers made up.

constexpr uint32_t kNoDescriptors = 0x80000000;

kernels::CpuLeaves Leaves(uint32_t eax, uint32_t ebx = 0, uint32_t ecx = 0, uint32_t edx = 0) {
  kernels::CpuLeaves leaves = {};
  std::memcpy(leaves.vendor, "GenuineIntel", 12);
  leaves.highest = kernels::kSharingLeaf - 1;
  const uint32_t registers[4] = {eax, ebx, ecx, edx};
  std::memcpy(leaves.descriptors, registers, sizeof registers);
  return leaves;
}

// From the largest size to the smallest, in KiB.
const std::vector<std::pair<uint32_t, Bytes>> kSizes = {
    {24 << 10, {0xec}},
    {18 << 10, {0xeb}},
    {16 << 10, {0x4d}},
    {12 << 10, {0xea, 0x4c}},
    {8 << 10, {0xe4, 0xde, 0x4b, 0x47}},
    {6 << 10, {0x4e, 0x4a}},
    {4 << 10, {0xe3, 0xdd, 0xd8, 0x49, 0x29, 0x46}},
    {3 << 10, {0x48}},
    {2 << 10, {0xe2, 0xdc, 0xd7, 0xd2, 0x25, 0x7d, 0x85, 0x45}},
    {1 << 10, {0xd6, 0xd1, 0x23, 0x87, 0x7c, 0x78, 0x84, 0x44}},
    {512, {0xd0, 0x22, 0x7b, 0x80, 0x86, 0x3e, 0x7f, 0x83, 0x43}}};

TEST(CacheBudgetTest, EveryDescriptorInEveryPlace) {
  Bytes known(256, 0);
  for (const auto& [size, descriptors] : kSizes) {
    for (const uint32_t descriptor : descriptors) {
      known[descriptor] = 1;
      for (uint32_t place = 1; place < 16; ++place) {
        uint32_t registers[4] = {1, 0, 0, 0};
        registers[place / 4] |= descriptor << place % 4 * 8;
        // In the top byte of a register such a descriptor says that the register holds none.
        const bool masked = place % 4 == 3 && descriptor >= 0x80;
        const auto leaves = Leaves(registers[0], registers[1], registers[2], registers[3]);
        EXPECT_EQ(kernels::CacheSize(leaves), masked ? 0 : size << 10) << descriptor << place;
      }
      // A smaller cache elsewhere doesn't count, whichever comes first.
      EXPECT_EQ(kernels::CacheSize(Leaves(0x00434301, descriptor, 0x43)), size << 10);
    }
  }
  EXPECT_EQ(std::count(known.begin(), known.end(), 1), 43);
  for (uint32_t descriptor = 0; descriptor < 256; ++descriptor) {
    EXPECT_EQ(kernels::CacheSize(Leaves(1, descriptor)) != 0, known[descriptor] == 1) << descriptor;
  }
}

TEST(CacheBudgetTest, WhatMakesItUnknown) {
  EXPECT_EQ(kernels::CacheSize(Leaves(1, 0x4d)), 16U << 20);
  for (const uint32_t low : {0U, 2U, 0x4dU, 0xffU}) {
    EXPECT_EQ(kernels::CacheSize(Leaves(low, 0x4d)), 0U) << "low byte " << low;
  }
  EXPECT_EQ(kernels::CacheSize(Leaves(1, 0x4d | kNoDescriptors)), 0U);
  EXPECT_EQ(kernels::CacheSize(Leaves(0x4d01 | kNoDescriptors, 0x43)), 512U << 10);
  for (size_t letter = 0; letter < 12; ++letter) {
    kernels::CpuLeaves leaves = Leaves(1, 0x4d);
    reinterpret_cast<uint8_t*>(leaves.vendor)[letter] ^= 0x20;
    EXPECT_EQ(kernels::CacheSize(leaves), 0U) << "letter " << letter;
    EXPECT_EQ(kernels::CacheBudget(leaves), 0U) << "letter " << letter;
  }
}

TEST(CacheBudgetTest, OnlyTheCopySharesTheCache) {
  for (uint32_t cores = 1; cores <= 64; ++cores) {
    for (const uint32_t highest : {2U, 3U, 4U, 22U}) {
      kernels::CpuLeaves leaves = Leaves(1, 0xec);
      leaves.highest = highest;
      leaves.sharing = (cores - 1) << 26 | 0x03FFFFFF;
      EXPECT_EQ(kernels::CacheSize(leaves), 24U << 20);
      EXPECT_EQ(kernels::CacheBudget(leaves), (24U << 20) / (highest < 4 ? 1 : cores));
    }
  }
}

TEST(CacheBudgetTest, WhatGoesPastTheCache) {
  constexpr int64_t kFloor = 524288;
  constexpr int64_t kMost = INT32_MAX;
  for (const int64_t budget : {int64_t{0}, int64_t{300000}, 2 * kFloor - 1, 2 * kFloor,
                               2 * kFloor + 1, int64_t{3} << 20, int64_t{24} << 20}) {
    for (const int64_t length : {int64_t{1}, kFloor - 1, kFloor, kFloor + 1, budget / 2 - 1,
                                 budget / 2, (budget + 1) / 2, budget - 1, budget, kMost}) {
      const bool large = length >= kFloor && budget != 0;
      const auto figure = static_cast<uint32_t>(budget);
      EXPECT_EQ(kernels::CopyStreams(length, figure), large && length >= budget - length);
      EXPECT_EQ(kernels::FillStreams(length, figure), large && length >= budget);
    }
  }
}

TEST(CacheBudgetTest, ThisProcessor) {
  // Whatever it is: the figures fit together, and a leaf not asked for is zero.
  const auto copying = kernels::ReadCpuLeaves(kernels::kSharingLeaf);
  const auto filling = kernels::ReadCpuLeaves(kernels::kDescriptorLeaf);
  EXPECT_EQ(filling.sharing, 0U);
  EXPECT_EQ(kernels::CacheSize(filling), kernels::CacheSize(copying));
  EXPECT_LE(kernels::CacheBudget(copying), kernels::CacheSize(copying));
}

}  // namespace
}  // namespace vekch::test
