// SPDX-License-Identifier: MIT

// Searches one file: selects its lines and reports them as the options say.

#ifndef VEKGREP_FILE_SEARCH_H
#define VEKGREP_FILE_SEARCH_H

#include <cstdint>
#include <memory>
#include <string>

#include "common/input.h"
#include "context.h"
#include "options.h"
#include "progress.h"
#include "replacer.h"
#include "searcher.h"
#include "styled_output.h"

namespace examples::vekgrep {

// What a thread searches one file after the other with.
struct SearchTools {
  const Options& options;
  Progress& progress;
  bool watched = false;  // somebody sees what is printed
  std::unique_ptr<Searcher> searcher;
  std::unique_ptr<LineReplacer> replacer;  // of --replace
  std::unique_ptr<Searcher> marker;        // of matches in lines around selected ones, if coloured
};

class FileSearch {
 public:
  // `label` is what the file is called in the output. Of a part of a file, `linesBefore` is the
  // number of lines before it, and that the file begins as text is known.
  FileSearch(const SearchTools& tools, StyledOutput& output, std::string label, bool isPart = false,
             int64_t linesBefore = 0);

  // Bytes of the file, or -1.
  void SetSize(int64_t size);

  // Reads the input to its end, or to where the result is certain.
  void Run(Input& input);

  // Reports what is to be reported of a file as a whole.
  void PrintSummary(bool readToItsEnd);

  // What came of it.
  int64_t Selected() const { return selected; }  // lines where they are counted, else 0 or 1
  bool IsBinary() const { return binary; }
  bool GaveUp() const { return gaveUp; }  // the match limit ran out in a line

  // Takes over what came of the parts of a file.
  void SetResult(int64_t selectedLines, bool isBinary) {
    selected = selectedLines;
    binary = isBinary;
  }

  // Offset after the last selected line where --max-count ended the search; else -1.
  int64_t StoppedAt() const { return stoppedAt; }

 private:
  bool IsCertain() const;
  bool IsFull() const { return stoppedAt >= 0; }
  void SearchAround(const Chunk& whole, bool holdsZero);
  void SearchChunk();
  void SelectByMatches(int32_t at);
  void Select(Range lines);
  Range WithinCount(Range lines);
  void PrintLines(Range lines);
  void PrintLine(Range line);
  void PrintContextLine(const Context::Line& line);
  void PrintContextText(const uint8_t* text, Range line);
  void PrintMarked(Range line);
  void PrintMatches(Range line);
  void PrintGroups(Range line, const Mark& mark);
  void PrintReplaced(Range line);
  void PrintPrefix(int64_t number, int64_t offset, const char* separator);
  void PrintSelectedPrefix(int32_t lineBegin, int32_t position);
  void PrintName(const char* separator);
  void PrintNumber(Style style, int64_t number, const char* separator);
  void EndLine();
  void BeginGroup();
  bool NextMark(Range line, Mark* mark);
  void TellOfLimit(int32_t lineBegin);
  int64_t LineNumber(int32_t lineBegin);

  const Options& options;
  Searcher& searcher;
  LineReplacer* const replacer;
  Searcher* const marker;
  StyledOutput& output;
  Progress& progress;
  const std::string label;
  const uint8_t lineEnd;
  const bool hasPrefix;
  const bool printsWholeLines;  // they are printed as they are, without a look at them
  const bool numbersLines;      // their numbers may be asked for
  const bool countsLines;       // how many are selected matters
  const bool watched;
  const bool isPart;
  std::unique_ptr<Context> context;

  Chunk chunk = {};
  bool binary = false;
  bool gaveUp = false;
  bool insideDoneLine = false;  // the next chunk goes on with a line of which all is known
  bool shownGroup = false;
  size_t numberWidth = 0;
  int64_t selected = 0;
  int64_t stoppedAt = -1;
  int64_t linesBefore;  // lines before `counted`, the start of a line of the chunk
  int32_t counted = 0;
};

}  // namespace examples::vekgrep

#endif
