// Searches one file: selects its lines and reports them as the options say.

#ifndef VEKGREP_FILE_SEARCH_H
#define VEKGREP_FILE_SEARCH_H

#include <cstdint>
#include <string>

#include "common/input.h"
#include "options.h"
#include "searcher.h"
#include "styled_output.h"

namespace examples::vekgrep {

class FileSearch {
 public:
  // `label` is what the file is called in the output.
  FileSearch(const Options& options, Searcher& searcher, StyledOutput& output, std::string label);

  // Reads the input to its end, or to where the result is certain. Returns whether a line was
  // selected.
  bool Run(Input& input);

 private:
  bool IsCertain() const;
  void SearchChunk();
  void SelectByMatches(int32_t at);
  void Select(Range lines);
  void PrintLines(Range lines);
  void PrintLine(Range line);
  void PrintPrefix(int32_t lineBegin);
  void PrintSummary(bool readToItsEnd);

  const Options& options;
  Searcher& searcher;
  StyledOutput& output;
  const std::string label;
  const bool marksMatches;  // occurrences within a selected line matter, not the line alone

  Chunk chunk = {};
  bool binary = false;
  bool insideDoneLine = false;  // the next chunk goes on with a line of which all is known
  int64_t selected = 0;         // lines where they are to be counted, else 0 or 1
  int64_t linesBefore = 0;      // newlines in front of `counted`, a place in the chunk
  int32_t counted = 0;
};

}  // namespace examples::vekgrep

#endif
