// SPDX-License-Identifier: MIT

// Cache figures from the descriptors of CPUID leaf 2: the first entry of the table below whose
// descriptor the processor reports gives the size. The table runs from the largest cache to the
// smallest, so that the outermost cache is the one that counts.

#include "strings/kernels/cache_budget.h"

#include <cpuid.h>

#include "strings/kernels/block.h"

namespace vekch::kernels {
namespace {

// The descriptors of leaf 2 are this vendor's; for every other vendor the cache is unknown.
constexpr uint32_t kTunedVendor[3] = {signature_INTEL_ebx, signature_INTEL_edx,
                                      signature_INTEL_ecx};

constexpr int32_t kDescriptorCount = 43;

// Codes of the sizes in the table: a factor in the high four bits, and in the low four how often
// 256 KiB times the factor is doubled.
enum SizeCode : uint8_t {
  k24M = 0xC3,
  k18M = 0x93,
  k16M = 0x16,
  k12M = 0x34,
  k8M = 0x15,
  k6M = 0x33,
  k4M = 0x14,
  k3M = 0x32,
  k2M = 0x13,
  k1M = 0x12,
  k512K = 0x11,
};

// Pairs of a descriptor and a size code, ended by a zero byte.
__attribute__((section("VEKDATA"))) const uint8_t kDescriptorTable[2 * kDescriptorCount + 1] = {
    0xEC, k24M,  0xEB, k18M,  0x4D,  k16M,  0xEA,  k12M,  0x4C,  k12M, 0xE4,  k8M,  0xDE,
    k8M,  0x4B,  k8M,  0x47,  k8M,   0x4E,  k6M,   0x4A,  k6M,   0xE3, k4M,   0xDD, k4M,
    0xD8, k4M,   0x49, k4M,   0x29,  k4M,   0x46,  k4M,   0x48,  k3M,  0xE2,  k2M,  0xDC,
    k2M,  0xD7,  k2M,  0xD2,  k2M,   0x25,  k2M,   0x7D,  k2M,   0x85, k2M,   0x45, k2M,
    0xD6, k1M,   0xD1, k1M,   0x23,  k1M,   0x87,  k1M,   0x7C,  k1M,  0x78,  k1M,  0x84,
    k1M,  0x44,  k1M,  0xD0,  k512K, 0x22,  k512K, 0x7B,  k512K, 0x80, k512K, 0x86, k512K,
    0x3E, k512K, 0x7F, k512K, 0x83,  k512K, 0x43,  k512K, 0};

constexpr uint32_t SizeOf(uint8_t code) { return uint32_t{code} >> 4 << ((code & 15) + 18); }

static_assert(SizeOf(k24M) == 24U << 20 && SizeOf(k3M) == 3U << 20 && SizeOf(k512K) == 512U << 10,
              "size codes");

bool IsTunedFor(const CpuLeaves& leaves) {
  return leaves.highest >= kDescriptorLeaf && leaves.vendor[0] == kTunedVendor[0] &&
         leaves.vendor[1] == kTunedVendor[1] && leaves.vendor[2] == kTunedVendor[2];
}

// The values of the descriptors that registers hold, as a set.
struct Descriptors {
  uint64_t members[4] = {};

  explicit Descriptors(const uint32_t* registers) {
    for (int32_t r = 0; r < 4; ++r) {
      if (registers[r] >> 31 != 0) {
        continue;  // the register holds no descriptors
      }
      // The low byte of the first register is a count, no descriptor.
      for (int32_t shift = r == 0 ? 8 : 0; shift < 32; shift += 8) {
        const auto value = static_cast<uint8_t>(registers[r] >> shift);
        members[value / 64] |= uint64_t{1} << (value % 64);
      }
    }
  }

  bool Contain(uint8_t value) const { return (members[value / 64] >> (value % 64) & 1) != 0; }
};

// The size that the descriptors give, whoever made the processor.
VEK_KERNEL uint32_t DescribedSize(const uint32_t* registers) {
  if ((registers[0] & 0xFF) != 1) {
    return kUnknownCache;
  }
  const Descriptors descriptors(registers);
  for (const uint8_t* entry = kDescriptorTable; *entry != 0; entry += 2) {
    if (descriptors.Contain(entry[0])) {
      return SizeOf(entry[1]);
    }
  }
  return kUnknownCache;
}

}  // namespace

VEK_KERNEL CpuRegisters AskThisCpu(uint32_t leaf) {
  CpuRegisters answer;
  __cpuid_count(leaf, 0, answer.a, answer.b, answer.c, answer.d);
  return answer;
}

// The descriptors are asked for first: a processor that has none in the table needs no vendor. What
// another vendor, or a processor without that leaf, answers there counts for nothing in the end.
VEK_KERNEL CpuLeaves ReadCpuLeaves(uint32_t last, AskCpu ask) {
  CpuLeaves leaves = {};
  const CpuRegisters described = ask(kDescriptorLeaf);
  const uint32_t descriptors[4] = {described.a, described.b, described.c, described.d};
  if (DescribedSize(descriptors) == kUnknownCache) {
    return leaves;
  }
  const CpuRegisters first = ask(0);
  leaves.highest = first.a;
  leaves.vendor[0] = first.b;
  leaves.vendor[1] = first.d;
  leaves.vendor[2] = first.c;
  if (!IsTunedFor(leaves)) {
    return leaves;
  }
  __builtin_memcpy(leaves.descriptors, descriptors, sizeof descriptors);
  if (last >= kSharingLeaf && leaves.highest >= kSharingLeaf) {
    leaves.sharing = ask(kSharingLeaf).a;
  }
  return leaves;
}

VEK_KERNEL uint32_t CacheSize(const CpuLeaves& leaves) {
  return IsTunedFor(leaves) ? DescribedSize(leaves.descriptors) : kUnknownCache;
}

VEK_KERNEL uint32_t CacheBudget(const CpuLeaves& leaves) {
  const uint32_t cores = leaves.highest >= kSharingLeaf ? (leaves.sharing >> 26) + 1 : 1;
  return CacheSize(leaves) / cores;
}

}  // namespace vekch::kernels
