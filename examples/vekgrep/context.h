// SPDX-License-Identifier: MIT

// Lines around selected lines: which of them are shown, across the ends of chunks.

#ifndef VEKGREP_CONTEXT_H
#define VEKGREP_CONTEXT_H

#include <cstdint>
#include <functional>
#include <string>

#include "common/bytes.h"
#include "common/input.h"

namespace examples::vekgrep {

class Context {
 public:
  // Shows a line of the context: its bytes with its end, how many lines it is before the
  // chunk's first line (0 and below: in the chunk), and its position in the chunk, below 0 if it is
  // before the chunk.
  struct Line {
    const uint8_t* text;
    Range range;
    int64_t linesAhead;
    int32_t position;
  };
  using Show = std::function<void(const Line& line)>;

  // `separate` is called where lines were left out between two that are shown.
  Context(int64_t linesBefore, int64_t linesAfter, uint8_t lineEnd, Show show,
          std::function<void()> separate);

  // Shows what is due before the selected lines at `begin` of the chunk.
  void Approach(const Chunk& chunk, int32_t begin);

  // The selected lines were shown, up to `end`.
  void Pass(int32_t end);

  // Shows what is due in the rest of the chunk, and keeps what may be due later.
  void EndChunk(const Chunk& chunk);

  // Whether lines after the last selected one are still to be shown.
  bool Waits() const { return afterLeft > 0; }

 private:
  void ShowTrailing(const Chunk& chunk, int32_t end);
  void ShowLeading(const Chunk& chunk, int32_t end);
  void ShowHeld(int64_t count);
  int32_t LeadingStart(const Chunk& chunk, int32_t end, int64_t* left) const;

  const int64_t before;
  const int64_t after;
  const uint8_t lineEnd;
  const Show show;
  const std::function<void()> separate;

  int64_t afterLeft = 0;
  int32_t shownTo = 0;  // position in the chunk up to which lines are shown or not to be
  bool skipped = true;  // lines before what is held were left out
  std::string held;     // the last lines of the chunks before that were not shown
  int64_t heldCount = 0;
};

}  // namespace examples::vekgrep

#endif
