// SPDX-License-Identifier: MIT

// What differs between the systems: files, terminals and the entry point. Files are descriptors,
// failures are values of errno on both systems, and names are UTF-8 on Windows.

#ifndef EXAMPLES_COMMON_PLATFORM_H
#define EXAMPLES_COMMON_PLATFORM_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace examples {

constexpr int kStandardInput = 0;
constexpr int kStandardOutput = 1;
constexpr int kStandardError = 2;

// Streams without translation of line ends; writing to a closed pipe fails instead of killing.
void PrepareStreams();

// A descriptor, or -1 with the reason in errno.
int OpenForReading(const std::string& name);
void Close(int file);

// Bytes read, 0 at the end, or -1 with the reason in errno.
int64_t ReadSome(int file, uint8_t* buffer, size_t size);

// Writes everything; false with the reason in errno.
bool Write(int file, const void* data, size_t size);

// Whether the descriptors are one regular file and reading would meet what is written.
bool ReadsItsOwnOutput(int input, int output);

bool IsTerminal(int file);

// Whether the terminal obeys colour sequences, which it may have to be asked for.
bool TerminalHasColor(int file);

// The names that "*" and "?" in the last part of a name stand for; the name itself if there are
// none, or if the command interpreters see to it, as they do on POSIX.
std::vector<std::string> ExpandWildcards(const std::string& name);

// The program: its arguments without its name, its exit status. Each program's main.cpp defines it.
int Run(const std::vector<std::string>& arguments);

}  // namespace examples

#endif
