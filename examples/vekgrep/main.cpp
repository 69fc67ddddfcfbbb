// SPDX-License-Identifier: MIT

// vekgrep: prints the lines of files that match a pattern or contain a text. It shows the library
// at work in a program for every day: all searching and comparing of bytes is done by the library's
// exported functions, though files may be larger than their 32-bit lengths.
//
//   options           the command line
//   files_search      all files, also those in folders
//   file_search       which lines of a file are selected, and what is told of them
//   searcher          what it asks where a chunk of lines matches; of this, for fixed text,
//   text_searcher     occurrences, and for patterns
//   pattern_searcher  matches of several of them
//   line_pattern      matches of one
//   line_filter       lines that are worth a search
//   compiled_pattern  a pattern's object
//   replacer          a template, and lines with matches replaced
//   explain           what a pattern compiles to
//   styled_output     colours
//   progress          a line that tells how far a long run is
//
// What any such program needs stands in the folder common: reading chunks of whole lines in bounded
// memory, output, command lines, and what differs between the systems.

#include <algorithm>
#include <cstdlib>

#include "common/platform.h"
#include "common/program.h"
#include "explain.h"
#include "files_search.h"
#include "line_filter.h"
#include "pattern_searcher.h"
#include "text_searcher.h"

namespace examples::vekgrep {
namespace {

bool WantsColor(ColorMode mode) {
  if (mode != ColorMode::kAuto) {
    return mode == ColorMode::kAlways;
  }
  const char* noColor = std::getenv("NO_COLOR");
  return (noColor == nullptr || *noColor == 0) && TerminalHasColor(kStandardOutput);
}

// Whole lines are what patterns are searched for in.
int SearchForPatterns(const Options& options, StyledOutput& output, Progress& progress) {
  PatternSearcher searcher;
  Replacer replacer;
  std::string fault;
  for (const std::string& pattern : options.patterns) {
    if (!searcher.Add(pattern, options.settings, &fault)) {
      output.Complain(fault);
      return kTrouble;
    }
  }
  if (options.report == Report::kReplaced && !replacer.ReadTemplate(options.replacement, &fault)) {
    output.Complain(fault);
    return kTrouble;
  }
  const Input::Lines lines =
      PrintsLines(options.report) ? Input::Lines::kWholeTellBinary : Input::Lines::kWhole;
  return FilesSearch({options, searcher, replacer, output, progress}, lines, 0).Run();
}

int SearchForTexts(const Options& options, StyledOutput& output, Progress& progress) {
  TextSearcher searcher(options.patterns, options.ignoreCase);
  Replacer unused;
  const Input::Lines lines =
      PrintsLines(options.report) ? Input::Lines::kWholeUnlessBinary : Input::Lines::kPieces;
  return FilesSearch({options, searcher, unused, output, progress}, lines,
                     std::max(searcher.LongestPattern(), 1))
      .Run();
}

int Search(const Options& options, StyledOutput& output) {
  Progress progress(output, TerminalHasColor(kStandardError));
  return options.fixedText ? SearchForTexts(options, output, progress)
                           : SearchForPatterns(options, output, progress);
}

int ExplainPattern(const Options& options, Output& output) {
  CompiledPattern compiled;
  std::string fault;
  if (!compiled.Compile(options.pattern, options.settings, &fault)) {
    output.Complain(fault);
    return kTrouble;
  }
  output.Append(ListProgram(compiled.Header()) + "   searched: " +
                LineFilter(options.pattern, options.settings, compiled).Description() + "\n");
  return 0;
}

int Work(const std::vector<std::string>& arguments) {
  const CommandLine<Options> commandLine = ParseCommandLine(arguments);
  StyledOutput output("vekgrep", WantsColor(commandLine.options.color));
  switch (commandLine.kind) {
    case CommandLine<Options>::Kind::kHelp:
      output.Append(commandLine.text);
      return Finish(output, 0);
    case CommandLine<Options>::Kind::kFault:
      output.Complain(commandLine.text);
      return kTrouble;
    case CommandLine<Options>::Kind::kWork:
      break;
  }
  const Options& options = commandLine.options;
  return Finish(output,
                options.explains ? ExplainPattern(options, output) : Search(options, output));
}

}  // namespace
}  // namespace examples::vekgrep

namespace examples {

int Run(const std::vector<std::string>& arguments) {
  return RunWork("vekgrep", arguments, vekgrep::Work);
}

}  // namespace examples
