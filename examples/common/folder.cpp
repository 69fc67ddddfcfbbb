// SPDX-License-Identifier: MIT
#include "common/folder.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#ifdef _WIN32
#include <windows.h>
#else
#include <sys/stat.h>
#endif

namespace examples {
namespace {

namespace fs = std::filesystem;

std::string Joined(const std::string& folder, const fs::path& name) {
  const bool separated = folder.back() == '/' || folder.back() == fs::path::preferred_separator;
  return folder + (separated ? "" : "/") + name.u8string();
}

#ifdef _WIN32

// The standard library doesn't know links here, and the system not all of them; those are met as
// folders that lie in themselves.
bool IsLink(const fs::directory_entry& entry) {
  return (GetFileAttributesW(entry.path().c_str()) & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

std::string Identity(const std::string& folder) {
  const HANDLE handle = CreateFileW(fs::u8path(folder).c_str(), 0,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  BY_HANDLE_FILE_INFORMATION info = {};
  const bool known = handle != INVALID_HANDLE_VALUE && GetFileInformationByHandle(handle, &info);
  CloseHandle(handle);
  return known ? std::to_string(info.dwVolumeSerialNumber) + ":" +
                     std::to_string(info.nFileIndexHigh) + ":" + std::to_string(info.nFileIndexLow)
               : "";
}

#else

bool IsLink(const fs::directory_entry& entry) {
  std::error_code unknown;
  return entry.is_symlink(unknown);
}

std::string Identity(const std::string& folder) {
  struct stat status;
  return stat(folder.c_str(), &status) != 0
             ? ""
             : std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino);
}

#endif

}  // namespace

bool IsFolder(const std::string& name) {
  std::error_code error;
  return fs::is_directory(fs::u8path(name), error);
}

bool IsDevice(const std::string& name) {
  std::error_code error;
  return fs::is_other(fs::status(fs::u8path(name), error));
}

std::string BaseName(const std::string& name) {
  return name.substr(name.find_last_of('/') + 1);  // npos: 0
}

bool ListFolder(const std::string& name, Links links, std::vector<FolderEntry>* entries,
                std::string* fault) {
  entries->clear();
  std::error_code error;
  for (fs::directory_iterator entry(fs::u8path(name), error), end; !error && entry != end;
       entry.increment(error)) {
    std::error_code unknown;  // then it is neither: links to nothing, for one
    const bool isFolder = entry->is_directory(unknown);
    if ((isFolder || entry->is_regular_file(unknown)) &&
        (links == Links::kFollow || !IsLink(*entry))) {
      entries->push_back({Joined(name, entry->path().filename()), isFolder});
    }
  }
  std::sort(entries->begin(), entries->end(),
            [](const FolderEntry& a, const FolderEntry& b) { return a.name < b.name; });
  *fault = error ? error.message() : "";
  return !error;
}

bool FolderWay::Enter(const std::string& folder) {
  const std::string identity = Identity(folder);
  if (!identity.empty() && std::find(way.begin(), way.end(), identity) != way.end()) {
    return false;
  }
  way.push_back(identity);
  return true;
}

}  // namespace examples
