// SPDX-License-Identifier: MIT

// What happens to UTF-8 text between decoding and encoding.

#ifndef VEKTEXT_EDITOR_H
#define VEKTEXT_EDITOR_H

#include <cstdint>
#include <vector>

#include "common/input.h"
#include "common/output.h"
#include "encoder.h"
#include "options.h"

namespace examples::vektext {

class Editor {
 public:
  // Text goes to the encoder, hashes to the output.
  Editor(const Options& options, Encoder& encoder, Output& output);

  // Changes the chunk in place on its way. It consists of whole lines if the options act on lines.
  void Edit(const Chunk& chunk);

  // Lines done so far, if the options act on lines.
  int64_t Lines() const { return lines; }

 private:
  void EditLine(uint8_t* line, int32_t length, bool hasNewline);
  int32_t CutField(const uint8_t* line, int32_t length);
  void MapCase(uint8_t* text, int32_t length) const;
  void PrintHash(const uint8_t* text, int32_t length);

  const Options& options;
  Encoder& encoder;
  Output& output;
  int64_t lines = 0;
  std::vector<uint8_t> field;
  // The list that lines are split into: of fields in front of the wanted one nothing is stored.
  std::vector<uint8_t*> destinations;
  std::vector<int32_t> capacities;
};

}  // namespace examples::vektext

#endif
