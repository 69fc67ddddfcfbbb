// SPDX-License-Identifier: MIT

// Kernels of the comparisons. The strings have a common length of at least 1; only they are read.
//
// They are inline for the fronts, which lie in the kernels' section with them: a short comparison
// costs no more than the call itself.

#ifndef VEKCH_STRINGS_KERNELS_COMPARE_KERNELS_H
#define VEKCH_STRINGS_KERNELS_COMPARE_KERNELS_H

#include "strings/kernels/byte_range.h"
#include "strings/kernels/scan.h"
#include "vekch/status.h"

namespace vekch::kernels {

// A scan for differences follows the boundaries of the first string.
struct Differs {
  static constexpr Hits kHits = Hits::kClearLanes;
  const uint8_t* first;
  const uint8_t* second;

  VEK_INLINE const uint8_t* Anchor() const { return first; }

  template <class Load>
  VEK_INLINE Block operator()(Load load, ptrdiff_t i) const {
    return load(first + i) == load(second + i);
  }
};

// Of the bits in which blocks differ those that are more than the case of a letter: where `a`, one
// of the blocks, has a letter, bit 0x20 says no more. One test of a range does, where folding both
// blocks takes two.
VEK_INLINE Block WithoutCase(Block difference, Block a) {
  const Block caseBit = Splat('a' - 'A');
  return Without(difference, InRange(a | caseBit, MakeRange('a', 'z')) & caseBit);
}

// The bytes of a string of 1 to 7 bytes in the order of their addresses, some of them twice: the
// first difference of two such words is the first difference of the strings.
VEK_INLINE uint64_t WordOfFew(const uint8_t* p, int32_t length) {
  if (length >= 4) {
    return LoadWord<uint32_t>(p) | (uint64_t{LoadWord<uint32_t>(p + length - 4)} << 32);
  }
  if (length >= 2) {
    return LoadWord<uint16_t>(p) | (uint32_t{LoadWord<uint16_t>(p + length - 2)} << 16);
  }
  return *p;
}

// Difference of the lowest bytes in which the words differ, which they do.
VEK_INLINE int32_t DifferenceOfWords(uint64_t first, uint64_t second) {
  const int32_t shift = LowestBit(first ^ second) & ~7;
  return static_cast<uint8_t>(first >> shift) - static_cast<uint8_t>(second >> shift);
}

// Difference of the bytes at the first position at which the strings differ, 0 if there is none.
// Words do for short strings, since no position is asked for.
VEK_INLINE int32_t Compare(const uint8_t* first, const uint8_t* second, int32_t length) {
  if (length >= kBlock) {
    const int32_t i = FirstHit(Differs{first, second}, length);
    return i < 0 ? 0 : first[i] - second[i];
  }
  uint64_t a;
  uint64_t b;
  if (length >= 8) {
    a = LoadWord<uint64_t>(first);
    b = LoadWord<uint64_t>(second);
    if (a == b) {
      a = LoadWord<uint64_t>(first + length - 8);
      b = LoadWord<uint64_t>(second + length - 8);
    }
  } else {
    a = WordOfFew(first, length);
    b = WordOfFew(second, length);
  }
  return a == b ? 0 : DifferenceOfWords(a, b);
}

// Whether the strings are equal.
VEK_INLINE bool Equal(const uint8_t* first, const uint8_t* second, int32_t length) {
  if (length >= kBlock) {
    return FirstHit(Differs{first, second}, length) < 0;
  }
  if (length >= 8) {
    const ptrdiff_t tail = length - 8;
    return ((LoadWord<uint64_t>(first) ^ LoadWord<uint64_t>(second)) |
            (LoadWord<uint64_t>(first + tail) ^ LoadWord<uint64_t>(second + tail))) == 0;
  }
  return WordOfFew(first, length) == WordOfFew(second, length);
}

VEK_INLINE int32_t FoldCase(uint8_t byte) {
  return byte >= 'A' && byte <= 'Z' ? byte + ('a' - 'A') : byte;
}

VEK_INLINE int32_t DifferenceOfFolded(uint8_t first, uint8_t second) {
  return FoldCase(first) - FoldCase(second);
}

// A number whose lowest bit is the first lane in which a block differs by more than case, 0 if
// there is none: the subtraction gives the negated bits of those lanes, and their lowest bit is the
// same.
VEK_INLINE uint32_t BitsWithoutCase(Block difference, Block a) {
  return LaneBits(WithoutCase(difference, a) == ZeroBlock()) - 0xFFFFU;
}

// The comparison of strings of 2 and 3 bytes: the middle one may be the last.
VEK_INLINE int32_t CompareThreeIgnoringCase(const uint8_t* first, const uint8_t* second,
                                            int32_t length) {
  const ptrdiff_t last = length - 1;
  const auto word = [=](const uint8_t* p) __attribute__((always_inline)) {
    return BlockOf32(LoadWord<uint16_t>(p) | (uint32_t{p[last]} << 16));
  };
  const Block a = word(first);
  const uint32_t bits = BitsWithoutCase(a ^ word(second), a);
  if (bits == 0) {
    return 0;
  }
  const int32_t i = LowestBit(bits);
  return DifferenceOfFolded(first[i], second[i]);
}

// The comparison of strings of 4 to 15 bytes. Four words that meet or overlap serve all these
// lengths alike, so that lengths that vary meet one branch: one for 8 bytes and more, which are two
// loads each, made single lengths faster by a tenth and those that vary slower by a third.
VEK_INLINE int32_t CompareFewIgnoringCase(const uint8_t* first, const uint8_t* second,
                                          int32_t length) {
  const ptrdiff_t inner = (length >> 1) & 4;
  const ptrdiff_t tail = length - 4;
  const auto words = [=](const uint8_t* p) __attribute__((always_inline)) {
    return FourWords(p, p + inner, p + tail - inner, p + tail);
  };
  const Block a = words(first);
  const uint32_t bits = BitsWithoutCase(a ^ words(second), a);
  if (bits == 0) {
    return 0;
  }
  const int32_t i = LowestBit(bits);
  if (i < 8) {
    return DifferenceOfFolded(first[i], second[i]);
  }
  const ptrdiff_t skipped = tail - inner - 8;
  return DifferenceOfFolded(first[i + skipped], second[i + skipped]);
}

// As Compare, of small letters instead of capitals; for strings of less than 16 bytes.
VEK_INLINE int32_t CompareShortIgnoringCase(const uint8_t* first, const uint8_t* second,
                                            int32_t length) {
  if (length >= 4) {
    return CompareFewIgnoringCase(first, second, length);
  }
  return length == 1 ? DifferenceOfFolded(*first, *second)
                     : CompareThreeIgnoringCase(first, second, length);
}

// The same for strings of 16 bytes and more. Stores the result to the four bytes at `result` and
// returns StatusNoError, so that the call can be the last thing that a front does.
vekStatus CompareLongIgnoringCase(const uint8_t* first, const uint8_t* second, int32_t length,
                                  int32_t* result);

}  // namespace vekch::kernels

#endif
