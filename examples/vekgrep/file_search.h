// SPDX-License-Identifier: MIT

// Searches one file: selects its lines and reports them as the options say.

#ifndef VEKGREP_FILE_SEARCH_H
#define VEKGREP_FILE_SEARCH_H

#include <cstdint>
#include <string>

#include "common/input.h"
#include "options.h"
#include "progress.h"
#include "replacer.h"
#include "searcher.h"
#include "styled_output.h"

namespace examples::vekgrep {

// What one file after the other is searched with.
struct SearchTools {
  const Options& options;
  Searcher& searcher;
  Replacer& replacer;
  StyledOutput& output;
  Progress& progress;
};

class FileSearch {
 public:
  // `label` is what the file is called in the output.
  FileSearch(const SearchTools& tools, std::string label);

  // Reads the input to its end, or to where the result is certain. Returns whether a line was
  // selected.
  bool Run(Input& input);

  // Whether the match limit ran out in a line.
  bool GaveUp() const { return gaveUp; }

 private:
  bool IsCertain() const;
  void SearchChunk();
  void SelectByMatches(int32_t at);
  void Select(Range lines);
  void PrintLines(Range lines);
  void PrintLine(Range line);
  void PrintMarked(Range line);
  void PrintMatches(Range line);
  void PrintGroups(Range line, const Mark& mark);
  void PrintReplaced(Range line);
  void PrintPrefix(int32_t lineBegin);
  bool NextMark(Range line, Mark* mark);
  void TellOfLimit(int32_t lineBegin);
  int64_t LineNumber(int32_t lineBegin);
  void PrintSummary(bool readToItsEnd);

  const Options& options;
  Searcher& searcher;
  Replacer& replacer;
  StyledOutput& output;
  Progress& progress;
  const std::string label;
  const bool printsWholeLines;  // they are printed as they are, without a look at them
  const bool numbersLines;      // their numbers may be asked for

  Chunk chunk = {};
  bool binary = false;
  bool gaveUp = false;
  bool insideDoneLine = false;  // the next chunk goes on with a line of which all is known
  int64_t selected = 0;         // lines where they are to be counted, else 0 or 1
  int64_t linesBefore = 0;      // newlines in front of `counted`, the start of a line of the chunk
  int32_t counted = 0;
};

}  // namespace examples::vekgrep

#endif
