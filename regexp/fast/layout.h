// SPDX-License-Identifier: MIT

// Puts operations in the order in which they follow one another, so that the next one needs no
// looking up: jumps lead from where that can't be.

#ifndef VEKCH_REGEXP_FAST_LAYOUT_H
#define VEKCH_REGEXP_FAST_LAYOUT_H

#include <stdint.h>

#include "regexp/fast/fast_program.h"
#include "regexp/fast/table_room.h"

namespace vekch::regexp {

// Operations as they were made, and where each of them goes.
class Layout {
 public:
  // `room` is for one number of each of the `used` operations; jumps are left out.
  Layout(const FastOp* operations, int32_t used, uint16_t* room)
      : ops(operations), opCount(used), positions(room) {
    for (int32_t i = 0; i < opCount; ++i) {
      positions[i] = kNowhere;
    }
    for (int32_t i = 0; i < opCount; ++i) {
      if (ops[i].code != FastCode::kJump) {
        PlaceFrom(i);
      }
    }
  }

  int32_t Count() const { return count; }
  uint16_t PositionOf(int32_t op) const { return positions[op]; }

  void Write(FastOp* placed) const {
    for (int32_t i = 0; i < opCount; ++i) {
      if (positions[i] == kNowhere) {
        continue;
      }
      FastOp& op = placed[positions[i]];
      op = ops[i];
      ForEachTarget(&op, [this](uint16_t* target) { *target = positions[*target]; });
      if (IsFollowed(op) && op.next != positions[i] + 1) {
        FastOp& jump = placed[positions[i] + 1];
        jump = {};
        jump.code = FastCode::kJump;
        jump.next = op.next;
      }
    }
  }

 private:
  static constexpr uint16_t kNowhere = UINT16_MAX;

  static bool IsFollowed(const FastOp& op) {
    return op.code != FastCode::kAccept && op.code != FastCode::kSubEnd &&
           op.code != FastCode::kChoice && op.code != FastCode::kRepeat &&
           op.code != FastCode::kLoop;
  }

  void PlaceFrom(int32_t i) {
    if (positions[i] != kNowhere) {
      return;
    }
    for (; positions[i] == kNowhere; i = ops[i].next) {
      positions[i] = static_cast<uint16_t>(count++);
      if (!IsFollowed(ops[i])) {
        return;
      }
    }
    ++count;  // the jump
  }

  const FastOp* const ops;
  const int32_t opCount;
  uint16_t* const positions;
  int32_t count = 0;
};

}  // namespace vekch::regexp

#endif
