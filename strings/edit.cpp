// SPDX-License-Identifier: MIT

// Editing: argument checks, then pieces copied or moved into place.

#include "vekch/edit.h"

#include "frame/checks.h"
#include "strings/kernels/delimiters.h"
#include "strings/kernels/piece.h"

namespace vekch {
namespace {

using kernels::AreShort;
using kernels::CacheAnswer;
using kernels::CopyPiece;
using kernels::CopyVaried;
using kernels::MovePiece;
using kernels::MoveShort;

// Bytes of a string after a range of `number` bytes from `start` on. The difference can't wrap.
VEK_INLINE int64_t RestAfter(int32_t start, int32_t number, int32_t length) {
  return int64_t{length} - start - number;
}

// Whether such a range lies inside a string.
VEK_INLINE bool LiesInside(int32_t start, int32_t number, int32_t length) {
  return start >= 0 && number >= 0 && RestAfter(start, number, length) >= 0;
}

enum class Delimiter { kNone, kBetween };

// Elements are checked one by one on the way, as they are reached: an error leaves those before it
// written.
template <Delimiter kDelimiter>
VEK_INLINE vekStatus ConcatList(const uint8_t* const* strings, const int32_t* lengths,
                                int32_t count, uint8_t delimiter, uint8_t* destination) {
  if (AnyNull(strings, lengths, destination)) {
    return StatusNullPointer;
  }
  if (count < 1) {
    return StatusSizeError;
  }
  CacheAnswer cache;
  for (int32_t i = 0; i < count; ++i) {
    const uint8_t* const string = strings[i];
    const int32_t length = lengths[i];
    if (string == nullptr) {
      return StatusNullPointer;
    }
    if (length < 0) {
      return StatusLengthError;
    }
    if (kDelimiter == Delimiter::kBetween && i > 0) {
      *destination++ = delimiter;
    }
    CopyVaried(string, destination, length, &cache);
    destination += length;
  }
  return StatusNoError;
}

// ---- What is left to functions of their own where pieces are not all short, or a length is wrong.

VEK_KERNEL __attribute__((noinline)) vekStatus ConcatLong(const uint8_t* first, int32_t firstLength,
                                                          const uint8_t* second,
                                                          int32_t secondLength,
                                                          uint8_t* destination) {
  if (AnyNegative(firstLength, secondLength)) {
    return StatusLengthError;
  }
  CacheAnswer cache;
  CopyPiece(first, destination, firstLength, &cache);
  CopyPiece(second, destination + firstLength, secondLength, &cache);
  return StatusNoError;
}

VEK_KERNEL __attribute__((noinline)) vekStatus InsertLong(
    const uint8_t* source, int32_t sourceLength, const uint8_t* inserted, int32_t insertedLength,
    uint8_t* destination, int32_t startIndex) {
  if (insertedLength < 0 || !LiesInside(startIndex, 0, sourceLength)) {
    return StatusLengthError;
  }
  if (insertedLength == 0) {
    return StatusNoError;  // kept on purpose: not even the source is copied
  }
  CacheAnswer cache;
  if (destination != source) {
    CopyPiece(source, destination, startIndex, &cache);
  }
  // The rest moves out of the way before the text is stored.
  uint8_t* const text = destination + startIndex;
  MovePiece(source + startIndex, text + insertedLength, sourceLength - startIndex);
  CopyPiece(inserted, text, insertedLength, &cache);
  return StatusNoError;
}

VEK_KERNEL __attribute__((noinline)) vekStatus InsertLongInPlace(const uint8_t* inserted,
                                                                 int32_t insertedLength,
                                                                 uint8_t* buffer, int32_t* length,
                                                                 int32_t startIndex) {
  const vekStatus status =
      InsertLong(buffer, *length, inserted, insertedLength, buffer, startIndex);
  if (status == StatusNoError) {
    *length += insertedLength;
  }
  return status;
}

VEK_KERNEL __attribute__((noinline)) vekStatus RemoveLong(const uint8_t* source,
                                                          int32_t sourceLength,
                                                          uint8_t* destination, int32_t startIndex,
                                                          int32_t number) {
  if (!LiesInside(startIndex, number, sourceLength)) {
    return StatusLengthError;
  }
  const int32_t end = startIndex + number;
  CacheAnswer cache;
  CopyPiece(source, destination, startIndex, &cache);
  CopyPiece(source + end, destination + startIndex, sourceLength - end, &cache);
  return StatusNoError;
}

VEK_KERNEL __attribute__((noinline)) vekStatus RemoveLongInPlace(uint8_t* buffer, int32_t* length,
                                                                 int32_t startIndex,
                                                                 int32_t number) {
  if (!LiesInside(startIndex, number, *length)) {
    return StatusLengthError;
  }
  const int32_t end = startIndex + number;
  MovePiece(buffer + end, buffer + startIndex, *length - end);
  *length -= number;
  return StatusNoError;
}

// ---- The insertion of a short text at a short distance from both ends.

VEK_INLINE void InsertShort(const uint8_t* source, int32_t rest, const uint8_t* inserted,
                            int32_t insertedLength, uint8_t* destination, int32_t startIndex) {
  uint8_t* const text = destination + startIndex;
  if (destination != source) {
    MoveShort(source, destination, startIndex);
  }
  MoveShort(source + startIndex, text + insertedLength, rest);
  MoveShort(inserted, text, insertedLength);
}

constexpr int32_t kFewBytes = 4;

VEK_INLINE void ReplaceFew(const uint8_t* source, uint8_t* destination, int32_t length,
                           uint8_t oldValue, uint8_t newValue) {
  for (int32_t i = 0; i < length; ++i) {
    destination[i] = source[i] == oldValue ? newValue : source[i];
  }
}

struct ReplaceByte {
  kernels::Block oldValue;
  kernels::Block newValue;

