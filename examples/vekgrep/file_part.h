// SPDX-License-Identifier: MIT

// A large file in parts, so that several threads can search it.

#ifndef VEKGREP_FILE_PART_H
#define VEKGREP_FILE_PART_H

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "common/input.h"

namespace examples::vekgrep {

// The lines that start within a part of a file, the last of them to its end.
class PartSource : public Source {
 public:
  PartSource(int file, int64_t begin, int64_t end, uint8_t lineEnd);

  int64_t Read(uint8_t* buffer, size_t size, std::string* fault) override;

  // Whether a line that starts before the part ends in it.
  bool HasForeignEnd() const { return hasForeignEnd; }

 private:
  void SkipForeignLine(int64_t begin);

  const int file;
  const int64_t end;
  const uint8_t lineEnd;
  int64_t position;
  bool done = false;
  bool hasForeignEnd = false;
};

// How many lines end in each part of a file. Parts are counted by the threads that search them.
class PartLines {
 public:
  explicit PartLines(size_t parts) : ends(parts, -1) {}

  // Counts the part's lines and waits until those before it are counted; their sum. Each part
  // is begun after those before it, and counting waits for nothing, so this ends.
  int64_t Before(size_t part, int file, int64_t begin, int64_t end, uint8_t lineEnd);

 private:
  std::mutex mutex;
  std::condition_variable counted;
  std::vector<int64_t> ends;
};

}  // namespace examples::vekgrep

#endif
