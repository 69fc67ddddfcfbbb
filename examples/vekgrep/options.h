// The command line: what was asked for, and the texts that explain what can be asked for.

#ifndef VEKGREP_OPTIONS_H
#define VEKGREP_OPTIONS_H

#include <string>
#include <vector>

namespace vekgrep {

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
  Report report = Report::kLines;
  ColorMode color = ColorMode::kAuto;
  std::vector<std::string> patterns;
  std::vector<std::string> files;  // at least one; "-" is standard input
};

// What the command line comes to. `text` is help for standard output; for a fault, a message for
// standard error; or the pattern to explain.
struct CommandLine {
  enum class Kind { kSearch, kExplain, kHelp, kFault };
  Kind kind;
  Options options;
  std::string text;
};

CommandLine ParseCommandLine(const std::vector<std::string>& arguments);

}  // namespace vekgrep

#endif
