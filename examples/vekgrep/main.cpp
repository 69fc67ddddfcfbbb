// SPDX-License-Identifier: MIT

// vekgrep: prints the lines of files that match a pattern or contain a text. It shows the library
// at work in a program for every day: all searching and comparing of bytes is done by the library's
// exported functions, though files may be larger than their 32-bit lengths.
//
//   options           the command line
//   files_search      all files, also those in folders; of this
//   name_rules        which of them by their names
//   file_part         a large one in parts
//   ordered_tasks     several at once
//   file_search       which lines of a file are selected, and what is reported of them
//   context           the lines around them
//   searcher          what it asks where a chunk of lines matches; of this, for fixed text,
//   text_searcher     occurrences, and for patterns
//   pattern_searcher  matches of several of them
//   line_pattern      matches of one
//   line_filter       lines that are worth a search
//   line_safety       whether a pattern may be searched for in many lines at once
//   compiled_pattern  a pattern's object
//   replacer          a template, and lines with matches replaced
//   explain           what a pattern compiles to
//   pattern_fault     what is wrong with one that doesn't
//   styled_output     colours
//   progress          a line that shows how far a long run is
//
// What any such program needs is in the folder common: reading chunks of whole lines in bounded
// memory, output, command lines, and what differs between the systems.

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <memory>
#include <thread>
#include <utility>

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

Colors ColorsOf(const Options& options) {
  Colors colors = ReadColors(std::getenv("GREP_COLORS"), options.invert);
  colors.enabled = WantsColor(options.color);
  return colors;
}

// What is searched for, fixed text or patterns.
struct Wanted {
  bool fixedText;
  bool ignoreCase;
  std::vector<std::string> patterns;
};

// Text in which every byte stands for itself.
std::string Quoted(const std::string& text) {
  std::string pattern;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    const bool special = byte > ' ' && byte < 0x7F && !std::isalnum(byte);
    pattern += special ? std::string{'\\', c} : std::string(1, c);
  }
  return pattern;
}

// Patterns that are nothing but text are searched for as such. Empty text that must have something
// around it is a pattern.
Wanted WhatIsWanted(const Options& options) {
  Wanted wanted = {options.fixedText, options.ignoreCase, options.patterns};
  const bool hasEmpty =
      std::find(wanted.patterns.begin(), wanted.patterns.end(), "") != wanted.patterns.end();
  if (wanted.fixedText && hasEmpty && options.settings.bounds != Bounds::kNone) {
    wanted.fixedText = false;
    std::transform(wanted.patterns.begin(), wanted.patterns.end(), wanted.patterns.begin(), Quoted);
  } else if (!wanted.fixedText && options.report != Report::kGroups &&
             options.report != Report::kReplaced) {
    PlainTexts plain;
    if (std::all_of(wanted.patterns.begin(), wanted.patterns.end(), [&](const std::string& one) {
          return IsPlainText(one, options.settings, &plain) &&
                 (!one.empty() || options.settings.bounds == Bounds::kNone);
        })) {
      wanted = {true, plain.ignoreCase, plain.texts};
    }
  }
  return wanted;
}

// Null with the reason in `fault` if something is wrong with a pattern.
std::unique_ptr<Searcher> MakeSearcher(const Options& options, const Wanted& wanted, bool marks,
                                       std::string* fault) {
  if (wanted.fixedText) {
    return std::make_unique<TextSearcher>(wanted.patterns, wanted.ignoreCase,
                                          options.settings.bounds, options.lineEnd);
  }
  auto searcher = std::make_unique<PatternSearcher>();
  for (const std::string& pattern : wanted.patterns) {
    if (!searcher->Add(pattern, options.settings, marks, fault)) {
      return nullptr;
    }
  }
  return searcher;
}

