// SPDX-License-Identifier: MIT

// The command line: what was asked for, and the texts that explain what can be asked for.

#ifndef VEKGREP_OPTIONS_H
#define VEKGREP_OPTIONS_H

#include <string>
#include <vector>

#include "common/command_line.h"
#include "compiled_pattern.h"

namespace examples::vekgrep {

// What is told about the lines selected in a file.
enum class Report { kLines, kMatches, kGroups, kReplaced, kCount, kFileName };

constexpr bool PrintsLines(Report report) {
  return report != Report::kCount && report != Report::kFileName;
}

// Matches alone, not the lines around them.
constexpr bool PrintsMatches(Report report) {
  return report == Report::kMatches || report == Report::kGroups;
}

enum class ColorMode { kAuto, kAlways, kNever };

struct Options {
  bool fixedText = false;
  bool ignoreCase = false;  // of fixed text; of patterns it is among the settings
  bool lineNumbers = false;
  bool invert = false;
  bool fileNames = false;  // in front of what is told
  bool explains = false;   // `pattern`, and nothing is searched
  bool recursive = false;
  Report report = Report::kLines;
  ColorMode color = ColorMode::kAuto;
  PatternSettings settings;  // where the text is not fixed
  std::string replacement;
  std::string pattern;
  std::vector<std::string> patterns;
  std::vector<std::string> files;  // at least one; "-" is standard input
};

CommandLine<Options> ParseCommandLine(const std::vector<std::string>& arguments);

}  // namespace examples::vekgrep

#endif
