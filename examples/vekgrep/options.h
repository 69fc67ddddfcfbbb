// The command line: what was asked for, and the texts that explain what can be asked for.

#ifndef VEKGREP_OPTIONS_H
#define VEKGREP_OPTIONS_H

#include <string>
#include <vector>

#include "common/command_line.h"

namespace examples::vekgrep {

// What is told about the lines selected in a file.
enum class Report { kLines, kMatches, kCount, kFileName };

constexpr bool PrintsLines(Report report) {
  return report == Report::kLines || report == Report::kMatches;
}

enum class ColorMode { kAuto, kAlways, kNever };

struct Options {
  bool fixedText = false;
  bool ignoreCase = false;
  bool lineNumbers = false;
  bool invert = false;
  bool fileNames = false;  // in front of what is told
  bool explains = false;   // `pattern`, and nothing is searched
  Report report = Report::kLines;
  ColorMode color = ColorMode::kAuto;
  std::string pattern;
  std::vector<std::string> patterns;
  std::vector<std::string> files;  // at least one; "-" is standard input
};

CommandLine<Options> ParseCommandLine(const std::vector<std::string>& arguments);

}  // namespace examples::vekgrep

#endif
