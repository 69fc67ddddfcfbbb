// SPDX-License-Identifier: MIT
#include "files_search.h"

#include <vector>

#include "common/folder.h"
#include "common/platform.h"
#include "common/program.h"

namespace examples::vekgrep {

FilesSearch::FilesSearch(const SearchTools& searchTools, Input::Lines lines, int32_t overlap)
    : tools(searchTools), input(lines, overlap) {}

int FilesSearch::Run() {
  for (const std::string& name : tools.options.files) {
    if (tools.options.recursive && IsFolder(name)) {
      SearchFolder(name);
    } else {
      SearchFile(name);
    }
  }
  return trouble ? kTrouble : found ? 0 : 1;
}

void FilesSearch::SearchFile(const std::string& name) {
  if (tools.output.Error() != 0) {
    return;
  }
  const std::string label = name == "-" ? "(standard input)" : name;
  std::string fault;
  if (file.Open(name, PrintsLines(tools.options.report) ? kStandardOutput : -1, &fault)) {
    input.Begin(file);
    FileSearch search(tools, label);
    found |= search.Run(input);
    trouble |= search.GaveUp();
    fault = input.Fault();
  }
  if (!fault.empty() && tools.output.Error() == 0) {
    Complain(label, fault);
  }
}

void FilesSearch::SearchFolder(const std::string& name) {
  std::vector<FolderEntry> entries;
  std::string fault;
  if (!ListFolder(name, &entries, &fault)) {
    Complain(name, fault);
  }
  for (const FolderEntry& entry : entries) {
    if (entry.isFolder) {
      SearchFolder(entry.name);
    } else {
      SearchFile(entry.name);
    }
  }
}

void FilesSearch::Complain(const std::string& name, const std::string& fault) {
  tools.output.Complain(name, fault);
  trouble = true;
}

}  // namespace examples::vekgrep
