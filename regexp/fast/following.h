// SPDX-License-Identifier: MIT

// For each operation the bytes that it and what follows it can go on with: gathered against the
// direction of matching until nothing changes. Only loops lead back, so that a few rounds do.

#ifndef VEKCH_REGEXP_FAST_FOLLOWING_H
#define VEKCH_REGEXP_FAST_FOLLOWING_H

#include <stdint.h>

#include "regexp/fast/fast_program.h"
#include "regexp/fast/next_bytes.h"
#include "regexp/object/program_walk.h"

namespace vekch::regexp {

class Following {
 public:
  // `each` is room for one of each operation.
  Following(const ProgramWalk& records, const FastOp* operations, NextBytes* each)
      : walk(records), ops(operations), next(each) {}

  // False where it takes too many rounds.
  bool Find(int32_t used);

  const NextBytes& At(int32_t op) const { return next[op]; }

  // The bytes that an operation's own characters begin with.
  NextBytes BytesOf(const FastOp& op) const;

  // Whether groups in a sub-program capture: that stays even where what follows fails, so that no
  // way there is passed over.
  bool Captures(const FastOp& opening) const;

 private:
  NextBytes NextBytesOf(const FastOp& op) const;
  NextBytes AtAssertion(const FastOp& op) const;

  const ProgramWalk& walk;
  const FastOp* const ops;
  NextBytes* const next;
};

}  // namespace vekch::regexp

#endif
