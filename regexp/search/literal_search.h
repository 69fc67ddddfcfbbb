// SPDX-License-Identifier: MIT

// The literals of a program, looked for in a subject.

#ifndef VEKCH_REGEXP_SEARCH_LITERAL_SEARCH_H
#define VEKCH_REGEXP_SEARCH_LITERAL_SEARCH_H

#include <stdint.h>

#include "regexp/characters/bytes.h"
#include "regexp/characters/rarest_bytes.h"
#include "regexp/object/record.h"
#include "strings/kernels/block.h"
#include "strings/kernels/find_kernels.h"
#include "strings/kernels/find_pair_kernels.h"

namespace vekch::regexp {

constexpr int32_t kNotFound = -1;

inline kernels::Ranges BothCases(uint8_t byte) {
  kernels::Ranges ranges;
  ranges.lowest[0] = ranges.highest[0] = byte;
  ranges.lowest[1] = ranges.highest[1] = OtherCase(byte);
  kernels::RepeatLast(&ranges, 2);
  return ranges;
}

// By the two rarest bytes 64 positions at a time, the last positions by the rarest alone.
inline int32_t FindFirstCaseless(const uint8_t* subject, int32_t length, const Literal& literal,
                                 const RarestBytes& rarest) {
  const uint8_t* const end = subject + (length - literal.length + 1);
  const uint8_t* at = subject;
  const auto isHere = [&literal](const uint8_t* position) {
    return SameBytes(position, literal.bytes, literal.length, true);
  };
  if (end - at >= kernels::kGroup) {
    const kernels::BytePair pair = {
        {rarest.first, rarest.second},
        2,
        {BothCases(literal.bytes[rarest.first]), BothCases(literal.bytes[rarest.second])}};
    uint64_t hits = 0;
    while (at = kernels::FindPairs(at, end, pair, &hits), hits != 0) {
      for (; hits != 0; hits &= hits - 1) {
        const uint8_t* const position = at + kernels::LowestBit(hits);
        if (isHere(position)) {
          return static_cast<int32_t>(position - subject);
        }
      }
      at += kernels::kGroup;
    }
  }
  const uint8_t byte = literal.bytes[rarest.first];
  const uint8_t cases[2] = {byte, OtherCase(byte)};
  while (at < end) {
    const int32_t found =
        kernels::FindAnyOf(at + rarest.first, static_cast<int32_t>(end - at), cases, 2);
    if (found < 0) {
      return kNotFound;
    }
    at += found;
    if (isHere(at)) {
      return static_cast<int32_t>(at - subject);
    }
    ++at;
  }
  return kNotFound;
}

inline int32_t FindLastCaseless(const uint8_t* subject, int32_t length, const Literal& literal) {
  const RarestBytes rarest(literal);
  const uint8_t byte = literal.bytes[rarest.first];
  const uint8_t cases[2] = {byte, OtherCase(byte)};
  int32_t positions = length - literal.length + 1;
  while (positions > 0) {
    positions = kernels::FindLastOf(subject + rarest.first, positions, cases, 2);
    if (positions >= 0 && SameBytes(subject + positions, literal.bytes, literal.length, true)) {
      return positions;
    }
  }
  return kNotFound;
}

inline int32_t FindFirst(const uint8_t* subject, int32_t length, const Literal& literal,
                         bool caseless, const RarestBytes* rarest = nullptr) {
  if (literal.length > length) {
    return kNotFound;
  }
  if (caseless) {
    return FindFirstCaseless(subject, length, literal,
                             rarest != nullptr ? *rarest : RarestBytes(literal));
  }
  return literal.length == 1
             ? kernels::FindByte(subject, length, literal.bytes[0])
             : kernels::FindSubstring(subject, length, literal.bytes, literal.length);
}

inline int32_t FindLast(const uint8_t* subject, int32_t length, const Literal& literal,
                        bool caseless) {
  if (literal.length > length) {
    return kNotFound;
  }
  if (caseless) {
    return FindLastCaseless(subject, length, literal);
  }
  return literal.length == 1
             ? kernels::FindLastByte(subject, length, literal.bytes[0])
             : kernels::FindLastSubstring(subject, length, literal.bytes, literal.length);
}

}  // namespace vekch::regexp

#endif
