// SPDX-License-Identifier: MIT

// The block kernels and the cache budget, beneath the exported functions: linked from the archive.

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

#include "strings/block_routines.h"
#include "strings/kernels/cache_budget.h"
#include "tests/sweep.h"

namespace vekch::test {
namespace {

constexpr size_t kChunk = size_t{256} * 1024;

Output Copied(const Input& in) { return {kNoNumber, in.text}; }
Output Filled(const Input& in) { return {kNoNumber, Bytes(in.text.size(), 0xC5)}; }

// Bytes before the first boundary, which kernels past the cache leave to their callers.
int32_t Head(const Call& c) {
  return std::min(static_cast<int32_t>(-reinterpret_cast<uintptr_t>(c.to) % 16), c.length);
}

vekStatus Copy(Call& c) {
  kernels::Copy(c.text, c.to, c.length);
  return StatusNoError;
}

// Once more with what was learnt of the cache, as if that were a small one.
vekStatus CopyTwice(Call& c) {
  kernels::CacheAnswer cache;
  kernels::Copy(c.text, c.to, c.length, &cache);
  EXPECT_EQ(cache.known, c.length - Head(c) >= kernels::kLargeBlock);
  cache.budget = 1;
  std::fill_n(c.to, c.length, uint8_t{'.'});
  kernels::Copy(c.text, c.to, c.length, &cache);
  return StatusNoError;
}

vekStatus Move(Call& c) {
  kernels::Move(c.text, c.to, c.length);
  return StatusNoError;
}

vekStatus Fill(Call& c) {
  kernels::Fill(0xC5, c.to, c.length);
  return StatusNoError;
}

vekStatus FillForSmallCache(Call& c) {
  const int32_t head = Head(c);
  std::fill_n(c.to, head, uint8_t{0xC5});
  kernels::FillForCache(0xC5, c.to + head, c.length - head, 1);
  return StatusNoError;
}

vekStatus CopyPastCache(Call& c) {
  const int32_t head = Head(c);
  std::copy_n(c.text, head, c.to);
  kernels::CopyPastCache(c.text + head, c.to + head, c.length - head);
  return StatusNoError;
}

vekStatus FillPastCache(Call& c) {
  const int32_t head = Head(c);
  std::fill_n(c.to, head, uint8_t{0xC5});
  kernels::FillPastCache(0xC5, c.to + head, c.length - head);
  return StatusNoError;
}

const Function kKernels[] = {
    {"Copy", Copy, Copied},
    {"CopyTwice", CopyTwice, Copied},
    {"Move", Move, Copied, kAnyPosition},
    {"Fill", Fill, Filled},
    {"CopyPastCache", CopyPastCache, Copied},
    {"FillPastCache", FillPastCache, Filled},
    {"FillForSmallCache", FillForSmallCache, Filled},
};

TEST(BlockTest, EveryLengthAndMisalignment) {
  Sweep sweep;
  Random random(1);
  for (size_t length = 0; length <= kLongest; ++length) {
    const Bytes text = random.Text(length);
    for (size_t position = 0; position < 256; ++position) {
      for (const Function& function : kKernels) {
        sweep.Expect(function, {text}, position + length % 2 * 256);
      }
    }
  }
}

// Around every threshold, with a remainder of every size, at every alignment.
TEST(BlockTest, LargeBlocks) {
  Sweep sweep(3 * kChunk + 128);
  const Bytes text = Random(2).Text(3 * kChunk + 64);
  for (size_t i = 0; i < 16; ++i) {
    for (const size_t length : {2 * kChunk - 1 + i, 3 * kChunk + 1, 3 * kChunk + i,
                                kChunk + 128 + i, kChunk - i, 5000 + i}) {
      for (size_t position = 0; position < 512; position += length < 6000 ? 15 : 270) {
        for (const Function& function : kKernels) {
          sweep.Expect(function, {text.substr(0, length)}, position + i);
        }
      }
    }
  }
}

// The low bits of both addresses decide on the end to begin with.
TEST(BlockTest, CopyFromEitherEnd) {
  constexpr size_t kPage = 4096;
  const Bytes text = Random(4).Text(4 * kPage);
  for (const size_t shift : {0U, 1U, 16U, 319U, 320U, 321U, 2048U, 4095U}) {
    for (size_t length = kPage; length < kPage + 2 * 64 + 16; ++length) {
      Bytes both = text + Bytes(3 * kPage, '.');
      const size_t to = text.size() + shift;
      kernels::Copy(both.data() + 7, both.data() + to + 7, static_cast<int32_t>(length));
      ASSERT_EQ(both, text + Bytes(shift + 7, '.') + text.substr(7, length) +
                          Bytes(3 * kPage - shift - 7 - length, '.'))
          << length << " bytes, " << shift << " above the source";
    }
  }
}

TEST(BlockTest, MoveWithOverlapInBothDirections) {
  const Bytes text = Random(3).Text(4200);
  const auto expectMoved = [&](size_t from, size_t to, size_t length) {
    Bytes moved = text;
    kernels::Move(moved.data() + from, moved.data() + to, static_cast<int32_t>(length));
    ASSERT_EQ(moved, Bytes(text).replace(to, length, text, from, length))
        << length << " bytes from " << from << " to " << to;
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

TEST(BlockTest, ChecksInOrder) {
  const Bytes from = "abcd"_b;
  for (const int32_t length : {INT32_MIN, -1, 0, 4}) {
    const vekStatus expected = length < 1 ? StatusSizeError : StatusNoError;
    const auto fill = [](const uint8_t* source, uint8_t* to, int32_t n) {
      return source == nullptr ? StatusNullPointer : BlockFill(*source, to, n);
    };
    for (vekStatus (*routine)(const uint8_t*, uint8_t*, int32_t) : {BlockCopy, BlockMove, +fill}) {
      Bytes to = "...."_b;
      EXPECT_EQ(routine(nullptr, to.data(), length), StatusNullPointer);
      EXPECT_EQ(routine(from.data(), nullptr, length), StatusNullPointer);
      EXPECT_EQ(routine(from.data(), to.data(), length), expected);
      EXPECT_EQ(to[0], length < 1 ? '.' : 'a');
    }
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

TEST(CacheBudgetTest, EveryDescriptorInEveryPosition) {
  Bytes known(256, 0);
  for (const auto& [size, descriptors] : kSizes) {
    for (const uint32_t descriptor : descriptors) {
      known[descriptor] = 1;
      for (uint32_t position = 1; position < 16; ++position) {
        uint32_t registers[4] = {1, 0, 0, 0};
        registers[position / 4] |= descriptor << position % 4 * 8;
        // In the top byte of a register such a descriptor says that the register holds none.
        const bool masked = position % 4 == 3 && descriptor >= 0x80;
        const auto leaves = Leaves(registers[0], registers[1], registers[2], registers[3]);
        EXPECT_EQ(kernels::CacheSize(leaves), masked ? 0 : size << 10) << descriptor << position;
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
      kernels::CpuLeaves leaves = Leaves(1, 0xeb);
      leaves.highest = highest;
      leaves.sharing = (cores - 1) << 26 | 0x03ECECEC;  // a larger size, if they were descriptors
      EXPECT_EQ(kernels::CacheSize(leaves), 18U << 20);
      EXPECT_EQ(kernels::CacheBudget(leaves), (18U << 20) / (highest < 4 ? 1 : cores));
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

// ---- What is asked, of processors made up and of this one.

struct Cpu {
  const char* what;
  char vendor[13];
  uint32_t highest;
  uint32_t descriptors;            // leaf 2, ebx; eax holds none
  std::vector<uint32_t> copyAsks;  // leaves, in order
  uint32_t budget;
};

const Cpu kCpus[] = {
    {"no descriptor", "GenuineIntel", 36, 0xF0, {2}, 0},
    {"a descriptor", "GenuineIntel", 10, 0x4D, {2, 0, 4}, 4U << 20},
    {"no sharing leaf", "GenuineIntel", 3, 0x4D, {2, 0}, 16U << 20},
    {"no descriptor leaf, which echoes another", "GenuineIntel", 1, 0x4D, {2, 0}, 0},
    {"another vendor", "AuthenticAMD", 16, 0, {2}, 0},
    {"another vendor, with a descriptor", "CentaurHauls", 16, 0x4D, {2, 0}, 0},
};

const Cpu* theCpu;
std::vector<uint32_t> asked;

kernels::CpuRegisters AskTheCpu(uint32_t leaf) {
  asked.push_back(leaf);
  if (leaf == kernels::kDescriptorLeaf) {
    return {1, theCpu->descriptors, 0, 0};
  }
  if (leaf == kernels::kSharingLeaf) {
    return {3U << 26, 0, 0, 0};  // four cores
  }
  uint32_t letters[3];
  std::memcpy(letters, theCpu->vendor, sizeof letters);
  return {theCpu->highest, letters[0], letters[2], letters[1]};
}

TEST(CacheBudgetTest, AsksNoMoreThanMatters) {
  for (const Cpu& cpu : kCpus) {
    theCpu = &cpu;
    asked.clear();
    const auto copying = kernels::ReadCpuLeaves(kernels::kSharingLeaf, AskTheCpu);
    EXPECT_EQ(kernels::CacheBudget(copying), cpu.budget) << cpu.what;
    EXPECT_EQ(asked, cpu.copyAsks) << cpu.what;
    asked.clear();
    const auto filling = kernels::ReadCpuLeaves(kernels::kDescriptorLeaf, AskTheCpu);
    EXPECT_EQ(kernels::CacheSize(filling), cpu.budget == 0 ? 0 : 16U << 20) << cpu.what;
    EXPECT_EQ(std::count(asked.begin(), asked.end(), kernels::kSharingLeaf), 0) << cpu.what;
  }
  const auto own = kernels::ReadCpuLeaves(kernels::kSharingLeaf, kernels::AskThisCpu);
  EXPECT_LE(kernels::CacheBudget(own), kernels::CacheSize(own));
}

}  // namespace
}  // namespace vekch::test
