// SPDX-License-Identifier: MIT

// Each step is one call of the library; the order of the steps is the promise of the help text.

#include "editor.h"

#include <algorithm>
#include <cstdio>

#include "common/bytes.h"
#include "vekch/vekch.h"

namespace examples::vektext {

Editor::Editor(const Options& editOptions, Encoder& textEncoder, Output& hashOutput)
    : options(editOptions),
      encoder(textEncoder),
      output(hashOutput),
      field(1),
      destinations(static_cast<size_t>(options.field), field.data()),
      capacities(static_cast<size_t>(options.field), 0) {}

void Editor::Edit(const Chunk& chunk) {
  if (!options.ActsOnLines()) {
    MapCase(chunk.text, chunk.length);
    encoder.Append(chunk.text, chunk.length);
    return;
  }
  for (int32_t begin = 0; begin < chunk.length;) {
    const int32_t end = LineEnd(chunk.text, begin, chunk.length);
    const bool hasNewline = chunk.text[end - 1] == '\n';
    EditLine(chunk.text + begin, end - begin - (hasNewline ? 1 : 0), hasNewline);
    ++lines;
    begin = end;
  }
}

void Editor::EditLine(uint8_t* line, int32_t length, bool hasNewline) {
  if (options.trims) {
    veksTrimCAny_8u(line, length, reinterpret_cast<const uint8_t*>(options.trimSet.data()),
                    static_cast<int32_t>(options.trimSet.size()), line, &length);
  }
  if (options.field > 0) {
    length = CutField(line, length);
    line = field.data();
  }
  MapCase(line, length);
  if (options.hash != nullptr) {
    PrintHash(line, length);
    return;
  }
  encoder.Append(line, length);
  if (hasNewline) {
    encoder.Append(reinterpret_cast<const uint8_t*>("\n"), 1);
  }
}

// Stores the wanted field; its length, which is 0 where there is none. A field cut to no byte at
// all leaves its capacity 0, so the list needs no clearing between lines.
int32_t Editor::CutField(const uint8_t* line, int32_t length) {
  if (field.size() < static_cast<size_t>(length)) {
    field.resize(static_cast<size_t>(length));
    std::fill(destinations.begin(), destinations.end(), field.data());
  }
  int32_t count = options.field;
  capacities.back() = length;
  veksSplitC_8u_D2L(line, length, options.delimiter, destinations.data(), capacities.data(),
                    &count);
  return count == options.field ? capacities.back() : 0;
}

void Editor::MapCase(uint8_t* text, int32_t length) const {
  if (options.mapping == CaseMapping::kLower) {
    veksLowercaseLatin_8u_I(text, length);
  } else if (options.mapping == CaseMapping::kUpper) {
    veksUppercaseLatin_8u_I(text, length);
  }
}

void Editor::PrintHash(const uint8_t* text, int32_t length) {
  uint32_t hash = 0;
  options.hash(text, length, &hash);
  char digits[10];
  std::snprintf(digits, sizeof digits, "%08x\n", static_cast<unsigned>(hash));
  output.Append(digits);
}

}  // namespace examples::vektext
