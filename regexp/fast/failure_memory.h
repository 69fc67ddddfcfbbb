// SPDX-License-Identifier: MIT

// A memory of failures: which choices are known to lead nowhere at which positions of the subject,
// so that none of them is tried twice. "(a|a)*[bc]" doubles its tries with each "a" without it.
//
// A choice fails again where it has failed before if all that its future depends on is the same:
// the position, and for each group around it that may match nothing, whether its repetition has
// consumed anything yet. So a bit for each says enough, as long as nothing else counts:
// repetitions that are counted, copies of what was captured, captures that stay after a failure,
// and limits. The translation says which programs are free of the first three. Of the depth a loop
// takes its cost for each byte at most, since no repetition of nothing is followed by another: a
// failure is used only where the bytes up to the furthest that any try has come to could not have
// used it up.
//
// The bits lie in what is free of the object's room, for as many positions as they go.

#ifndef VEKCH_REGEXP_FAST_FAILURE_MEMORY_H
#define VEKCH_REGEXP_FAST_FAILURE_MEMORY_H

#include <stdint.h>

#include "regexp/fast/fast_program.h"
#include "strings/kernels/clear_words.h"

namespace vekch::regexp {

class FailureMemory {
 public:
  // Forgets all, and remembers positions from `first` on.
  void Begin(const FastProgram& program, FreeRoom room, const uint8_t* first) {
    start = first;
    kinds = int64_t{program.opCount} << program.emptyLoopCount;
    const int64_t words = room.Size() / 16;  // the other half is the exact matcher's
    bits = reinterpret_cast<uint64_t*>(room.Begin());
    positions = words * 64 / kinds;
    kernels::ClearWords(bits, static_cast<uint64_t>(words));
  }

  bool IsBegun() const { return bits != nullptr; }

  // Whether positions from here on are remembered.
  bool Reaches(const uint8_t* at) const { return at - start < positions / 2; }

  // `variant` says of each group that may match nothing whether its repetition has so far.
  bool Knows(int64_t op, const uint8_t* at, int64_t variants, int64_t variant) const {
    const int64_t bit = BitOf(op * variants + variant, at);
    return bit >= 0 && (bits[bit / 64] >> bit % 64 & 1) != 0;
  }

  void Note(int64_t op, const uint8_t* at, int64_t variants, int64_t variant) {
    const int64_t bit = BitOf(op * variants + variant, at);
    if (bit >= 0) {
      bits[bit / 64] |= uint64_t{1} << bit % 64;
    }
  }

 private:
  int64_t BitOf(int64_t kind, const uint8_t* at) const {
    const int64_t position = at - start;
    return position < 0 || position >= positions ? -1 : position * kinds + kind;
  }

  uint64_t* bits = nullptr;
  const uint8_t* start = nullptr;
  int64_t positions = 0;
  int64_t kinds = 1;
};

}  // namespace vekch::regexp

#endif
