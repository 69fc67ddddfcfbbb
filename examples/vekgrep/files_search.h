// SPDX-License-Identifier: MIT

// Searches all files that were named, and those in folders that were.

#ifndef VEKGREP_FILES_SEARCH_H
#define VEKGREP_FILES_SEARCH_H

#include <atomic>
#include <memory>
#include <string>

#include "common/folder.h"
#include "common/input.h"
#include "file_search.h"
#include "ordered_tasks.h"

namespace examples::vekgrep {

// How the searcher wants its input.
struct InputNeeds {
  Input::Lines lines;
  int32_t overlap;
};

// What came of the files so far.
struct Findings {
  std::atomic<bool> found{false};
  std::atomic<bool> trouble{false};
};

// What all tasks know.
struct SearchSetting {
  const Options& options;
  const InputNeeds needs;
  const Colors& colors;
  StandardStreams& streams;
  Findings findings;

  // Whether the exit status is certain and nothing is to be printed.
  bool IsOver() const {
    return streams.Failed() || (options.report == Report::kNothing && findings.found);
  }
};

class FilesSearch {
 public:
  FilesSearch(SearchSetting& setting, OrderedTasks& all) : common(setting), tasks(all) {}

  // The exit status: 0 if a line was selected, 1 if none was, 2 if something went wrong.
  int Run();

 private:
  void SearchNamed(const std::string& name);
  void SearchFolder(const std::string& name);
  void SearchFile(const std::string& name, bool wasNamed);
  bool SearchParts(const std::string& name, const std::string& label);
  void Complain(const std::string& name, const std::string& fault);
  std::string Label(const std::string& name) const;

  SearchSetting& common;
  OrderedTasks& tasks;
  FolderWay way;
};

}  // namespace examples::vekgrep

#endif
