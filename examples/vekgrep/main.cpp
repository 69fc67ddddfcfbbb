// vekgrep: prints the lines of files that contain a text. It shows the library at work in a program
// for every day: all searching and comparing of bytes is done by the library's exported functions,
// though files may be larger than their 32-bit lengths.
//
//   options      the command line
//   input        chunks of whole lines, in bounded memory
//   searcher     where a chunk matches
//   file_search  which lines of a file are selected, and what is told of them
//   explain      what a pattern compiles to
//   output       buffer, colours, messages
//   platform     files, terminals and the entry point of each system

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

#include "explain.h"
#include "file_search.h"
#include "platform.h"

namespace vekgrep {
namespace {

constexpr int kFound = 0;
constexpr int kNotFound = 1;
constexpr int kTrouble = 2;

bool WantsColor(ColorMode mode) {
  if (mode != ColorMode::kAuto) {
    return mode == ColorMode::kAlways;
  }
  const char* noColor = std::getenv("NO_COLOR");
  return (noColor == nullptr || *noColor == 0) && TerminalHasColor(kStandardOutput);
}

// Writes what is left and turns a write that failed into the status of a failure.
int Finish(Output& output, int status) {
  output.Flush();
  if (output.Error() != 0) {
    output.Complain("standard output", std::strerror(output.Error()));
    return kTrouble;
  }
  return status;
}

int SearchFiles(const Options& options, Output& output) {
  Searcher searcher(options.patterns, options.ignoreCase);
  const bool printsLines = PrintsLines(options.report);
  Input input(printsLines ? Input::Lines::kWhole : Input::Lines::kPieces,
              std::max(searcher.LongestPattern(), 1));
  bool found = false;
  bool trouble = false;
  for (const std::string& name : options.files) {
    const std::string label = name == "-" ? "(standard input)" : name;
    if (input.Open(name, printsLines ? kStandardOutput : -1)) {
      found |= FileSearch(options, searcher, output, label).Run(input);
    }
    if (output.Error() != 0) {
      break;
    }
    if (!input.Fault().empty()) {
      output.Complain(label, input.Fault());
      trouble = true;
    }
  }
  return trouble ? kTrouble : found ? kFound : kNotFound;
}

int ExplainPattern(const CommandLine& commandLine, Output& output) {
  const Explanation explanation = Explain(commandLine.text, commandLine.options.ignoreCase);
  if (!explanation.compiles) {
    output.Complain(explanation.text);
    return kTrouble;
  }
  output.Append(explanation.text);
  return Finish(output, kFound);
}

int RunOrThrow(const std::vector<std::string>& arguments) {
  const CommandLine commandLine = ParseCommandLine(arguments);
  Output output(WantsColor(commandLine.options.color));
  switch (commandLine.kind) {
    case CommandLine::Kind::kHelp:
      output.Append(commandLine.text);
      return Finish(output, kFound);
    case CommandLine::Kind::kFault:
      output.Complain(commandLine.text);
      return kTrouble;
    case CommandLine::Kind::kExplain:
      return ExplainPattern(commandLine, output);
    case CommandLine::Kind::kSearch:
      break;
  }
  return Finish(output, SearchFiles(commandLine.options, output));
}

}  // namespace

int Run(const std::vector<std::string>& arguments) {
  PrepareStreams();
  try {
    return RunOrThrow(arguments);
  } catch (const std::bad_alloc&) {
    constexpr char kMessage[] = "vekgrep: not enough memory\n";
    static_cast<void>(Write(kStandardError, kMessage, sizeof kMessage - 1));
    return kTrouble;
  }
}

}  // namespace vekgrep
