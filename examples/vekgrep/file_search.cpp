// SPDX-License-Identifier: MIT

// From occurrences to lines. The searcher runs through a chunk from occurrence to occurrence; the
// line around each is selected, or with -v the lines between. Lines are counted only where
// something depends on their number.

#include "file_search.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace examples::vekgrep {
namespace {

// The library finds bytes but doesn't count them, and a call for every line would take longer than
// all the searching. The lanes make this a loop that compilers turn into vector code; a lane holds
// at most 255 before it must be added up.
int64_t CountNewlines(const uint8_t* text, Range range) {
  constexpr int32_t kLanes = 64;
  constexpr int32_t kMostRows = 255;
  int64_t count = 0;
  int32_t at = range.begin;
  while (range.end - at >= kLanes) {
    const int32_t rows = std::min((range.end - at) / kLanes, kMostRows);
    uint8_t lanes[kLanes] = {};
    for (int32_t row = 0; row < rows; ++row, at += kLanes) {
      for (int32_t i = 0; i < kLanes; ++i) {
        lanes[i] = static_cast<uint8_t>(lanes[i] + (text[at + i] == '\n' ? 1 : 0));
      }
    }
    count = std::accumulate(lanes, lanes + kLanes, count);
  }
  return count + std::count(text + at, text + range.end, '\n');
}

}  // namespace

FileSearch::FileSearch(const SearchTools& tools, std::string fileLabel)
    : options(tools.options),
      searcher(tools.searcher),
      replacer(tools.replacer),
      output(tools.output),
      progress(tools.progress),
      label(std::move(fileLabel)),
      printsWholeLines((options.invert || !output.HasColor()) &&
                       (options.report == Report::kLines ||
                        (options.report == Report::kReplaced && options.invert))),
      numbersLines(searcher.HasLimit() || (options.lineNumbers && PrintsLines(options.report))) {}

bool FileSearch::Run(Input& input) {
  while (!IsCertain() && output.Error() == 0 && input.Next(&chunk)) {
    binary = input.IsBinary();
    SearchChunk();
    output.FlushToTerminal();
    progress.Advance(chunk.length, label);
  }
  PrintSummary(input.Fault().empty());
  return selected > 0;
}

bool FileSearch::IsCertain() const {
  if (selected == 0) {
    return searcher.MatchesEveryLine() && options.invert;
  }
  return options.report == Report::kFileName || (PrintsLines(options.report) && binary);
}

void FileSearch::SearchChunk() {
  int32_t at = 0;
  if (insideDoneLine) {
    at = LineEnd(chunk.text, 0, chunk.length);
    insideDoneLine = !chunk.endsLine;
  }
  searcher.Begin(chunk.text, chunk.length);
  if (searcher.MatchesEveryLine()) {
    Select({at, chunk.length});
    insideDoneLine = !chunk.endsLine;
  } else {
    SelectByMatches(at);
  }
  if (numbersLines) {
    linesBefore += CountNewlines(chunk.text, {counted, chunk.length});
    counted = 0;
  }
}

void FileSearch::SelectByMatches(int32_t at) {
  while (at < chunk.length && !IsCertain()) {
    Range match;
    const Outcome outcome = searcher.Next(at, &match);
    if (outcome == Outcome::kNothing) {
      break;
    }
    if (outcome == Outcome::kGivenUp) {
      TellOfLimit(match.begin);
      continue;
    }
    const int32_t end = LineEnd(chunk.text, match.end, chunk.length);
    if (options.report == Report::kCount && !options.invert) {
      ++selected;
    } else {
      const int32_t newline = FindLastByte(chunk.text, {at, match.begin}, '\n');
      const int32_t begin = newline < 0 ? at : newline + 1;
      Select(options.invert ? Range{at, begin} : Range{begin, end});
    }
    insideDoneLine = !chunk.endsLine;
    at = end;
  }
  // Of a line that goes on in the next chunk it isn't known yet that it has no match.
  if (options.invert && chunk.endsLine) {
    Select({at, chunk.length});
  }
}

void FileSearch::Select(Range lines) {
  if (lines.begin == lines.end) {
    return;
  }
  if (options.report == Report::kCount) {
    const bool unfinished = chunk.text[lines.end - 1] != '\n';
    selected += CountNewlines(chunk.text, lines) + (unfinished ? 1 : 0);
    return;
  }
  selected = 1;
  if (PrintsLines(options.report) && !binary) {
    PrintLines(lines);
  }
}

