// SPDX-License-Identifier: MIT

// Replacing: one search for all matches that are to be replaced, then the source from its start to
// its end, in pieces: the text before each match, the template's items, the text after the last.
//
// A piece is copied where it is shorter than the room that is left, so that at least one byte of
// room stays for the next. What a destination too small ends at is a matter of the mode:
// ReplaceFirst and ReplaceAll differ in more than the number of matches.

#include "frame/checks.h"
#include "regexp/search/search.h"
#include "strings/kernels/piece.h"
#include "vekch/regexp_program.h"

namespace vekch::regexp {
namespace {

struct Piece {
  const uint8_t* start;
  int32_t length;
};

struct Match {
  const RegExpFindResult* slots;  // the whole match, then its groups
  int32_t slotCount;
};

struct Job {
  const uint8_t* source;
  int32_t sourceLength;
  uint8_t* destination;
  int32_t capacity;
  const RegExpReplaceState* replacement;
};

// How much of the source is dealt with, and the bytes written for it.
struct Progress {
  int64_t source;
  int64_t destination;
};

// A slot's text. Its length may be reported longer than the subject: what lies inside counts.
Piece TextOf(const RegExpFindResult& slot, const Job& job) {
  if (slot.length <= 0) {
    return {slot.pointer, 0};
  }
  const int64_t left = job.source + job.sourceLength - slot.pointer;
  return {slot.pointer, slot.length < left ? slot.length : static_cast<int32_t>(left)};
}

Piece TextOf(const ReplaceItem& item, const Match& match, const Job& job) {
  if (item.kind == ReplaceLiteral) {
    return {item.pointer, static_cast<int32_t>(item.value)};
  }
  // A number may be anything up to 2^32 - 1.
  return item.value < static_cast<uint32_t>(match.slotCount) ? TextOf(match.slots[item.value], job)
                                                             : Piece{nullptr, 0};
}

// Copies a piece where it is shorter than the room.
bool CopyWhereShorter(Piece piece, uint8_t* destination, int64_t room) {
  if (piece.length >= room) {
    return false;
  }
  kernels::CopyPiece(piece.start, destination, piece.length);
  return true;
}

constexpr int64_t kNoRoom = -1;

// A length as it is reported: what passes the largest stays there.
constexpr int32_t Reported(int64_t length) {
  return length < INT32_MAX ? static_cast<int32_t>(length) : INT32_MAX;
}

// Expands the template for a match; returns the bytes written, or kNoRoom.
int64_t Expand(const Job& job, const Match& match, uint8_t* destination, int64_t room) {
  int64_t written = 0;
  const ReplaceItem* const end = job.replacement->items + job.replacement->itemCount;
  for (const ReplaceItem* item = job.replacement->items; item != end; ++item) {
    const Piece piece = TextOf(*item, match, job);
    if (!CopyWhereShorter(piece, destination + written, room - written)) {
      return kNoRoom;
    }
    written += piece.length;
  }
  return written;
}

Progress CopySource(const Job& job) {
  const int32_t length = job.sourceLength < job.capacity ? job.sourceLength : job.capacity;
  kernels::CopyPiece(job.source, job.destination, length);
  return {length, length};
}

Progress ReplaceFirst(const Job& job, const Match& match) {
  const Piece whole = TextOf(*match.slots, job);
  const auto before = static_cast<int32_t>(whole.start - job.source);
  if (!CopyWhereShorter({job.source, before}, job.destination, job.capacity)) {
    return {0, 0};
  }
  const int32_t matchEnd = before + whole.length;
  const Piece tail = {job.source + matchEnd, job.sourceLength - matchEnd};
  if (job.replacement->itemCount == 0) {
    // Kept on purpose: the tail is copied whatever the capacity, and not counted.
    kernels::CopyPiece(tail.start, job.destination + before, tail.length);
    return {job.sourceLength, before};
  }
  // Kept on purpose: the template may take the whole capacity, whatever lies before it.
  const int64_t expanded = Expand(job, match, job.destination + before, job.capacity);
  if (expanded == kNoRoom) {
    return {before, before};
  }
  const int64_t written = before + expanded;
  return CopyWhereShorter(tail, job.destination + written, job.capacity - written)
             ? Progress{job.sourceLength, written + tail.length}
             : Progress{matchEnd, written};
}

Progress ReplaceAll(const Job& job, const Match& matches, int32_t slotsPerMatch) {
  Progress done = {0, 0};
  for (int64_t first = 0; first < matches.slotCount; first += slotsPerMatch) {
    // The slots of the last match may not all have had room.
    const auto left = static_cast<int32_t>(matches.slotCount - first);
    const Match match = {matches.slots + first, left < slotsPerMatch ? left : slotsPerMatch};
    const Piece whole = TextOf(*match.slots, job);
    const int64_t start = whole.start - job.source;
    // A match before this one that is reported longer than it is may reach into it.
    const int64_t gap = start > done.source ? start - done.source : 0;
    if (!CopyWhereShorter({job.source + done.source, static_cast<int32_t>(gap)},
                          job.destination + done.destination, job.capacity - done.destination)) {
      return done;
    }
    const int64_t afterGap = done.destination + gap;
    const int64_t expanded =
        Expand(job, match, job.destination + afterGap, job.capacity - afterGap);
    if (expanded == kNoRoom) {
      return {start, afterGap};
    }
    done = {start + whole.length, afterGap + expanded};
  }
  const Piece tail = {job.source + done.source,
                      static_cast<int32_t>(job.sourceLength - done.source)};
  return CopyWhereShorter(tail, job.destination + done.destination, job.capacity - done.destination)
             ? Progress{job.sourceLength, done.destination + tail.length}
             : done;
}

}  // namespace
}  // namespace vekch::regexp

vekStatus veksRegExpReplace_8u(const uint8_t* src, int32_t* srcLen, uint8_t* dst, int32_t* dstLen,
                               RegExpFindResult* results, int32_t* numFind, RegExpState* state,
                               const RegExpReplaceState* replaceState) noexcept {
  using namespace vekch::regexp;
  if (vekch::AnyNull(src, srcLen, state, dst, replaceState, dstLen, numFind, results)) {
    return StatusNullPointer;
  }
  if (*srcLen < 1 || *dstLen < 1) {
    return StatusSizeError;
  }
  const vekStatus status = *numFind < 1
                               ? StatusSizeError
                               : Search(src, *srcLen, state, Report::kReplace, results, numFind);
  const Job job = {src, *srcLen, dst, *dstLen, replaceState};
  Progress done;
  if (status < 0 || *numFind == 0) {
    done = CopySource(job);
  } else if ((state->compileFlags & RegExpOptionG) == 0) {
    done = ReplaceFirst(job, {results, *numFind});
  } else {
    done = ReplaceAll(job, {results, *numFind}, state->captureCount);
  }
  *srcLen = Reported(done.source);
  *dstLen = Reported(done.destination);
  return status;
}
