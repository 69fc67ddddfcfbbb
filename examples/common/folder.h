// SPDX-License-Identifier: MIT

// Folders and the files in them. Names are UTF-8 on every system, parts of them joined by "/".

#ifndef EXAMPLES_COMMON_FOLDER_H
#define EXAMPLES_COMMON_FOLDER_H

#include <string>
#include <vector>

namespace examples {

bool IsFolder(const std::string& name);

// Whether it is neither file nor folder and might keep a reader waiting, as pipes do.
bool IsDevice(const std::string& name);

// What is after the last "/" of a name.
std::string BaseName(const std::string& name);

enum class Links { kLeaveOut, kFollow };

struct FolderEntry {
  std::string name;  // with the folder's before it
  bool isFolder;
};

// The files and folders in a folder, in the order of their names' bytes, without what might keep a
// reader waiting. False with the reason in `fault` if the folder can't be read to its end; the
// entries are those that could.
bool ListFolder(const std::string& name, Links links, std::vector<FolderEntry>* entries,
                std::string* fault);

// Folders that lie in each other: the way of a walk, which ends where a link leads back to it.
class FolderWay {
 public:
  // False if the folder is on the way already.
  bool Enter(const std::string& folder);
  void Leave() { way.pop_back(); }

 private:
  std::vector<std::string> way;  // what identifies each
};

}  // namespace examples

#endif
