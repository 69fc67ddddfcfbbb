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

  // Goes over to another file: a line that the one before left open ends there.
  void BeginFile();

  // Lines of the file done so far, if the options act on lines.
  int64_t Lines() const { return lines; }

 private:
  void EditLine(uint8_t* line, int32_t length, bool hasNewline);
  bool CutFields(const uint8_t* line, int32_t* length);
  void Choose(int64_t number, const uint8_t* field, int32_t length);
  void Change(uint8_t* text, int32_t length) const;
  void PrintHash(const uint8_t* text, int32_t length);

  const Options& options;
  Encoder& encoder;
  Output& output;
  int64_t lines = 0;
  bool lineIsOpen = false;
  // The fields of a line that were chosen, and what they come to together.
  std::vector<const uint8_t*> chosen;
  std::vector<int32_t> chosenLengths;
  size_t nextRange = 0;  // of the options' fields, as far as the line was looked at
  std::vector<uint8_t> joined;
};

}  // namespace examples::vektext

#endif
