// SPDX-License-Identifier: MIT
#include "file_part.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <numeric>

#include "common/platform.h"
#include "lines.h"

namespace examples::vekgrep {
namespace {

constexpr int64_t kPiece = 64 << 10;

}  // namespace

PartSource::PartSource(int partFile, int64_t begin, int64_t partEnd, uint8_t endOfLine)
    : file(partFile), end(partEnd), lineEnd(endOfLine), position(begin) {
  if (begin > 0) {
    SkipForeignLine(begin);
  }
}

// From the byte before the part on: if that ends a line, the part starts with one of its own.
void PartSource::SkipForeignLine(int64_t begin) {
  std::vector<uint8_t> piece(kPiece);
  for (position = begin - 1; position < end;) {
    const int64_t count = ReadSomeAt(file, position, piece.data(),
                                     static_cast<size_t>(std::min(kPiece, end - position)));
    const int32_t newline = FindByte(piece.data(), {0, static_cast<int32_t>(count)}, lineEnd);
    if (count <= 0 || newline >= 0) {
      position += std::max<int64_t>(newline + 1, 0);
      done = count <= 0;
      break;
    }
    position += count;
  }
  hasForeignEnd = position > begin;
  done = done || position >= end;
}

int64_t PartSource::Read(uint8_t* buffer, size_t size, std::string* fault) {
  if (done) {
    return 0;
  }
  const bool inside = position < end;
  const int64_t wanted = std::min(static_cast<int64_t>(size), inside ? end - position : kPiece);
  const int64_t count = ReadSomeAt(file, position, buffer, static_cast<size_t>(wanted));
  if (count <= 0) {
    *fault = count < 0 ? std::strerror(errno) : "";
    return count;
  }
  position += count;
  if (inside) {
    done = position == end && buffer[count - 1] == lineEnd;
    return count;
  }
  const int32_t newline = FindByte(buffer, {0, static_cast<int32_t>(count)}, lineEnd);
  done = newline >= 0;
  return done ? newline + 1 : count;
}

int64_t PartLines::Before(size_t part, int file, int64_t begin, int64_t end, uint8_t lineEnd) {
  std::vector<uint8_t> piece(kPiece);
  int64_t lines = 0;
  while (begin < end) {
    const int64_t count =
        ReadSomeAt(file, begin, piece.data(), static_cast<size_t>(std::min(kPiece, end - begin)));
    if (count <= 0) {
      break;  // searching meets it as well, and reports it
    }
    lines += CountByte(piece.data(), {0, static_cast<int32_t>(count)}, lineEnd);
    begin += count;
  }
  std::unique_lock<std::mutex> lock(mutex);
  ends[part] = lines;
  counted.notify_all();
  const auto own = ends.begin() + static_cast<std::ptrdiff_t>(part);
  counted.wait(lock, [&] { return std::find(ends.begin(), own, -1) == own; });
  return std::accumulate(ends.begin(), own, int64_t{0});
}

}  // namespace examples::vekgrep
