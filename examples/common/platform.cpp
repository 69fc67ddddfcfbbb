// SPDX-License-Identifier: MIT

// The two systems, one after the other: POSIX, then Windows on its C run-time library.

#include "common/platform.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#ifdef _WIN32
#include <io.h>
#include <windows.h>
#else
#include <unistd.h>
#endif

namespace examples {
namespace {

// One call moves no more than this: the systems' own limits are 2 GiB and differ.
constexpr size_t kMostAtOnce = size_t{1} << 30;

#ifdef _WIN32

std::wstring Widen(const std::string& text) {
  const int size = static_cast<int>(text.size());
  std::wstring wide(
      static_cast<size_t>(MultiByteToWideChar(CP_UTF8, 0, text.data(), size, nullptr, 0)), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, text.data(), size, wide.data(), static_cast<int>(wide.size()));
  return wide;
}

std::string Narrow(const wchar_t* wide) {
  const int size = WideCharToMultiByte(CP_UTF8, 0, wide, -1, nullptr, 0, nullptr, nullptr);
  std::string text(static_cast<size_t>(size), '\0');
  WideCharToMultiByte(CP_UTF8, 0, wide, -1, text.data(), size, nullptr, nullptr);
  text.resize(std::strlen(text.c_str()));
  return text;
}

int64_t ReadOnce(int file, void* buffer, size_t size) {
  return _read(file, buffer, static_cast<unsigned>(size));
}

int64_t WriteOnce(int file, const void* data, size_t size) {
  const int count = _write(file, data, static_cast<unsigned>(size));
  const DWORD reason = count < 0 ? GetLastError() : ERROR_SUCCESS;
  if (reason == ERROR_NO_DATA || reason == ERROR_PIPE_NOT_CONNECTED) {
    errno = EPIPE;  // the run-time library says "invalid argument"
  }
  return count;
}

int64_t ReadOnceAt(int file, int64_t offset, void* buffer, size_t size) {
  OVERLAPPED position = {};
  position.Offset = static_cast<DWORD>(offset);
  position.OffsetHigh = static_cast<DWORD>(offset >> 32);
  DWORD count = 0;
  const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(file));
  if (ReadFile(handle, buffer, static_cast<DWORD>(size), &count, &position) == 0 &&
      GetLastError() != ERROR_HANDLE_EOF) {
    errno = EIO;
    return -1;
  }
  return count;
}

#else

int64_t ReadOnce(int file, void* buffer, size_t size) { return read(file, buffer, size); }

int64_t ReadOnceAt(int file, int64_t offset, void* buffer, size_t size) {
  return pread(file, buffer, size, offset);
}

int64_t WriteOnce(int file, const void* data, size_t size) { return write(file, data, size); }

#endif

}  // namespace

int64_t ReadSome(int file, uint8_t* buffer, size_t size) {
  int64_t count;
  do {
    count = ReadOnce(file, buffer, std::min(size, kMostAtOnce));
  } while (count < 0 && errno == EINTR);
  return count;
}

int64_t ReadSomeAt(int file, int64_t offset, uint8_t* buffer, size_t size) {
  int64_t count;
  do {
    count = ReadOnceAt(file, offset, buffer, std::min(size, kMostAtOnce));
  } while (count < 0 && errno == EINTR);
  return count;
}

bool WriteAll(int file, const void* data, size_t size) {
  const auto* next = static_cast<const uint8_t*>(data);
  while (size > 0) {
    const int64_t count = WriteOnce(file, next, std::min(size, kMostAtOnce));
    if (count < 0 && errno != EINTR) {
      return false;
    }
    if (count > 0) {
      next += count;
      size -= static_cast<size_t>(count);
    }
  }
  return true;
}

#ifdef _WIN32

void PrepareStreams() {
  for (const int file : {kStandardInput, kStandardOutput, kStandardError}) {
    _setmode(file, _O_BINARY);
  }
}

bool EndsOnBrokenPipe() { return true; }

int64_t SizeOf(int file) {
  const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(file));
  LARGE_INTEGER size;
  return GetFileType(handle) == FILE_TYPE_DISK && GetFileSizeEx(handle, &size) != 0 ? size.QuadPart
                                                                                    : -1;
}

int64_t PositionOf(int file) { return SizeOf(file) < 0 ? -1 : _lseeki64(file, 0, SEEK_CUR); }

void GoTo(int file, int64_t position) { _lseeki64(file, position, SEEK_SET); }

int OpenForReading(const std::string& name) {
  const std::wstring wide = Widen(name);
  const int file = _wopen(wide.c_str(), _O_RDONLY | _O_BINARY | _O_NOINHERIT | _O_SEQUENTIAL);
  if (file < 0) {
    // Folders can't be opened; "permission denied" would mislead.
    const int reason = errno;
    const DWORD attributes = GetFileAttributesW(wide.c_str());
    const bool folder =
        attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    errno = folder ? EISDIR : reason;
  }
  return file;
}