  VEK_INLINE kernels::Block operator()(kernels::Block b) const {
    return kernels::Select(b == oldValue, newValue, b);
  }
};

VEK_INLINE vekStatus Split(const uint8_t* source, int32_t sourceLength, uint8_t delimiter,
                           uint8_t* const* destinations, int32_t* lengths, int32_t* count) {
  const int32_t slots = *count;
  vekStatus status = StatusNoError;
  kernels::Delimiters delimiters = kernels::DelimitersOf(source, sourceLength, delimiter);
  CacheAnswer cache;
  int32_t from = 0;
  int32_t i = 0;
  // The end is tested first: slots that stay unused are not looked at.
  for (; i < slots && from < sourceLength; ++i) {
    const int32_t capacity = lengths[i];
    if (destinations[i] == nullptr) {
      return StatusNullPointer;
    }
    if (capacity < 0) {
      return StatusLengthError;
    }
    const int32_t end = delimiters.Next();
    int32_t piece = end - from;
    if (piece > capacity) {
      piece = capacity;  // the tail is dropped, not carried over
      status = StatusDestinationTruncated;
    }
    lengths[i] = piece;
    CopyVaried(source + from, destinations[i], piece, &cache);
    from = end == sourceLength ? end : end + 1;
  }
  *count = i;
  return i == slots && from < sourceLength ? StatusDestinationsExhausted : status;
}

}  // namespace
}  // namespace vekch

VEK_KERNEL vekStatus veksConcat_8u(const uint8_t* first, int32_t firstLength, const uint8_t* second,
                                   int32_t secondLength, uint8_t* destination) noexcept {
  using namespace vekch;
  if (AnyNull(first, second, destination)) {
    return StatusNullPointer;
  }
  if (!AreShort(firstLength, secondLength)) {
    return ConcatLong(first, firstLength, second, secondLength, destination);
  }
  MoveShort(first, destination, firstLength);
  MoveShort(second, destination + firstLength, secondLength);
  return StatusNoError;
}

VEK_KERNEL vekStatus veksConcat_8u_D2L(const uint8_t* const* strings, const int32_t* lengths,
                                       int32_t count, uint8_t* destination) noexcept {
  return vekch::ConcatList<vekch::Delimiter::kNone>(strings, lengths, count, 0, destination);
}

VEK_KERNEL vekStatus veksConcatC_8u_D2L(const uint8_t* const* strings, const int32_t* lengths,
                                        int32_t count, uint8_t delimiter,
                                        uint8_t* destination) noexcept {
  return vekch::ConcatList<vekch::Delimiter::kBetween>(strings, lengths, count, delimiter,
                                                       destination);
}

