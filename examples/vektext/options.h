// SPDX-License-Identifier: MIT

// The command line: what was asked for, and the texts that explain what can be asked for.

#ifndef VEKTEXT_OPTIONS_H
#define VEKTEXT_OPTIONS_H

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "common/command_line.h"
#include "common/encoding.h"
#include "vekch/vekch.h"

namespace examples::vektext {

enum class CaseMapping { kNone, kLower, kUpper };

using HashFunction = vekStatus (*)(const uint8_t* string, int32_t length, uint32_t* hash);

// Fields from one to another, counted from 1.
struct FieldRange {
  int64_t first;
  int64_t last;
};

struct Options : CommonSettings {
  Encoding from = Encoding::kUtf8;
  Encoding to = Encoding::kUtf8;
  bool encodes = false;            // --to was given
  bool writesMark = false;         // a byte order mark
  bool trims = false;              // trimSet matters
  std::string trimSet;             // bytes to be dropped from the ends of lines
  uint8_t delimiter = '\t';        // between fields
  bool delimits = false;           // one of what is for fields was given
  std::vector<FieldRange> fields;  // in their order, apart; none: whole lines
  bool onlyDelimited = false;      // no lines without a delimiter
  int joint = -1;                  // between fields that are printed; -1: the delimiter
  CaseMapping mapping = CaseMapping::kNone;
  std::vector<std::pair<uint8_t, uint8_t>> replacements;  // of a byte by another
  HashFunction hash = nullptr;                            // null: print text
  std::vector<std::string> files;                         // at least one; "-" is standard input

  // Whether lines have to be held as a whole.
  bool ActsOnLines() const { return trims || !fields.empty() || hash != nullptr; }
};

CommandLine<Options> ParseCommandLine(const std::vector<std::string>& arguments);

}  // namespace examples::vektext

#endif
