// SPDX-License-Identifier: MIT
#include "context.h"

#include <algorithm>
#include <utility>

namespace examples::vekgrep {

Context::Context(int64_t linesBefore, int64_t linesAfter, uint8_t endOfLine, Show showLine,
                 std::function<void()> separateLines)
    : before(linesBefore),
      after(linesAfter),
      lineEnd(endOfLine),
      show(std::move(showLine)),
      separate(std::move(separateLines)) {}

void Context::Approach(const Chunk& chunk, int32_t begin) {
  ShowTrailing(chunk, begin);
  ShowLeading(chunk, begin);
}

void Context::Pass(int32_t end) {
  shownTo = end;
  skipped = false;
  held.clear();
  heldCount = 0;
  afterLeft = after;
}

void Context::ShowTrailing(const Chunk& chunk, int32_t end) {
  for (; afterLeft > 0 && shownTo < end; --afterLeft) {
    const int32_t lineStart = shownTo;
    shownTo = LineEnd(chunk.text, lineStart, end, lineEnd);
    show({chunk.text, {lineStart, shownTo}, 0, lineStart});
  }
}

// Where the last lines before `end` start, as many as are wanted and there.
int32_t Context::LeadingStart(const Chunk& chunk, int32_t end, int64_t* left) const {
  int32_t start = end;
  for (*left = before; *left > 0 && start > shownTo; --*left) {
    start = LineStart(chunk.text, shownTo, start - 1, lineEnd);
  }
  return start;
}

void Context::ShowLeading(const Chunk& chunk, int32_t end) {
  int64_t left = 0;
  int32_t start = LeadingStart(chunk, end, &left);
  const int64_t ofHeld = start == shownTo ? std::min(left, heldCount) : 0;
  if (skipped || ofHeld < heldCount || start > shownTo) {
    separate();
  }
  ShowHeld(ofHeld);
  while (start < end) {
    const int32_t next = LineEnd(chunk.text, start, end, lineEnd);
    show({chunk.text, {start, next}, 0, start});
    start = next;
  }
}

// The last lines of those that are held.
void Context::ShowHeld(int64_t count) {
  const auto* bytes = Bytes(held);
  const auto size = static_cast<int32_t>(held.size());
  int32_t start = size;
  for (int64_t i = 0; i < count; ++i) {
    start = LineStart(bytes, 0, start - 1, lineEnd);
  }
  for (; start < size; --count) {
    const int32_t next = LineEnd(bytes, start, size, lineEnd);
    show({bytes, {start, next}, count, start - size});
    start = next;
  }
}

void Context::EndChunk(const Chunk& chunk) {
  ShowTrailing(chunk, chunk.length);
  int64_t left = 0;
  const int32_t start = LeadingStart(chunk, chunk.length, &left);
  if (left == 0) {
    skipped = skipped || heldCount > 0 || start > shownTo;
    held.clear();
    heldCount = 0;
  }
  held.append(reinterpret_cast<const char*>(chunk.text) + start,
              static_cast<size_t>(chunk.length - start));
  heldCount += before - left;
  if (heldCount > before) {
    int32_t position = 0;
    for (; heldCount > before; --heldCount) {
      position = LineEnd(Bytes(held), position, static_cast<int32_t>(held.size()), lineEnd);
    }
    held.erase(0, static_cast<size_t>(position));
    skipped = true;
  }
  shownTo = 0;
}

}  // namespace examples::vekgrep
