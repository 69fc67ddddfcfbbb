// SPDX-License-Identifier: MIT

// Search for a long needle by looking at few bytes of the haystack, after Horspool, with grams of
// eight bytes instead of single ones (compare Lecroq, "Fast exact string matching algorithms").
//
//   needle      |.......................|         of m bytes: s = m - 7 grams
//   positions   at, at + 1, ..., at + s - 1
//   the gram    |....... ********|                at at + s - 1 lies in every occurrence
//                                                 that starts at one of these s positions
//
// A table holds by a gram's hash where in the needle it last occurs. A gram that does not occur at
// all, the usual case, rules out all s positions; one that does, those before the position at which
// it would lie under its last occurrence. Four steps are tried at once.
//
// Eight bytes keep grams of repetitive texts apart that are alike in shorter ones. Tried and not
// kept: grams of four bytes (five times as many false hits in text over two letters).

#ifndef VEKCH_STRINGS_KERNELS_FIND_SKIPPING_H
#define VEKCH_STRINGS_KERNELS_FIND_SKIPPING_H

#include "strings/kernels/find_candidates.h"
#include "strings/kernels/taken.h"

namespace vekch::kernels {

constexpr int32_t kGram = sizeof(uint64_t);
constexpr int32_t kMostGrams = 255;  // of a needle that count: their positions fit bytes

// Where in the needle a gram with some hash last occurs, from 1 on; 0 if nowhere.
struct GramPositions {
  static constexpr int32_t kHashBits = 10;
  alignas(kBlock) uint8_t ofHash[1 << kHashBits];

  VEK_INLINE GramPositions() {
    for (int32_t i = 0; i < 1 << kHashBits; i += kBlock) {
      StoreAligned(ofHash + i, ZeroBlock());
    }
  }

  VEK_INLINE uint8_t& Of(uint64_t gram) {
    return ofHash[gram * 0x9E3779B97F4A7C15U >> (64 - kHashBits)];
  }
};

// The gram that starts at an index of a string, both in the search's direction.
template <Direction kDirection>
VEK_INLINE uint64_t GramAt(const uint8_t* s, ptrdiff_t length, ptrdiff_t i) {
  return LoadWord<uint64_t>(kDirection == Direction::kForward ? s + i : s + length - kGram - i);
}

// The positions after those passed, for a needle of two grams and more.
template <Direction kDirection>
VEK_INLINE int32_t FindBySkipping(const Task& task, const Allowance& allowance,
                                  Progress* progress) {
  constexpr bool kForward = kDirection == Direction::kForward;
  VEKCH_TAKEN("substring by skipping");
  const int32_t n = task.needleLength;
  const ptrdiff_t length = ptrdiff_t{task.positions} + n - 1;
  const int32_t step = n - kGram + 1 < kMostGrams ? n - kGram + 1 : kMostGrams;
  GramPositions last;
  for (int32_t i = 0; i < step; ++i) {
    last.Of(GramAt<kDirection>(task.needle, n, i)) = static_cast<uint8_t>(i + 1);
  }
  int64_t effort = 0;
  for (ptrdiff_t at = progress->passed; at < task.positions;) {
    const auto gram = [&](ptrdiff_t i) __attribute__((always_inline)) {
      return GramAt<kDirection>(task.haystack, length, i + step - 1);
    };
    while (at + 3 * step < task.positions &&
           (last.Of(gram(at)) | last.Of(gram(at + step)) | last.Of(gram(at + 2 * step)) |
            last.Of(gram(at + 3 * step))) == 0) {
      at += 4 * step;
    }
    if (at >= task.positions) {
      break;
    }
    const uint64_t seen = gram(at);
    const int32_t lastSeen = last.Of(seen);
    at += step - lastSeen;
    if (lastSeen == 0) {
      continue;
    }
    if (at >= task.positions) {
      break;
    }
    effort += kBlock;
    if (seen == GramAt<kDirection>(task.needle, n, lastSeen - 1)) {
      const auto position = static_cast<int32_t>(kForward ? at : task.positions - 1 - at);
      const int32_t difference = FirstHit(Differs{task.haystack + position, task.needle}, n);
      if (difference < 0) {
        return position;
      }
      effort += difference;
      progress->failedAt = difference;
    }
    ++at;
    if (effort > allowance.atStart + at / kBlock * allowance.perBlock) {
      progress->passed = static_cast<int32_t>(at);
      return kGaveUp;
    }
  }
  return -1;
}

}  // namespace vekch::kernels

#endif
