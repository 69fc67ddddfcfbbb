// SPDX-License-Identifier: MIT

// The string hashes: argument checks, and how the hash is written, around the kernels.

#include "vekch/hash.h"

#include "frame/checks.h"
#include "strings/kernels/hash_kernels.h"

namespace vekch {
namespace {

// `kernel` gets string and hash as bytes, since they may lie at any address.
template <class Element, class Kernel>
VEK_INLINE vekStatus CheckedHash(const Element* string, int32_t length, uint32_t* hash,
                                 uint32_t hashOfEmpty, Kernel kernel) {
  if (AnyNull(string) || hash == nullptr) {
    return StatusNullPointer;
  }
  auto* to = reinterpret_cast<uint8_t*>(hash);
  if (length <= 0) {
    if (length < 0) {
      return StatusLengthError;
    }
    kernels::StoreWord(to, hashOfEmpty);
    return StatusNoError;
  }
  return kernel(reinterpret_cast<const uint8_t*>(string), length, to);
}

template <class Element>
struct ShiftXorKernel {
  VEK_INLINE vekStatus operator()(const uint8_t* string, int32_t length, uint8_t* hash) const {
    kernels::StoreWord(hash, kernels::HashShiftXor<Element>(string, length));
    return StatusNoError;
  }
};

// Whether the four bytes of a hash share one with the string.
VEK_INLINE bool Overlaps(const uint8_t* hash, const uint8_t* string, int64_t bytes) {
  constexpr uintptr_t kReach = sizeof(uint32_t) - 1;
  const uintptr_t ahead = reinterpret_cast<uintptr_t>(hash) - reinterpret_cast<uintptr_t>(string);
  return ahead + kReach < static_cast<uintptr_t>(bytes) + kReach;
}

// A hash that overlaps the string is stored after every element, so that later elements are read
// with it written over them; otherwise when it is stored can't be observed.
template <class Element>
struct Multiply31Kernel {
  VEK_INLINE vekStatus operator()(const uint8_t* string, int32_t length, uint8_t* hash) const {
    constexpr bool kBytes = sizeof(Element) == 1;
    const int64_t bytes = length * int64_t{sizeof(Element)};
    if (__builtin_expect(Overlaps(hash, string, bytes), 0)) {
      return kBytes ? kernels::StoreEachMultiply31Bytes(string, length, hash)
                    : kernels::StoreEachMultiply31Units(string, length, hash);
    }
    if (bytes >= kernels::kMultiply31Step) {
      return kBytes ? kernels::Multiply31Bytes(string, length, hash)
                    : kernels::Multiply31Units(string, length, hash);
    }
    kernels::StoreWord(hash, kernels::HashShortMultiply31<Element>(string, length));
    return StatusNoError;
  }
};

template <class Element>
struct Multiply33Kernel {
  VEK_INLINE vekStatus operator()(const uint8_t* string, int32_t length, uint8_t* hash) const {
    kernels::StoreWord(hash, kernels::HashMultiply33<Element>(string, length));
    return StatusNoError;
  }
};

}  // namespace
}  // namespace vekch

VEK_KERNEL vekStatus veksHash_8u32u(const uint8_t* string, int32_t length,
                                    uint32_t* hash) noexcept {
  return vekch::CheckedHash(string, length, hash, 0, vekch::ShiftXorKernel<uint8_t>{});
}

VEK_KERNEL vekStatus veksHash_16u32u(const uint16_t* string, int32_t length,
                                     uint32_t* hash) noexcept {
  return vekch::CheckedHash(string, length, hash, 0, vekch::ShiftXorKernel<uint16_t>{});
}

VEK_KERNEL vekStatus veksHashSJ2_8u32u(const uint8_t* string, int32_t length,
                                       uint32_t* hash) noexcept {
  return vekch::CheckedHash(string, length, hash, 0, vekch::Multiply31Kernel<uint8_t>{});
}

VEK_KERNEL vekStatus veksHashSJ2_16u32u(const uint16_t* string, int32_t length,
                                        uint32_t* hash) noexcept {
  return vekch::CheckedHash(string, length, hash, 0, vekch::Multiply31Kernel<uint16_t>{});
}

VEK_KERNEL vekStatus veksHashMSCS_8u32u(const uint8_t* string, int32_t length,
                                        uint32_t* hash) noexcept {
  return vekch::CheckedHash(string, length, hash, vekch::kernels::kMultiply33Start,
                            vekch::Multiply33Kernel<uint8_t>{});
}

VEK_KERNEL vekStatus veksHashMSCS_16u32u(const uint16_t* string, int32_t length,
                                         uint32_t* hash) noexcept {
  return vekch::CheckedHash(string, length, hash, vekch::kernels::kMultiply33Start,
                            vekch::Multiply33Kernel<uint16_t>{});
}