void Close(int file) { _close(file); }

// The volume of a stream that was handed over may be unknown, and then counts as any.
bool ReadsItsOwnOutput(int input, int output) {
  FILE_ID_INFO in;
  FILE_ID_INFO out;
  const auto handle = [](int file) { return reinterpret_cast<HANDLE>(_get_osfhandle(file)); };
  return GetFileType(handle(input)) == FILE_TYPE_DISK &&
         GetFileInformationByHandleEx(handle(input), FileIdInfo, &in, sizeof in) != 0 &&
         GetFileInformationByHandleEx(handle(output), FileIdInfo, &out, sizeof out) != 0 &&
         (in.VolumeSerialNumber == out.VolumeSerialNumber || out.VolumeSerialNumber == 0) &&
         std::memcmp(&in.FileId, &out.FileId, sizeof in.FileId) == 0;
}

bool IsTerminal(int file) {
  DWORD mode;
  return GetConsoleMode(reinterpret_cast<HANDLE>(_get_osfhandle(file)), &mode) != 0;
}

bool TerminalHasColor(int file) {
  constexpr DWORD kObeySequences = 4;  // ENABLE_VIRTUAL_TERMINAL_PROCESSING, not in every header
  const auto console = reinterpret_cast<HANDLE>(_get_osfhandle(file));
  DWORD mode;
  return GetConsoleMode(console, &mode) != 0 && SetConsoleMode(console, mode | kObeySequences) != 0;
}

std::vector<std::string> ExpandWildcards(const std::string& name) {
  const size_t lastPart = name.find_last_of("/\\:") + 1;  // npos: 0
  std::vector<std::string> names;
  WIN32_FIND_DATAW entry;
  const HANDLE search = name.find_first_of("*?", lastPart) == std::string::npos
                            ? INVALID_HANDLE_VALUE
                            : FindFirstFileW(Widen(name).c_str(), &entry);
  if (search == INVALID_HANDLE_VALUE) {
    return {name};
  }
  do {
    const std::string part = Narrow(entry.cFileName);
    if (part != "." && part != "..") {
      names.push_back(name.substr(0, lastPart) + part);
    }
  } while (FindNextFileW(search, &entry) != 0);
  FindClose(search);
  std::sort(names.begin(), names.end());
  return names;
}

#else

// What holds the position can't be used the way the stream is.
void PrepareStreams() {
  for (const int file : {kStandardInput, kStandardOutput, kStandardError}) {
    if (fcntl(file, F_GETFD) < 0 && errno == EBADF) {
      static_cast<void>(open("/dev/null", file == kStandardInput ? O_WRONLY : O_RDONLY));
    }
  }
}

bool EndsOnBrokenPipe() { return false; }

int64_t SizeOf(int file) {
  struct stat status;
  return fstat(file, &status) == 0 && S_ISREG(status.st_mode) ? status.st_size : -1;
}

int64_t PositionOf(int file) { return SizeOf(file) < 0 ? -1 : lseek(file, 0, SEEK_CUR); }

void GoTo(int file, int64_t position) { lseek(file, position, SEEK_SET); }

int OpenForReading(const std::string& name) { return open(name.c_str(), O_RDONLY | O_CLOEXEC); }

void Close(int file) { close(file); }

bool ReadsItsOwnOutput(int input, int output) {
  struct stat in;
  struct stat out;
  return fstat(input, &in) == 0 && S_ISREG(in.st_mode) && fstat(output, &out) == 0 &&
         in.st_dev == out.st_dev && in.st_ino == out.st_ino;
}

std::vector<std::string> ExpandWildcards(const std::string& name) { return {name}; }

bool IsTerminal(int file) { return isatty(file) != 0; }

bool TerminalHasColor(int file) {
  const char* terminal = std::getenv("TERM");
  return IsTerminal(file) && (terminal == nullptr || std::strcmp(terminal, "dumb") != 0);
}

#endif

}  // namespace examples

#ifdef _WIN32

// The run-time library is to leave "*" and "?" as they are: only those in names of files are to be
// expanded.
extern "C" int _dowildcard;  // NOLINT: the run-time library's name
int _dowildcard = 0;         // NOLINT

extern "C" int wmain(int count, wchar_t** values);  // NOLINT
extern "C" int wmain(int count, wchar_t** values) {
  std::vector<std::string> arguments;
  for (int i = 1; i < count; ++i) {
    arguments.push_back(examples::Narrow(values[i]));
  }
  return examples::Run(arguments);
}

#else

int main(int count, char** values) {
  return examples::Run(std::vector<std::string>(values + std::min(count, 1), values + count));
}

#endif