VEK_KERNEL vekStatus veksInsert_8u(const uint8_t* source, int32_t sourceLength,
                                   const uint8_t* inserted, int32_t insertedLength,
                                   uint8_t* destination, int32_t startIndex) noexcept {
  using namespace vekch;
  if (AnyNull(source, inserted, destination)) {
    return StatusNullPointer;
  }
  const int64_t rest = RestAfter(startIndex, 0, sourceLength);
  if (insertedLength == 0 || !AreShort(startIndex, rest, insertedLength)) {
    return InsertLong(source, sourceLength, inserted, insertedLength, destination, startIndex);
  }
  InsertShort(source, static_cast<int32_t>(rest), inserted, insertedLength, destination,
              startIndex);
  return StatusNoError;
}

VEK_KERNEL vekStatus veksInsert_8u_I(const uint8_t* inserted, int32_t insertedLength,
                                     uint8_t* buffer, int32_t* length,
                                     int32_t startIndex) noexcept {
  using namespace vekch;
  if (AnyNull(inserted, buffer, length)) {
    return StatusNullPointer;
  }
  const int64_t rest = RestAfter(startIndex, 0, *length);
  if (startIndex < 0 || !AreShort(rest, insertedLength)) {
    return InsertLongInPlace(inserted, insertedLength, buffer, length, startIndex);
  }
  *length += insertedLength;
  uint8_t* const text = buffer + startIndex;
  MoveShort(text, text + insertedLength, static_cast<int32_t>(rest));
  MoveShort(inserted, text, insertedLength);
  return StatusNoError;
}

VEK_KERNEL vekStatus veksRemove_8u(const uint8_t* source, int32_t sourceLength,
                                   uint8_t* destination, int32_t startIndex,
                                   int32_t number) noexcept {
  using namespace vekch;
  if (AnyNull(source, destination)) {
    return StatusNullPointer;
  }
  const int64_t rest = RestAfter(startIndex, number, sourceLength);
  if (number < 0 || !AreShort(startIndex, rest)) {
    return RemoveLong(source, sourceLength, destination, startIndex, number);
  }
  MoveShort(source, destination, startIndex);
  MoveShort(source + startIndex + number, destination + startIndex, static_cast<int32_t>(rest));
  return StatusNoError;
}

VEK_KERNEL vekStatus veksRemove_8u_I(uint8_t* buffer, int32_t* length, int32_t startIndex,
                                     int32_t number) noexcept {
  using namespace vekch;
  if (AnyNull(buffer, length)) {
    return StatusNullPointer;
  }
  const int64_t rest = RestAfter(startIndex, number, *length);
  if (AnyNegative(startIndex, number) || !AreShort(rest)) {
    return RemoveLongInPlace(buffer, length, startIndex, number);
  }
  uint8_t* const removed = buffer + startIndex;
  MoveShort(removed + number, removed, static_cast<int32_t>(rest));
  *length -= number;
  return StatusNoError;
}

VEK_KERNEL vekStatus veksReplaceC_8u(const uint8_t* source, uint8_t* destination, int32_t length,
                                     uint8_t oldValue, uint8_t newValue) noexcept {
  using vekch::kernels::Splat;
  if (vekch::AnyNull(source, destination)) {
    return StatusNullPointer;
  }
  if (length < 0) {
    return StatusLengthError;
  }
  if (length <= vekch::kFewBytes) {
    vekch::ReplaceFew(source, destination, length, oldValue, newValue);
    return StatusNoError;
  }
  const vekch::ReplaceByte map = {Splat(oldValue), Splat(newValue)};
  vekch::kernels::Transform(source, destination, length, map);
  return StatusNoError;
}

VEK_KERNEL vekStatus veksSplitC_8u_D2L(const uint8_t* source, int32_t sourceLength,
                                       uint8_t delimiter, uint8_t* const* destinations,
                                       int32_t* lengths, int32_t* count) noexcept {
  if (vekch::AnyNull(source, destinations, lengths, count)) {
    return StatusNullPointer;
  }
  if (sourceLength < 0) {
    return StatusLengthError;
  }
  if (*count < 1) {
    return StatusSizeError;
  }
  if (sourceLength == 0) {
    *count = 0;
    return StatusNoError;
  }
  return vekch::Split(source, sourceLength, delimiter, destinations, lengths, count);
}