void FileSearch::PrintLines(Range lines) {
  if (options.invert && PrintsMatches(options.report)) {
    return;
  }
  if (printsWholeLines && !options.fileNames && !options.lineNumbers) {
    output.Append(chunk.text, lines);
    if (chunk.text[lines.end - 1] != '\n') {
      output.Append("\n");
    }
    return;
  }
  for (int32_t begin = lines.begin; begin < lines.end;) {
    const int32_t end = LineEnd(chunk.text, begin, lines.end);
    const bool unfinished = chunk.text[end - 1] != '\n';
    PrintLine({begin, unfinished ? end : end - 1});
    begin = end;
  }
}

// From here on a line is without its newline.
void FileSearch::PrintLine(Range line) {
  if (PrintsMatches(options.report)) {
    PrintMatches(line);
    return;
  }
  PrintPrefix(line.begin);
  if (printsWholeLines) {
    output.Append(chunk.text, line);
  } else if (options.report == Report::kReplaced) {
    PrintReplaced(line);
  } else {
    PrintMarked(line);
  }
  output.Append("\n");
}

void FileSearch::PrintMarked(Range line) {
  int32_t at = line.begin;
  Mark mark;
  searcher.BeginLine(line);
  while (NextMark(line, &mark)) {
    if (mark.range.begin < mark.range.end) {
      output.Append(chunk.text, {at, mark.range.begin});
      output.AppendStyled(Style::kMatch, chunk.text, mark.range);
      at = mark.range.end;
    }
  }
  output.Append(chunk.text, {at, line.end});
}

void FileSearch::PrintMatches(Range line) {
  const bool withGroups = options.report == Report::kGroups;
  Mark mark;
  searcher.BeginLine(line);
  while (NextMark(line, &mark)) {
    if (withGroups || mark.range.begin < mark.range.end) {
      PrintPrefix(line.begin);
      output.AppendStyled(Style::kMatch, chunk.text, mark.range);
      output.Append("\n");
    }
    if (withGroups) {
      PrintGroups(line, mark);
    }
  }
}

void FileSearch::PrintGroups(Range line, const Mark& mark) {
  for (int32_t i = 0; i < mark.groupCount; ++i) {
    const RegExpFindResult& group = mark.groups[i];
    const std::string name = "  $" + std::to_string(i + 1);
    if (group.pointer == nullptr) {
      output.Append(name + " took no part\n");
      continue;
    }
    const auto begin = static_cast<int32_t>(group.pointer - chunk.text);
    output.Append(name + ": ");
    output.Append(chunk.text, {begin, std::min(begin + group.length, line.end)});
    output.Append("\n");
  }
}

void FileSearch::PrintReplaced(Range line) {
  if (!searcher.Replace(line, &replacer)) {
    TellOfLimit(line.begin);
  }
  output.Append(replacer.Result(), {0, replacer.ResultLength()});
}

void FileSearch::PrintPrefix(int32_t lineBegin) {
  if (options.fileNames) {
    output.AppendStyled(Style::kFileName, label);
    output.AppendStyled(Style::kSeparator, ":");
  }
  if (options.lineNumbers) {
    output.AppendStyled(Style::kLineNumber, std::to_string(LineNumber(lineBegin)));
    output.AppendStyled(Style::kSeparator, ":");
  }
}

// False behind the last one.
bool FileSearch::NextMark(Range line, Mark* mark) {
  const Outcome outcome = searcher.NextMark(mark);
  if (outcome == Outcome::kGivenUp) {
    TellOfLimit(line.begin);
  }
  return outcome == Outcome::kMatch;
}

void FileSearch::TellOfLimit(int32_t lineBegin) {
  gaveUp = true;
  output.Complain(label + ":" + std::to_string(LineNumber(lineBegin)),
                  vekStatusText(StatusRegExpMatchLimit));
}

// Of the line that starts at a place of the chunk. What comes next is mostly behind what was asked
// for last, and seldom in front of it.
int64_t FileSearch::LineNumber(int32_t lineBegin) {
  linesBefore += CountNewlines(chunk.text, {counted, std::max(counted, lineBegin)});
  linesBefore -= CountNewlines(chunk.text, {lineBegin, std::max(counted, lineBegin)});
  counted = lineBegin;
  return linesBefore + 1;
}

// What is told of a file as a whole. The count of a file that was read in part would mislead.
void FileSearch::PrintSummary(bool readToItsEnd) {
  if (options.report == Report::kCount) {
    if (readToItsEnd) {
      if (options.fileNames) {
        output.AppendStyled(Style::kFileName, label);
        output.AppendStyled(Style::kSeparator, ":");
      }
      output.Append(std::to_string(selected) + "\n");
    }
  } else if (selected > 0 && options.report == Report::kFileName) {
    output.AppendStyled(Style::kFileName, label);
    output.Append("\n");
  } else if (selected > 0 && binary) {
    output.Append("Binary file " + label + " matches\n");
  }
}

}  // namespace examples::vekgrep
