// SPDX-License-Identifier: MIT

// Folders and the files in them. Names are UTF-8 on every system, parts of them joined by "/".

#ifndef EXAMPLES_COMMON_FOLDER_H
#define EXAMPLES_COMMON_FOLDER_H

#include <string>
#include <vector>

namespace examples {

bool IsFolder(const std::string& name);

struct FolderEntry {
  std::string name;  // with the folder's in front
  bool isFolder;
};

// The files and folders in a folder, in the order of their names' bytes. Links to folders are left
// out, so that a walk ends, and so is what is neither file nor folder and might keep a reader
// waiting. False with the reason in `fault` if the folder can't be read to its end; the entries are
// those that could.
bool ListFolder(const std::string& name, std::vector<FolderEntry>* entries, std::string* fault);

}  // namespace examples

#endif
