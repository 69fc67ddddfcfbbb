// SPDX-License-Identifier: MIT

// Kernels of the string hashes. A string is `count` elements, bytes or 16-bit units, at any
// address; only they are read.
//
// The shift-xor and the multiply-31 hash are linear in h: the hash of a string is that of its
// front, scaled by as many steps as its rear has elements, joined with the hash of its rear. So
// neighbours can be joined pairwise, in the lanes of a word or of a block, instead of one element
// after the other; and since the hash of nothing is 0, zeros before a string change nothing.
// The multiply-33 hash is not linear: its exclusive-or comes between the multiplications.
//
// The ways for short strings are inline for the fronts, which lie in the kernels' section with
// them: a short hash costs little more than the call.

#ifndef VEKCH_STRINGS_KERNELS_HASH_KERNELS_H
#define VEKCH_STRINGS_KERNELS_HASH_KERNELS_H

#include "strings/kernels/block.h"
#include "vekch/status.h"

namespace vekch::kernels {

constexpr uint32_t Power(uint32_t base, int32_t exponent) {
  uint32_t power = 1;
  for (int32_t i = 0; i < exponent; ++i) {
    power *= base;
  }
  return power;
}

// Mixing steps: the hash of a front and that of a rear of kCount elements make that of both. They
// work on all lanes of a word at once as long as each lane holds what comes out.
struct ShiftXor {
  template <int32_t kCount>
  static VEK_INLINE uint64_t Join(uint64_t front, uint64_t rear) {
    return (front << kCount) ^ rear;
  }
};

struct Multiply31 {
  template <int32_t kCount>
  static VEK_INLINE uint64_t Join(uint64_t front, uint64_t rear) {
    return front * Power(31, kCount) + rear;
  }
};

// The hash of the elements in a word, its lowest byte being the first.
template <class Mix, class Element>
VEK_INLINE uint32_t HashWord(uint64_t word) {
  constexpr uint64_t kEvenBytes = 0x00FF00FF00FF00FF;
  constexpr uint64_t kEvenUnits = 0x0000FFFF0000FFFF;
  constexpr int32_t kPerUnit = 2 / sizeof(Element);
  if constexpr (sizeof(Element) == 1) {
    word = Mix::template Join<1>(word & kEvenBytes, (word >> 8) & kEvenBytes);
  }
  word = Mix::template Join<kPerUnit>(word & kEvenUnits, (word >> 16) & kEvenUnits);
  word = Mix::template Join<2 * kPerUnit>(word & 0xFFFFFFFF, word >> 32);
  return static_cast<uint32_t>(word);
}

// A string of 1 element to 7 bytes. Three elements cost less one by one than what sorts them into
// lanes.
template <class Mix, class Element>
VEK_INLINE uint32_t HashOfFew(const uint8_t* p, int32_t count) {
  if (__builtin_expect(count <= 3, 1)) {
    uint64_t h = LoadWord<Element>(p);
    if (count > 1) {
      h = Mix::template Join<1>(h, LoadWord<Element>(p + sizeof(Element)));
    }
    if (count > 2) {
      h = Mix::template Join<1>(h, LoadWord<Element>(p + 2 * sizeof(Element)));
    }
    return static_cast<uint32_t>(h);
  }
  // Two ends of four bytes; what both hold is shifted out of the first.
  const uint64_t first = uint64_t{LoadWord<uint32_t>(p)} << (64 - 8 * count);
  const uint64_t last = LoadWord<uint32_t>(p + count - 4);
  return HashWord<Mix, Element>((last << 32) | static_cast<uint32_t>(first));
}

// A string of at least 8 bytes, 8 bytes a step. The first step takes what the others leave over,
// with zeros before it.
template <class Mix, class Element>
VEK_INLINE uint32_t HashOfWords(const uint8_t* p, int32_t count) {
  const int32_t bytes = count * static_cast<int32_t>(sizeof(Element));
  const int32_t front = (bytes - 1) % 8 + 1;
  uint32_t h = HashWord<Mix, Element>(LoadWord<uint64_t>(p) << (64 - 8 * front));
  for (int32_t i = front; i < bytes; i += 8) {
    const uint32_t next = HashWord<Mix, Element>(LoadWord<uint64_t>(p + i));
    h = static_cast<uint32_t>(Mix::template Join<8 / sizeof(Element)>(h, next));
  }
  return h;
}

// h = (h << 1) ^ c for each element c, at least one, from 0. An element's influence is shifted out
// of h within 32 steps: only the last 32 elements count.
template <class Element>
VEK_INLINE uint32_t HashShiftXor(const uint8_t* p, int32_t count) {
  constexpr int32_t kCounting = 32;
  if (__builtin_expect(count < static_cast<int32_t>(8 / sizeof(Element)), 1)) {
    return HashOfFew<ShiftXor, Element>(p, count);
  }
  if (count > kCounting) {
    p += (count - kCounting) * static_cast<ptrdiff_t>(sizeof(Element));
    count = kCounting;
  }
  return HashOfWords<ShiftXor, Element>(p, count);
}

// h = h * 31 + c for each element c, at least one, from 0, of less than kMultiply31Step bytes.
constexpr int32_t kMultiply31Step = 2 * kBlock;
template <class Element>
VEK_INLINE uint32_t HashShortMultiply31(const uint8_t* p, int32_t count) {
  return __builtin_expect(count < static_cast<int32_t>(8 / sizeof(Element)), 1)
             ? HashOfFew<Multiply31, Element>(p, count)
             : HashOfWords<Multiply31, Element>(p, count);
}

// Kernels that are called store the hash to the four bytes at `hash` and return StatusNoError, so
// that the call can be the last thing that a front does.

// The multiply-31 hash of a string of at least kMultiply31Step bytes.
vekStatus Multiply31Bytes(const uint8_t* string, int32_t count, uint8_t* hash);
vekStatus Multiply31Units(const uint8_t* string, int32_t count, uint8_t* hash);

// The multiply-31 hash with each value of h, the initial 0 too, stored before the next element is
// read: for a hash that overlaps the string.
vekStatus StoreEachMultiply31Bytes(const uint8_t* string, int32_t count, uint8_t* hash);
vekStatus StoreEachMultiply31Units(const uint8_t* string, int32_t count, uint8_t* hash);

constexpr uint32_t kMultiply33Start = 5381;

// Mixes the element at p into h, unless it is zero; then gives false.
template <class Element>
VEK_INLINE bool MixMultiply33(const uint8_t* p, uint32_t* h) {
  const Element element = LoadWord<Element>(p);
  if (element == 0) {
    return false;
  }
  *h = ((*h << 5) + *h) ^ element;
  return true;
}

// h = (h * 33) ^ c for each element c before the first zero element.
//
// A shift, an addition and an exclusive-or, each waiting for the one before: three cycles an
// element are the least that the chain through h takes. Four elements a step leave room for all
// else beside it, wherever the loop comes to lie.
template <class Element>
VEK_INLINE uint32_t HashMultiply33(const uint8_t* p, int32_t count) {
  constexpr ptrdiff_t kSize = sizeof(Element);
  uint32_t h = kMultiply33Start;
  for (; count >= 4; count -= 4, p += 4 * kSize) {
    if (!MixMultiply33<Element>(p, &h) || !MixMultiply33<Element>(p + kSize, &h) ||
        !MixMultiply33<Element>(p + 2 * kSize, &h) || !MixMultiply33<Element>(p + 3 * kSize, &h)) {
      return h;
    }
  }
  while (count > 0 && MixMultiply33<Element>(p, &h)) {
    --count;
    p += kSize;
  }
  return h;
}

}  // namespace vekch::kernels

#endif
