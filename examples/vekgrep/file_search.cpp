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

FileSearch::FileSearch(const Options& searchOptions, Searcher& lineSearcher,
                       StyledOutput& lineOutput, std::string fileLabel)
    : options(searchOptions),
      searcher(lineSearcher),
      output(lineOutput),
      label(std::move(fileLabel)),
      marksMatches(options.report == Report::kMatches || (output.HasColor() && !options.invert)) {}

bool FileSearch::Run(Input& input) {
  while (!IsCertain() && output.Error() == 0 && input.Next(&chunk)) {
    binary = input.IsBinary();
    SearchChunk();
    output.FlushToTerminal();
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
  if (options.lineNumbers && PrintsLines(options.report) && !binary) {
    linesBefore += CountNewlines(chunk.text, {counted, chunk.length});
    counted = 0;
  }
}

void FileSearch::SelectByMatches(int32_t at) {
  Range match;
  while (at < chunk.length && !IsCertain() && searcher.Next(at, &match)) {
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
  if (options.report == Report::kMatches && options.invert) {
    return;
  }
  if (!marksMatches && !options.fileNames && !options.lineNumbers) {
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

// `line` is without its newline.
void FileSearch::PrintLine(Range line) {
  const bool onlyMatches = options.report == Report::kMatches;
  if (!onlyMatches) {
    PrintPrefix(line.begin);
  }
  int32_t at = line.begin;
  Range match;
  while (marksMatches && searcher.Next(at, &match) && match.begin < line.end) {
    if (onlyMatches) {
      PrintPrefix(line.begin);
      output.AppendStyled(Style::kMatch, chunk.text, match);
      output.Append("\n");
    } else {
      output.Append(chunk.text, {at, match.begin});
      output.AppendStyled(Style::kMatch, chunk.text, match);
    }
    at = match.end;
  }
  if (!onlyMatches) {
    output.Append(chunk.text, {at, line.end});
    output.Append("\n");
  }
}

void FileSearch::PrintPrefix(int32_t lineBegin) {
  if (options.fileNames) {
    output.AppendStyled(Style::kFileName, label);
    output.AppendStyled(Style::kSeparator, ":");
  }
  if (options.lineNumbers) {
    linesBefore += CountNewlines(chunk.text, {counted, lineBegin});
    counted = lineBegin;
    output.AppendStyled(Style::kLineNumber, std::to_string(linesBefore + 1));
    output.AppendStyled(Style::kSeparator, ":");
  }
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
