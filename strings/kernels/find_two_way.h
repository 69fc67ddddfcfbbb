// SPDX-License-Identifier: MIT

// The two-way method of Crochemore and Perrin: linear time and constant space for every needle and
// text. A direction says how the strings are indexed.

#ifndef VEKCH_STRINGS_KERNELS_FIND_TWO_WAY_H
#define VEKCH_STRINGS_KERNELS_FIND_TWO_WAY_H

#include "strings/kernels/scan.h"
#include "strings/kernels/taken.h"

namespace vekch::kernels {

// A string's byte at an index in the search's direction.
template <Direction kDirection>
VEK_INLINE uint8_t At(const uint8_t* s, int32_t length, int32_t i) {
  return kDirection == Direction::kForward ? s[i] : s[length - 1 - i];
}

// The critical factorization of the needle, read in the search's direction: the maximal suffix
// under one order of byte values, or its reverse, whichever starts later. `period` is the period
// of that suffix.
struct Suffix {
  int32_t start;
  int32_t period;
};

template <Direction kDirection>
VEK_INLINE Suffix MaximalSuffix(const uint8_t* needle, int32_t n, bool reversedOrder) {
  int32_t start = 0;      // of the best suffix so far
  int32_t candidate = 1;  // start of the suffix compared with it
  int32_t matched = 0;
  int32_t period = 1;
  while (candidate + matched < n) {
    const uint8_t a = At<kDirection>(needle, n, candidate + matched);
    const uint8_t b = At<kDirection>(needle, n, start + matched);
    if (a == b) {
      if (matched + 1 == period) {
        candidate += period;
        matched = 0;
      } else {
        ++matched;
      }
    } else if ((a < b) != reversedOrder) {
      candidate += matched + 1;
      matched = 0;
      period = candidate - start;
    } else {
      start = candidate;
      candidate = start + 1;
      matched = 0;
      period = 1;
    }
  }
  return {start, period};
}

// The two-way method on the haystack bytes from `from` on, all indices in the search's direction.
template <Direction kDirection>
VEK_INLINE int32_t TwoWay(const uint8_t* haystack, int32_t length, const uint8_t* needle, int32_t n,
                          int32_t from) {
  VEKCH_TAKEN("substring by the two-way method");
  const Suffix one = MaximalSuffix<kDirection>(needle, n, false);
  const Suffix other = MaximalSuffix<kDirection>(needle, n, true);
  const Suffix suffix = one.start >= other.start ? one : other;

  // The needle is periodic as a whole if what precedes the suffix repeats one period later.
  bool periodic = suffix.start + suffix.period <= n;
  for (int32_t i = 0; periodic && i < suffix.start; ++i) {
    periodic = At<kDirection>(needle, n, i) == At<kDirection>(needle, n, i + suffix.period);
  }
  const int32_t rest = n - suffix.start;
  const int32_t shift = periodic ? suffix.period : (suffix.start > rest ? suffix.start : rest) + 1;

  int32_t remembered = 0;  // bytes at the needle's start known to match
  for (int32_t at = from; at <= length - n;) {
    int32_t i = suffix.start > remembered ? suffix.start : remembered;
    while (i < n && At<kDirection>(needle, n, i) == At<kDirection>(haystack, length, at + i)) {
      ++i;
    }
    if (i < n) {
      at += i - suffix.start + 1;
      remembered = 0;
      continue;
    }
    i = suffix.start;
    while (i > remembered &&
           At<kDirection>(needle, n, i - 1) == At<kDirection>(haystack, length, at + i - 1)) {
      --i;
    }
    if (i <= remembered) {
      return kDirection == Direction::kForward ? at : length - n - at;
    }
    at += shift;
    remembered = periodic ? n - shift : 0;
  }
  return -1;
}

}  // namespace vekch::kernels

#endif