// The same, also for a template.
std::unique_ptr<SearchTools> MakeTools(const Options& options, const Colors& colors,
                                       const Wanted& wanted, Progress& progress,
                                       std::string* fault) {
  std::unique_ptr<SearchTools> tools(
      new SearchTools{options, progress, IsTerminal(kStandardOutput), nullptr, nullptr, nullptr});
  const bool colorsLines = options.report == Report::kLines && colors.enabled;
  const bool marks = !options.invert && (PrintsMatches(options.report) || colorsLines);
  tools->searcher = MakeSearcher(options, wanted, marks, fault);
  if (colorsLines && options.invert && options.HasContext()) {
    tools->marker = MakeSearcher(options, wanted, true, fault);
  }
  if (fault->empty() && options.report == Report::kReplaced) {
    tools->replacer =
        LineReplacer::Make(wanted.patterns[0], options.settings, options.replacement, fault);
  }
  return fault->empty() ? std::move(tools) : nullptr;
}

// Whole lines are what patterns are searched for in, and what has to be printed. Fixed text may be
// searched for in pieces of lines, but where what is around it matters.
InputNeeds NeedsOf(const Options& options, const Wanted& wanted) {
  const bool asksForBinary =
      options.binaryFiles != BinaryFiles::kAsText && options.lineEnd != 0 &&
      (PrintsLines(options.report) || options.binaryFiles == BinaryFiles::kLeaveOut);
  if (!wanted.fixedText || options.settings.bounds != Bounds::kNone ||
      options.mostLines != Options::kNoBound) {
    return {asksForBinary ? Input::Lines::kWholeReportBinary : Input::Lines::kWhole, 0};
  }
  size_t longest = 1;
  for (const std::string& text : wanted.patterns) {
    longest = std::max(longest, text.size());
  }
  return {asksForBinary                 ? Input::Lines::kWholeUnlessBinary
          : PrintsLines(options.report) ? Input::Lines::kWhole
                                        : Input::Lines::kPieces,
          static_cast<int32_t>(longest)};
}

size_t ThreadsOf(const Options& options) {
  const auto wanted = static_cast<size_t>(options.jobs);
  return std::max<size_t>(wanted > 0 ? wanted : std::thread::hardware_concurrency(), 1);
}

int Search(const Options& options, const Colors& colors, StandardStreams& streams,
           Output& messages) {
  Progress progress(streams, TerminalHasColor(kStandardError));
  const Wanted wanted = WhatIsWanted(options);
  std::string fault;
  if (MakeTools(options, colors, wanted, progress, &fault) == nullptr) {
    messages.Complain(fault);
    return kTrouble;
  }
  SearchSetting setting = {options, NeedsOf(options, wanted), colors, streams, {}};
  OrderedTasks tasks(streams, ThreadsOf(options), [&] {
    std::string none;
    return MakeTools(options, colors, wanted, progress, &none);
  });
  return FilesSearch(setting, tasks).Run();
}

int ExplainPattern(const Options& options, Output& output) {
  CompiledPattern compiled;
  std::string fault;
  if (!compiled.Compile(options.explained, options.settings, &fault)) {
    output.Complain(fault);
    return kTrouble;
  }
  const std::string reason = LeftToExact(compiled.Header());
  output.Append(ListProgram(compiled.Header()) + "   matched: by the " +
                (reason.empty() ? "fast matcher" : "exact matcher, because of " + reason) +
                "\n   searched: " +
                LineFilter(options.explained, options.settings, compiled).Description() + "\n");
  return 0;
}

int Work(const std::vector<std::string>& arguments) {
  using Kind = CommandLine<Options>::Kind;
  const CommandLine<Options> commandLine = ParseCommandLine(arguments);
  const Options& options = commandLine.settings;
  StandardStreams streams("vekgrep");
  Output output("vekgrep", streams);
  switch (commandLine.kind) {
    case Kind::kText:
      output.Append(commandLine.text);
      return Finish(streams, output, 0);
    case Kind::kFault:
      output.Complain(commandLine.text);
      return kTrouble;
    case Kind::kWork:
      break;
  }
  const Colors colors = ColorsOf(options);
  return Finish(streams, output,
                options.explains ? ExplainPattern(options, output)
                                 : Search(options, colors, streams, output));
}

}  // namespace
}  // namespace examples::vekgrep

namespace examples {

int Run(const std::vector<std::string>& arguments) {
  return RunWork("vekgrep", arguments, vekgrep::Work);
}

}  // namespace examples
