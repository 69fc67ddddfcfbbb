// SPDX-License-Identifier: MIT

// From occurrences to lines. The searcher runs through a chunk from occurrence to occurrence; the
// line around each is selected, or with -v the lines between. Lines are counted only where
// something depends on their number.

#include "file_search.h"

#include <algorithm>
#include <utility>

#include "lines.h"

namespace examples::vekgrep {

FileSearch::FileSearch(const SearchTools& tools, StyledOutput& fileOutput, std::string fileLabel,
                       bool ofPart, int64_t linesAhead)
    : options(tools.options),
      searcher(*tools.searcher),
      replacer(tools.replacer.get()),
      marker(tools.marker.get()),
      output(fileOutput),
      progress(tools.progress),
      label(std::move(fileLabel)),
      lineEnd(options.lineEnd),
      hasPrefix(options.fileNames || options.lineNumbers || options.byteOffsets),
      printsWholeLines((options.invert || !output.HasColor()) && !output.Shows(Style::kSelected) &&
                       (options.report == Report::kLines ||
                        (options.report == Report::kReplaced && options.invert))),
      numbersLines(searcher.MayGiveUp() || (options.lineNumbers && PrintsLines(options.report))),
      countsLines(options.report == Report::kCount || options.mostLines != Options::kNoBound),
      watched(tools.watched),
      isPart(ofPart),
      linesBefore(linesAhead) {
  if (options.HasContext() && PrintsLines(options.report)) {
    context = std::make_unique<Context>(
        options.Before(), options.After(), lineEnd,
        [this](const Context::Line& line) { PrintContextLine(line); }, [this] { BeginGroup(); });
  }
}

void FileSearch::Run(Input& input) {
  Chunk whole;
  if (options.mostLines == 0) {
    return;
  }
  for (bool first = !isPart; !IsCertain() && !output.Failed() && input.Next(&whole);
       first = false) {
    const bool holdsZero = options.binaryFiles != BinaryFiles::kAsText && input.IsBinary();
    if (holdsZero && options.binaryFiles == BinaryFiles::kLeaveOut) {
      selected = 0;
      return;
    }
    binary = binary || (first && holdsZero);
    SearchAround(whole, holdsZero && !binary);
    if (options.lineBuffered || watched) {
      output.Flush();
    }
    progress.Advance(whole.length, label);
  }
}

// Of a file that begins as text the lines before that with the first zero byte are text.
void FileSearch::SearchAround(const Chunk& whole, bool holdsZero) {
  chunk = whole;
  const int32_t zero = holdsZero ? FindByte(chunk.text, {0, chunk.length}, 0) : -1;
  if (zero >= 0) {
    chunk.length = LineStart(chunk.text, 0, zero, lineEnd);
    chunk.endsLine = true;
  }
  if (chunk.length > 0) {
    SearchChunk();
  }
  if (zero >= 0) {
    binary = true;
    const int32_t done = chunk.length;
    chunk = {whole.text + done, whole.length - done, whole.offset + done, whole.endsLine};
    if (!IsCertain()) {
      SearchChunk();
    }
  }
}

bool FileSearch::IsCertain() const {
  if (IsFull()) {
    return context == nullptr || !context->Waits() || binary;
  }
  if (selected == 0) {
    return searcher.MatchesEveryLine() && options.invert;
  }
  return EndsAtFirst(options.report) || (PrintsLines(options.report) && binary);
}

void FileSearch::SearchChunk() {
  int32_t at = 0;
  if (insideDoneLine) {
    at = LineEnd(chunk.text, 0, chunk.length, lineEnd);
    insideDoneLine = !chunk.endsLine;
  }
  if (!IsFull()) {
    searcher.Begin(chunk.text, chunk.length);
    if (!searcher.MatchesEveryLine()) {
      SelectByMatches(at);
    } else if (!options.invert) {
      Select({at, chunk.length});
      insideDoneLine = !chunk.endsLine;
    }
  }
  if (context != nullptr && !binary) {
    context->EndChunk(chunk);
  }
  if (numbersLines) {
    linesBefore += CountByte(chunk.text, {counted, chunk.length}, lineEnd);
    counted = 0;
  }
}

void FileSearch::SelectByMatches(int32_t at) {
  const bool onlyCounts =
      options.report == Report::kCount && !options.invert && options.mostLines == Options::kNoBound;
  while (at < chunk.length && !IsCertain() && !IsFull()) {
    Range match;
    const Outcome outcome = searcher.Next(at, &match);
    if (outcome == Outcome::kNothing) {
      break;
    }
    if (outcome == Outcome::kGivenUp) {
      TellOfLimit(match.begin);
      continue;
    }
    const int32_t end = LineEnd(chunk.text, match.end, chunk.length, lineEnd);
    if (onlyCounts) {
      ++selected;
    } else {
      const int32_t begin = LineStart(chunk.text, at, match.begin, lineEnd);
      Select(options.invert ? Range{at, begin} : Range{begin, end});
    }
    insideDoneLine = !chunk.endsLine;
    at = end;
  }
  // Of a line that goes on in the next chunk it isn't known yet that it has no match.
  if (options.invert && chunk.endsLine && !IsFull()) {
    Select({at, chunk.length});
  }
}

void FileSearch::Select(Range lines) {
  if (lines.begin == lines.end) {
    return;
  }
  if (countsLines) {
    lines = WithinCount(lines);
  } else {
    selected = 1;
  }
  if (PrintsLines(options.report) && !binary) {
    PrintLines(lines);
  }
}

// As many lines as may still be selected, and counts them.
Range FileSearch::WithinCount(Range lines) {
  const bool unfinished = chunk.text[lines.end - 1] != lineEnd;
  const int64_t count = CountByte(chunk.text, lines, lineEnd) + (unfinished ? 1 : 0);
  const int64_t most = options.mostLines - selected;
  selected += std::min(count, most);
  if (count >= most) {
    int32_t end = lines.begin;
    for (int64_t line = 0; line < most; ++line) {
      end = LineEnd(chunk.text, end, lines.end, lineEnd);
    }
    lines.end = end;
    stoppedAt = chunk.offset + end;
  }
  return lines;
}

void FileSearch::PrintLines(Range lines) {
  if (context != nullptr) {
    context->Approach(chunk, lines.begin);
    context->Pass(lines.end);
  }
  if (options.invert && PrintsMatches(options.report)) {
    return;
  }
  if (printsWholeLines && !hasPrefix && !options.lineBuffered) {
    output.Append(chunk.text, lines);
    if (chunk.text[lines.end - 1] != lineEnd) {
      EndLine();
    }
    return;
  }
  for (int32_t begin = lines.begin; begin < lines.end;) {
    const int32_t end = LineEnd(chunk.text, begin, lines.end, lineEnd);
    const bool unfinished = chunk.text[end - 1] != lineEnd;
    PrintLine({begin, unfinished ? end : end - 1});
    begin = end;
  }
}

// From here on a line is without the byte that ends it.
void FileSearch::PrintLine(Range line) {
  if (PrintsMatches(options.report)) {
    PrintMatches(line);
    return;
  }
  PrintSelectedPrefix(line.begin, line.begin);
  if (printsWholeLines) {
    output.Append(chunk.text, line);
  } else if (options.report == Report::kReplaced && !options.invert) {
    PrintReplaced(line);
  } else {
    PrintMarked(line);
  }
  EndLine();
}

void FileSearch::EndLine() {
  const auto end = static_cast<char>(lineEnd);
  output.Append(&end, 1);
  if (options.lineBuffered) {
    output.Flush();
  }
}

void FileSearch::PrintContextLine(const Context::Line& line) {
  if (PrintsMatches(options.report)) {
    return;  // which leaves but the separators of groups
  }
  int64_t number = 0;
  if (options.lineNumbers) {
    number = line.linesAhead > 0 ? LineNumber(0) - line.linesAhead : LineNumber(line.position);
  }
  PrintPrefix(number, chunk.offset + line.position, "-");
  Range range = line.range;
  range.end -= line.text[range.end - 1] == lineEnd ? 1 : 0;
  PrintContextText(line.text, range);
  EndLine();
}

// Lines that are apart, in this file or from those of another.
void FileSearch::BeginGroup() {
  if (!options.separates) {
    return;
  }
  const std::string line = output.Styled(Style::kSeparator, options.separator) + "\n";
  if (std::exchange(shownGroup, true)) {
    output.Append(line);
  } else {
    output.AppendBetween(line);
  }
}

// What is between the matches is in the style of the line; each match ends it.
void FileSearch::PrintMarked(Range line) {
  int32_t at = line.begin;
  Mark mark;
  if (!options.invert) {
    searcher.BeginLine(line);
    while (NextMark(line, &mark)) {
      if (mark.range.begin < mark.range.end) {
        output.Append(output.Start(Style::kSelected));
        output.Append(chunk.text, {at, mark.range.begin});
        output.AppendStyled(Style::kMatch, chunk.text, mark.range);
        at = mark.range.end;
      }
    }
  }
  output.AppendStyled(Style::kSelected, chunk.text, {at, line.end});
}

// Where lines without a match are selected, those around them have one.
void FileSearch::PrintContextText(const uint8_t* text, Range line) {
  int32_t at = 0;
  const uint8_t* start = text + line.begin;
  const int32_t length = line.end - line.begin;
  Range match;
  Mark mark;
  if (marker != nullptr && length > 0) {
    marker->Begin(start, length);
    if (marker->Next(0, &match) == Outcome::kMatch) {
      marker->BeginLine({0, length});
      while (marker->NextMark(&mark) == Outcome::kMatch) {
        if (mark.range.begin < mark.range.end) {
          output.Append(output.Start(Style::kContext));
          output.Append(start, {at, mark.range.begin});
          output.AppendStyled(Style::kContextMatch, start, mark.range);
          at = mark.range.end;
        }
      }
    }
  }
  output.AppendStyled(Style::kContext, start, {at, length});
}

void FileSearch::PrintMatches(Range line) {
  const bool withGroups = options.report == Report::kGroups;
  Mark mark;
  searcher.BeginLine(line);
  while (NextMark(line, &mark)) {
    if (withGroups || mark.range.begin < mark.range.end) {
      PrintSelectedPrefix(line.begin, mark.range.begin);
      output.AppendStyled(Style::kMatch, chunk.text, mark.range);
      EndLine();
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
  if (!replacer->Replace(chunk.text, line)) {
    TellOfLimit(line.begin);
  }
  output.Append(replacer->Result(), {0, replacer->ResultLength()});
}

void FileSearch::PrintName(const char* separator) {
  output.AppendStyled(Style::kFileName, label);
  if (options.nullAfterName) {
    output.Append("", 1);
  } else {
    output.AppendStyled(Style::kSeparator, separator);
  }
}

void FileSearch::PrintNumber(Style style, int64_t number, const char* separator) {
  if (options.initialTab) {
    std::string padded = std::to_string(number);
    padded.insert(0, numberWidth - std::min(numberWidth, padded.size()), ' ');
    output.AppendStyled(style, padded);
  } else {
    output.AppendNumberStyled(style, number);
  }
  output.AppendStyled(Style::kSeparator, separator);
}

// With a tab the numbers of a file are as wide as its size; what its size isn't known of, as any.
void FileSearch::SetSize(int64_t size) {
  constexpr size_t kAnyWidth = 19;
  numberWidth = size < 0 ? kAnyWidth : std::to_string(size + (options.lineNumbers ? 1 : 0)).size();
}

void FileSearch::PrintPrefix(int64_t number, int64_t offset, const char* separator) {
  if (options.fileNames) {
    PrintName(separator);
  }
  if (options.lineNumbers) {
    PrintNumber(Style::kLineNumber, number, separator);
  }
  if (options.byteOffsets) {
    PrintNumber(Style::kByteOffset, offset, separator);
  }
  if (options.initialTab && hasPrefix) {
    output.Append("\t");
  }
}

// `position`: of what is shown in the line.
void FileSearch::PrintSelectedPrefix(int32_t lineBegin, int32_t position) {
  if (hasPrefix) {
    PrintPrefix(options.lineNumbers ? LineNumber(lineBegin) : 0, chunk.offset + position, ":");
  }
}

// False after the last one.
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

// Of the line that starts at a position of the chunk. What comes next is mostly after what was
// asked for last, and seldom before it.
int64_t FileSearch::LineNumber(int32_t lineBegin) {
  linesBefore += CountByte(chunk.text, {counted, std::max(counted, lineBegin)}, lineEnd);
  linesBefore -= CountByte(chunk.text, {lineBegin, std::max(counted, lineBegin)}, lineEnd);
  counted = lineBegin;
  return linesBefore + 1;
}

// The count of a file that was read in part would mislead.
void FileSearch::PrintSummary(bool readToItsEnd) {
  if (options.report == Report::kCount) {
    if (readToItsEnd) {
      if (options.fileNames) {
        PrintName(":");
      }
      output.AppendNumber(selected);
      output.Append("\n");
    }
  } else if (options.report == Report::kFileName || options.report == Report::kFileNameWithout) {
    if (readToItsEnd && (selected > 0) == (options.report == Report::kFileName)) {
      output.AppendStyled(Style::kFileName, label);
      output.Append(options.nullAfterName ? "" : "\n", 1);
    }
  } else if (selected > 0 && binary && PrintsLines(options.report)) {
    output.Flush();
    if (!output.Failed()) {
      output.Complain(label, "binary file matches");
    }
  }
}

}  // namespace examples::vekgrep
