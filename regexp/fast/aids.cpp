// SPDX-License-Identifier: MIT
#include "regexp/fast/aids.h"

#include "regexp/characters/byte_ranges.h"
#include "regexp/characters/wide_set.h"
#include "regexp/fast/next_bytes.h"
#include "unicode/utf8.h"

namespace vekch::regexp {
namespace {

template <class Aid>
Aid* NewAid(FastOp* op, const FastOp* placed, TableRoom* room) {
  auto* const aid = room->Take<Aid>();
  op->aid = aid == nullptr ? 0
                           : static_cast<uint32_t>(reinterpret_cast<const uint8_t*>(aid) -
                                                   reinterpret_cast<const uint8_t*>(placed));
  return aid;
}

void MakeWideSet(FastOp* op, const FastOp* placed, TableRoom* room) {
  if (auto* const set = NewAid<WideSet>(op, placed, room)) {
    set->Begin(*op->record);
  }
}

void MakeRangeSet(const uint8_t* members, FastOp* op, const FastOp* placed, TableRoom* room) {
  if (auto* const set = NewAid<kernels::RangeSet>(op, placed, room)) {
    FillRangeSet(members, 0xFF, set);
    op->aid = set->count == 0 ? 0 : op->aid;
  }
}

// Of the bytes that a lazy repetition takes without asking what follows. A stop within a
// character can't be distinguished from one before it.
void MakeSkipped(FastOp* op, const FastOp* placed, TableRoom* room) {
  if (op->run.follow == nullptr) {
    return;
  }
  uint8_t skipped[NextBytes::kTable];
  bool stopsWithin = false;
  for (int32_t i = 0; i < NextBytes::kTable; ++i) {
    skipped[i] = op->run.follow[i] == 0 ? op->bytes[i] : 0;
    stopsWithin = stopsWithin || (IsUtf8Continuation(static_cast<uint8_t>(i)) && skipped[i] == 0);
  }
  if (op->code == FastCode::kLazySet || !stopsWithin) {
    MakeRangeSet(skipped, op, placed, room);
  }
}

}  // namespace

void MakeAids(FastOp* placed, int32_t count, TableRoom* room) {
  constexpr int32_t kMostWideSets = 3;  // leaves room for the memory of failures
  int32_t wideSets = 0;
  for (int32_t i = 0; i < count; ++i) {
    FastOp& op = placed[i];
    switch (op.code) {
      case FastCode::kOpenSetRun:
        MakeRangeSet(op.bytes, &op, placed, room);
        break;
      case FastCode::kLazySet:
      case FastCode::kLazyOpenSet:
        MakeSkipped(&op, placed, room);
        break;
      case FastCode::kCharacter:
      case FastCode::kCharacterRun:
      case FastCode::kLazyCharacter:
        if (wideSets++ < kMostWideSets) {
          MakeWideSet(&op, placed, room);
        }
        break;
      default:
        break;
    }
  }
}

}  // namespace vekch::regexp
