// SPDX-License-Identifier: MIT

// Where a match can begin, by the bytes that its first characters can be.

#ifndef VEKCH_REGEXP_FAST_NEXT_START_H
#define VEKCH_REGEXP_FAST_NEXT_START_H

#include <stdint.h>

#include "regexp/fast/fast_matcher.h"
#include "regexp/fast/wide_length.h"
#include "unicode/utf8.h"

namespace vekch::regexp::fast {

// Whether a walk over the characters from `first` on comes to a continuation byte.
inline bool IsCharacterStart(const uint8_t* first, const uint8_t* limit, const uint8_t* at) {
  const uint8_t* lead = at;
  while (lead > first && at - lead < kLongestUtf8 - 1 && IsUtf8Continuation(*lead)) {
    --lead;
  }
  return lead == at || ReadUtf8(lead, limit).length <= at - lead;
}

VEK_INLINE bool CanBegin(const FastProgram& program, const uint8_t* at, const uint8_t* limit) {
  return at < limit ? program.canBegin[*at] != 0 : program.beginsAtEnd;
}

// Whether the first character is one that a match can begin with.
VEK_INLINE bool BeginsWith(const FastProgram& program, const uint8_t* at, const uint8_t* limit) {
  auto* const first = program.firstCharacter;
  return first == nullptr || *at < 0x80 || WideLength(first, at, limit) != 0;
}

// Whether the second byte is one that a match can go on with.
VEK_INLINE bool GoesOnWith(const uint8_t* secondBytes, const uint8_t* at, const uint8_t* limit) {
  return secondBytes == nullptr || (limit - at > 1 && (secondBytes[at[1]] & 2) != 0);
}

// Where a match can begin from `at` on; null if nowhere. `first` is where a character begins before
// it.
VEK_INLINE const uint8_t* NextStart(const FastCall& call, const uint8_t* first,
                                    const uint8_t* limit, const uint8_t* at) {
  const FastProgram& program = *call.program;
  for (;; ++at) {
    while (at < limit && program.canBegin[*at] == 0) {
      ++at;
    }
    if (at >= limit) {
      return at == limit && program.beginsAtEnd ? at : nullptr;
    }
    if (GoesOnWith(call.secondBytes, at, limit) &&
        (!program.isUtf8 || !IsUtf8Continuation(*at) || IsCharacterStart(first, limit, at)) &&
        BeginsWith(program, at, limit)) {
      return at;
    }
  }
}

}  // namespace vekch::regexp::fast

#endif
