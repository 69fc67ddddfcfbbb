// SPDX-License-Identifier: MIT

// Each step is one call of the library; the order of the steps is the promise of the help text.

#include "editor.h"

#include <algorithm>
#include <cstdio>

#include "common/bytes.h"
#include "vekch/vekch.h"

namespace examples::vektext {

Editor::Editor(const Options& editOptions, Encoder& textEncoder, Output& hashOutput)
    : options(editOptions), encoder(textEncoder), output(hashOutput) {}

void Editor::BeginFile() {
  lines = 0;
  if (lineIsOpen && options.hash == nullptr) {
    encoder.Append(reinterpret_cast<const uint8_t*>("\n"), 1);
  }
  lineIsOpen = false;
}

void Editor::Edit(const Chunk& chunk) {
  if (!options.ActsOnLines()) {
    Change(chunk.text, chunk.length);
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
  if (!options.fields.empty()) {
    if (CutFields(line, &length)) {
      line = joined.data();
    } else if (options.onlyDelimited) {
      return;
    }
  }
  Change(line, length);
  if (options.hash != nullptr) {
    PrintHash(line, length);
    return;
  }
  encoder.Append(line, length);
  lineIsOpen = !hasNewline;
  if (hasNewline) {
    encoder.Append(reinterpret_cast<const uint8_t*>("\n"), 1);
  }
}

// Puts the wanted fields together, and their length instead of the line's. False where the line
// has no delimiter, and so no fields.
bool Editor::CutFields(const uint8_t* line, int32_t* length) {
  int32_t end = FindByte(line, {0, *length}, options.delimiter);
  if (end < 0) {
    return false;
  }
  chosen.clear();
  chosenLengths.clear();
  nextRange = 0;
  int32_t begin = 0;
  for (int64_t number = 1; nextRange < options.fields.size(); ++number) {
    const bool isLast = end < 0;
    Choose(number, line + begin, (isLast ? *length : end) - begin);
    if (isLast) {
      break;
    }
    begin = end + 1;
    end = FindByte(line, {begin, *length}, options.delimiter);
  }
  joined.resize(std::max<size_t>(joined.size(), static_cast<size_t>(*length) + 1));
  const auto count = static_cast<int32_t>(chosen.size());
  const int joint = options.joint >= 0 ? options.joint : options.delimiter;
  veksConcatC_8u_D2L(chosen.data(), chosenLengths.data(), count, static_cast<uint8_t>(joint),
                     joined.data());
  *length = count == 0 ? 0 : count - 1;
  for (const int32_t one : chosenLengths) {
    *length += one;
  }
  return true;
}

void Editor::Choose(int64_t number, const uint8_t* field, int32_t length) {
  const FieldRange& range = options.fields[nextRange];
  if (range.first <= number) {
    chosen.push_back(field);
    chosenLengths.push_back(length);
  }
  nextRange += number == range.last ? 1 : 0;
}

void Editor::Change(uint8_t* text, int32_t length) const {
  if (options.mapping == CaseMapping::kLower) {
    veksLowercaseLatin_8u_I(text, length);
  } else if (options.mapping == CaseMapping::kUpper) {
    veksUppercaseLatin_8u_I(text, length);
  }
  for (const auto& [from, to] : options.replacements) {
    veksReplaceC_8u(text, text, length, from, to);
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
