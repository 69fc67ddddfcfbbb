// SPDX-License-Identifier: MIT

// Searches all files that were named, and those in folders that were.

#ifndef VEKGREP_FILES_SEARCH_H
#define VEKGREP_FILES_SEARCH_H

#include <string>

#include "common/input.h"
#include "file_search.h"

namespace examples::vekgrep {

class FilesSearch {
 public:
  // `lines` and `overlap`: how the searcher wants its input.
  FilesSearch(const SearchTools& tools, Input::Lines lines, int32_t overlap);

  // The exit status: 0 if a line was selected, 1 if none was, 2 if something went wrong.
  int Run();

 private:
  void SearchFile(const std::string& name);
  void SearchFolder(const std::string& name);
  void Complain(const std::string& name, const std::string& fault);

  const SearchTools tools;
  Input input;
  File file;
  bool found = false;
  bool trouble = false;
};

}  // namespace examples::vekgrep

#endif
