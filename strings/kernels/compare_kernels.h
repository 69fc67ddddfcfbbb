// Kernels of the comparisons. The strings have a common length of at least 1; only they are read.
//
// They are inline for the fronts, which lie in the kernels' section with them: a short comparison
// costs no more than the call itself.

#ifndef VEKCH_STRINGS_KERNELS_COMPARE_KERNELS_H
#define VEKCH_STRINGS_KERNELS_COMPARE_KERNELS_H

#include "strings/kernels/byte_range.h"
#include "strings/kernels/scan.h"

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

// Differences after folding: the addend is added to the bytes of the range.
struct DiffersFolded {
  static constexpr Hits kHits = Hits::kClearLanes;
  Differs strings;
  Folding folding;

  VEK_INLINE const uint8_t* Anchor() const { return strings.first; }

  template <class Load>
  VEK_INLINE Block operator()(Load load, ptrdiff_t i) const {
    return folding.Fold(load(strings.first + i)) == folding.Fold(load(strings.second + i));
  }
};

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

// As Compare after folding: a byte from `lowest` to `highest` has `addend` added to it.
VEK_INLINE int32_t CompareFolded(const uint8_t* first, const uint8_t* second, int32_t length,
                                 uint8_t lowest, uint8_t highest, uint8_t addend) {
  const auto fold = [=](uint8_t byte) -> int32_t {
    return byte >= lowest && byte <= highest ? static_cast<uint8_t>(byte + addend) : byte;
  };
  const DiffersFolded probe = {{first, second}, MakeFolding(lowest, highest, addend)};
  const int32_t i = FirstHit(probe, length);
  return i < 0 ? 0 : fold(first[i]) - fold(second[i]);
}

}  // namespace vekch::kernels

#endif
