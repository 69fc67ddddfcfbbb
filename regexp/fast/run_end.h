// SPDX-License-Identifier: MIT

// Where characters end, and runs of them: of an operation and the bytes alone, without any state.

#ifndef VEKCH_REGEXP_FAST_RUN_END_H
#define VEKCH_REGEXP_FAST_RUN_END_H

#include <stdint.h>

#include "regexp/characters/character_set.h"
#include "regexp/fast/fast_program.h"
#include "regexp/fast/wide_length.h"
#include "regexp/object/record_notes.h"
#include "strings/kernels/range_set.h"
#include "unicode/utf8.h"

namespace vekch::regexp::fast {

// ---- One character.

VEK_INLINE bool IsEither(uint8_t byte, const uint8_t* pair) {
  return byte == pair[0] || byte == pair[1];
}

// Bytes of the character at `at` if the record accepts it, else 0, looked up each time. `at` lies
// before the limit.
inline int32_t CharacterLength(const ProgramNode& atom, const uint8_t* at, const uint8_t* limit) {
  const Utf8Character character = ReadUtf8(at, limit);
  const bool isMember = character.length == 1 && HasSet(atom)
                            ? SetOf(atom)->member[*at] != 0
                            : AcceptsWide(atom, static_cast<int32_t>(character.value));
  return isMember ? character.length : 0;
}

// The same of an operation. kOpenSet is the code that those with an open set have among the codes
// that may be here; the others have a record, and perhaps a set of what is known of it.
template <FastCode kOpenSet>
VEK_INLINE int32_t LengthAt(const FastOp* ops, const FastOp& character, const uint8_t* at,
                            const uint8_t* limit) {
  if (character.code == kOpenSet) {
    return *at < 0x80 ? character.bytes[*at] & 1 : ReadUtf8(at, limit).length;
  }
  auto* const set = AidAt<WideSet>(ops, character.aid);
  return set != nullptr ? WideLength(set, at, limit)
                        : CharacterLength(*character.record, at, limit);
}

// ---- What can come after a run.

// Not 0 for a byte that can; null where all can.
VEK_INLINE const uint8_t* FollowersOf(const FastOp& run) {
  if (run.code != FastCode::kSetRun) {
    return run.run.follow;
  }
  return run.run.tables == nullptr ? nullptr : run.run.tables->follow;
}

VEK_INLINE bool CanFollow(const FastOp& run, const uint8_t* at, const uint8_t* limit) {
  const uint8_t* const follow = FollowersOf(run);
  return at < limit ? follow == nullptr || follow[*at] != 0 : (run.flags & kFollowsAtEnd) != 0;
}

// ---- Ends of runs.

// Past members of the operation's set of ranges, 16 at a time. Functions of their own, so that
// their registers cost nothing where runs are short.
[[gnu::noinline]] inline const uint8_t* SkipBlocks(const FastOp* ops, const FastOp& run,
                                                   const uint8_t* at, const uint8_t* end) {
  const auto* const set = AidAt<const kernels::RangeSet>(ops, run.aid);
  return set == nullptr ? at : kernels::SkipMembers(*set, at, end);
}

[[gnu::noinline]] inline const uint8_t* EndOfMembers(const FastOp* ops, const FastOp& run,
                                                     const uint8_t* at, const uint8_t* end) {
  at = SkipBlocks(ops, run, at, end);
  const uint8_t* const members = run.bytes;
  while (at < end && members[*at] != 0) {
    ++at;
  }
  return at;
}

// In 16 bytes the one that ends a run, or kBlock.
VEK_INLINE int32_t EndInBlock(const kernels::RangeSet& set, const uint8_t* at) {
  constexpr uint32_t kAllAndOne = (2U << kernels::kBlock) - 1;
  return kernels::LowestBit(kernels::MembersAt(set, at) ^ kAllAndOne);
}

template <FastCode kCode>
VEK_INLINE const uint8_t* EndOfRun(const FastOp& run, const uint8_t* at, const uint8_t* end) {
  if (kCode == FastCode::kAnyRun) {
    return end;
  }
  if (kCode == FastCode::kSetRun && end - at >= kernels::kBlock && run.run.tables != nullptr &&
      run.run.tables->members.count != 0) {
    int32_t length;
    do {
      length = EndInBlock(run.run.tables->members, at);
      at += length;
    } while (length == kernels::kBlock && end - at >= kernels::kBlock);
    if (length < kernels::kBlock) {
      return at;
    }
  }
  const uint8_t* const members = run.bytes;
  const uint8_t first = run.pair[0];
  const uint8_t second = run.pair[1];
  const auto isMember = [&](uint8_t byte) __attribute__((always_inline)) {
    return kCode == FastCode::kSetRun ? members[byte] != 0 : byte == first || byte == second;
  };
  for (; end - at >= 4; at += 4) {
    if (!isMember(at[0])) {
      return at;
    }
    if (!isMember(at[1])) {
      return at + 1;
    }
    if (!isMember(at[2])) {
      return at + 2;
    }
    if (!isMember(at[3])) {
      return at + 3;
    }
  }
  while (at < end && isMember(*at)) {
    ++at;
  }
  return at;
}

}  // namespace vekch::regexp::fast

#endif
