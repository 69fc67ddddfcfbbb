// SPDX-License-Identifier: MIT

// The command line: what was asked for, and the texts that explain what can be asked for.

#ifndef VEKGREP_OPTIONS_H
#define VEKGREP_OPTIONS_H

#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "common/command_line.h"
#include "compiled_pattern.h"

namespace examples::vekgrep {

// What is reported about the lines selected in a file.
enum class Report {
  kLines,
  kMatches,
  kGroups,
  kReplaced,
  kCount,
  kFileName,
  kFileNameWithout,  // of files in which none was selected
  kNothing           // the exit status alone
};

constexpr bool PrintsLines(Report report) { return report <= Report::kReplaced; }

// Matches alone, not the lines around them.
constexpr bool PrintsMatches(Report report) {
  return report == Report::kMatches || report == Report::kGroups;
}

// Whether the first selected line decides everything.
constexpr bool EndsAtFirst(Report report) { return report >= Report::kFileName; }

enum class ColorMode { kAuto, kAlways, kNever };
enum class BinaryFiles { kTell, kAsText, kLeaveOut };
enum class Folders { kRead, kSkip, kSearch };

// A row of --include or --exclude.
struct NameRule {
  std::string glob;
  bool includes;
};

struct Options : CommonSettings {
  static constexpr int64_t kNoBound = std::numeric_limits<int64_t>::max();

  // What is searched for.
  bool fixedText = false;
  bool ignoreCase = false;
  bool extended = false;     // white space in patterns is ignored
  PatternSettings settings;  // of fixed text, those that fixed text has
  std::string replacement;
  std::string explained;  // pattern to explain; then nothing is searched
  bool explains = false;
  bool hasPatterns = false;
  bool onlyForPatterns = false;  // something was asked for that fixed text doesn't have
  std::vector<std::string> patterns;

  // Which lines are selected.
  bool invert = false;
  int64_t mostLines = kNoBound;
  uint8_t lineEnd = '\n';

  // What is reported of them.
  Report report = Report::kLines;
  bool counts = false;
  bool lineNumbers = false;
  bool byteOffsets = false;
  bool initialTab = false;
  bool nullAfterName = false;
  bool fileNames = false;  // before what is reported
  enum class FileNames { kIfSeveral, kAlways, kNever } whenFileNames = FileNames::kIfSeveral;
  bool lineBuffered = false;
  int64_t before = -1;  // lines of context; -1: what `around` says
  int64_t after = -1;
  int64_t around = -1;
  bool separates = true;  // groups of lines
  std::string separator = "--";
  ColorMode color = ColorMode::kAuto;

  // Which files are searched.
  std::vector<std::string> files;  // at least one; "-" is standard input
  bool currentFolder = false;      // implied as the only one: its name isn't shown
  std::string label = "(standard input)";
  Folders folders = Folders::kRead;
  bool followsLinks = false;
  bool skipsDevices = false;
  bool silentAboutFiles = false;
  BinaryFiles binaryFiles = BinaryFiles::kTell;
  std::vector<NameRule> fileRules;
  std::vector<std::string> leftOutFolders;
  int64_t jobs = 0;  // threads; 0: as many as there are processors

  int64_t Before() const { return before >= 0 ? before : around >= 0 ? around : 0; }
  int64_t After() const { return after >= 0 ? after : around >= 0 ? around : 0; }
  bool HasContext() const { return before >= 0 || after >= 0 || around >= 0; }
};

CommandLine<Options> ParseCommandLine(const std::vector<std::string>& arguments);

}  // namespace examples::vekgrep

#endif
