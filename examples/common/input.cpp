// SPDX-License-Identifier: MIT

// Chunks: the buffer is filled after the unfinished line left from last time, handed out up to
// its last newline, and what is after that moves to the front.

#include "common/input.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "common/bytes.h"
#include "common/platform.h"

namespace examples {
namespace {

// Small enough to stay in the second-level cache between reading and searching.
constexpr int32_t kUsualCapacity = 128 << 10;
constexpr int32_t kLongestLine = 256 << 20;
constexpr int32_t kPiecesPerOverlap = 4;  // keeps what is searched twice a small part

}  // namespace

File::~File() { CloseFile(); }

void File::CloseFile() {
  if (file > kStandardError) {
    Close(file);
  }
  file = -1;
}

bool File::Open(const std::string& name, int output, std::string* fault) {
  CloseFile();
  file = name == "-" ? kStandardInput : OpenForReading(name);
  if (file < 0) {
    *fault = std::strerror(errno);
    return false;
  }
  if (output >= 0 && ReadsItsOwnOutput(file, output)) {
    *fault = "the file is also the output";
    return false;
  }
  return true;
}

int64_t File::Read(uint8_t* buffer, size_t size, std::string* fault) {
  const int64_t count = ReadSome(file, buffer, size);
  if (count < 0) {
    *fault = std::strerror(errno);
  }
  return count;
}

Input::Input(Lines linesWanted, int32_t overlapBytes, uint8_t endOfLine)
    : lines(linesWanted), overlap(overlapBytes), lineEnd(endOfLine) {}

void Input::Begin(Source& nextSource) {
  source = &nextSource;
  used = handedOut = 0;
  offset = 0;
  ended = binary = false;
  fault.clear();
}

bool Input::Fail(const std::string& reason) {
  fault = reason;
  ended = true;
  return false;
}

bool Input::Grow() {
  const int32_t least = std::max(kUsualCapacity, kPiecesPerOverlap * overlap);
  const int32_t wanted = capacity == 0 ? least : std::min(2 * capacity, kLongestLine);
  if (wanted <= capacity) {
    return Fail("a line is longer than " + std::to_string(kLongestLine >> 20) +
                " MiB; it and what follows were left out");
  }
  void* grown = std::realloc(buffer.get(), static_cast<size_t>(wanted));
  if (grown == nullptr) {
    return Fail("no memory for a line of more than " + std::to_string(used) +
                " bytes; it and what follows were left out");
  }
  static_cast<void>(buffer.release());
  buffer.reset(static_cast<uint8_t*>(grown));
  capacity = wanted;
  return true;
}

// Appends to the buffer; false at the end of the source or after a fault.
bool Input::ReadMore() {
  const auto room = static_cast<size_t>(capacity - used);
  const int64_t count = source->Read(buffer.get() + used, room, &fault);
  if (count <= 0) {
    ended = true;
    return false;
  }
  const int32_t end = used + static_cast<int32_t>(count);
  const bool asked = lines == Lines::kWholeReportBinary || lines == Lines::kWholeUnlessBinary;
  binary = binary || (asked && FindByte(buffer.get(), {used, end}, 0) >= 0);
  used = end;
  return true;
}

std::string Input::Peek(int32_t count) {
  while (!ended && used < count && (used < capacity || Grow()) && ReadMore()) {
  }
  return {reinterpret_cast<const char*>(buffer.get()), static_cast<size_t>(std::min(count, used))};
}

Source& Input::Rest(std::string* read) {
  read->assign(reinterpret_cast<const char*>(buffer.get()), static_cast<size_t>(used));
  return *source;
}

bool Input::HandOut(Chunk* chunk, int32_t length, bool endsLine, int32_t kept) {
  *chunk = {buffer.get(), length, offset, endsLine};
  handedOut = length - kept;
  return true;
}

bool Input::Next(Chunk* chunk) {
  used -= handedOut;
  offset += handedOut;
  if (used > 0 && handedOut > 0) {
    std::memmove(buffer.get(), buffer.get() + handedOut, static_cast<size_t>(used));
  }
  handedOut = 0;
  const int32_t peeked = FindLastByte(buffer.get(), {0, used}, lineEnd);
  if (peeked >= 0) {
    return HandOut(chunk, peeked + 1, true, 0);
  }
  while (!ended) {
    if (used == capacity) {
      const bool pieces = lines == Lines::kWholeUnlessBinary ? binary : lines == Lines::kPieces;
      if (capacity > 0 && pieces) {
        return HandOut(chunk, used, false, overlap);
      }
      if (!Grow()) {
        return false;
      }
    }
    const int32_t before = used;
    if (ReadMore()) {
      const int32_t newline = FindLastByte(buffer.get(), {before, used}, lineEnd);
      if (newline >= 0) {
        return HandOut(chunk, newline + 1, true, 0);
      }
    }
  }
  return used > 0 && HandOut(chunk, used, true, 0);
}

}  // namespace examples
