// SPDX-License-Identifier: MIT
#include "common/folder.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#ifdef _WIN32
#include <windows.h>
#endif

namespace examples {
namespace {

namespace fs = std::filesystem;

std::string Joined(const std::string& folder, const fs::path& name) {
  const bool separated = folder.back() == '/' || folder.back() == fs::path::preferred_separator;
  return folder + (separated ? "" : "/") + name.u8string();
}

#ifdef _WIN32

// Whether a folder is one of those that it lies in.
bool HoldsItself(const fs::path& folder) {
  for (fs::path outer = folder.parent_path(); !outer.empty(); outer = outer.parent_path()) {
    std::error_code unknown;
    if (fs::equivalent(folder, outer, unknown)) {
      return true;
    }
    if (outer == outer.root_path()) {
      break;
    }
  }
  return false;
}

// The standard library doesn't know links here, and the system not all of them.
bool IsLink(const fs::directory_entry& folder) {
  return (GetFileAttributesW(folder.path().c_str()) & FILE_ATTRIBUTE_REPARSE_POINT) != 0 ||
         HoldsItself(folder.path());
}

#else

bool IsLink(const fs::directory_entry& folder) {
  std::error_code unknown;
  return folder.is_symlink(unknown);
}

#endif

}  // namespace

bool IsFolder(const std::string& name) {
  std::error_code error;
  return fs::is_directory(fs::u8path(name), error);
}

bool ListFolder(const std::string& name, std::vector<FolderEntry>* entries, std::string* fault) {
  entries->clear();
  std::error_code error;
  for (fs::directory_iterator entry(fs::u8path(name), error), end; !error && entry != end;
       entry.increment(error)) {
    std::error_code unknown;  // then it is neither: links to nothing, for one
    const bool isFolder = entry->is_directory(unknown);
    if (isFolder ? !IsLink(*entry) : entry->is_regular_file(unknown)) {
      entries->push_back({Joined(name, entry->path().filename()), isFolder});
    }
  }
  std::sort(entries->begin(), entries->end(),
            [](const FolderEntry& a, const FolderEntry& b) { return a.name < b.name; });
  *fault = error ? error.message() : "";
  return !error;
}

}  // namespace examples
