// vekgrep: prints the lines of files that contain a text. It shows the library at work in a program
// for every day: all searching and comparing of bytes is done by the library's exported functions,
// though files may be larger than their 32-bit lengths.
//
//   options        the command line
//   searcher       where a chunk matches
//   file_search    which lines of a file are selected, and what is told of them
//   explain        what a pattern compiles to
//   styled_output  colours
//
// What any such program needs stands in the folder common: reading chunks of whole lines in bounded
// memory, output, command lines, and what differs between the systems.

#include <algorithm>
#include <cstdlib>

#include "common/platform.h"
#include "common/program.h"
#include "explain.h"
#include "file_search.h"

#ifdef _WIN32
// Asks the run-time library to expand wildcards, which the command interpreters leave to programs.
extern "C" int _dowildcard;  // NOLINT: the run-time library's name
int _dowildcard = -1;        // NOLINT
#endif

namespace examples::vekgrep {
namespace {

constexpr int kFound = 0;
constexpr int kNotFound = 1;

bool WantsColor(ColorMode mode) {
  if (mode != ColorMode::kAuto) {
    return mode == ColorMode::kAlways;
  }
  const char* noColor = std::getenv("NO_COLOR");
  return (noColor == nullptr || *noColor == 0) && TerminalHasColor(kStandardOutput);
}

int SearchFiles(const Options& options, StyledOutput& output) {
  Searcher searcher(options.patterns, options.ignoreCase);
  const bool printsLines = PrintsLines(options.report);
  Input input(printsLines ? Input::Lines::kWholeUnlessBinary : Input::Lines::kPieces,
              std::max(searcher.LongestPattern(), 1));
  File file;
  bool found = false;
  bool trouble = false;
  for (const std::string& name : options.files) {
    const std::string label = name == "-" ? "(standard input)" : name;
    std::string fault;
    if (file.Open(name, printsLines ? kStandardOutput : -1, &fault)) {
      input.Begin(file);
      found |= FileSearch(options, searcher, output, label).Run(input);
      fault = input.Fault();
    }
    if (output.Error() != 0) {
      break;
    }
    if (!fault.empty()) {
      output.Complain(label, fault);
      trouble = true;
    }
  }
  return trouble ? kTrouble : found ? kFound : kNotFound;
}

int ExplainPattern(const Options& options, Output& output) {
  const Explanation explanation = Explain(options.pattern, options.ignoreCase);
  if (!explanation.compiles) {
    output.Complain(explanation.text);
    return kTrouble;
  }
  output.Append(explanation.text);
  return kFound;
}

int Work(const std::vector<std::string>& arguments) {
  const CommandLine<Options> commandLine = ParseCommandLine(arguments);
  StyledOutput output("vekgrep", WantsColor(commandLine.options.color));
  switch (commandLine.kind) {
    case CommandLine<Options>::Kind::kHelp:
      output.Append(commandLine.text);
      return Finish(output, kFound);
    case CommandLine<Options>::Kind::kFault:
      output.Complain(commandLine.text);
      return kTrouble;
    case CommandLine<Options>::Kind::kWork:
      break;
  }
  const Options& options = commandLine.options;
  return Finish(output,
                options.explains ? ExplainPattern(options, output) : SearchFiles(options, output));
}

}  // namespace
}  // namespace examples::vekgrep

namespace examples {

int Run(const std::vector<std::string>& arguments) {
  return RunWork("vekgrep", arguments, vekgrep::Work);
}

}  // namespace examples
