// SPDX-License-Identifier: MIT

// The command line: what was asked for, and the texts that explain what can be asked for.

#ifndef VEKTEXT_OPTIONS_H
#define VEKTEXT_OPTIONS_H

#include <cstdint>
#include <string>
#include <vector>

#include "common/command_line.h"
#include "encoding.h"
#include "vekch/vekch.h"

namespace examples::vektext {

enum class CaseMapping { kNone, kLower, kUpper };

using HashFunction = vekStatus (*)(const uint8_t* string, int32_t length, uint32_t* hash);

struct Options {
  Encoding from = Encoding::kUtf8;
  Encoding to = Encoding::kUtf8;
  bool marks = false;     // byte order marks are obeyed, dropped and written
  bool trims = false;     // trimSet matters
  std::string trimSet;    // bytes to be dropped from the ends of lines
  uint8_t delimiter = 0;  // between fields
  int32_t field = 0;      // from 1; 0: whole lines
  CaseMapping mapping = CaseMapping::kNone;
  HashFunction hash = nullptr;  // null: print text

  // Whether lines have to be held as a whole.
  bool ActsOnLines() const { return trims || field > 0 || hash != nullptr; }
};

CommandLine<Options> ParseCommandLine(const std::vector<std::string>& arguments);

}  // namespace examples::vektext

#endif
