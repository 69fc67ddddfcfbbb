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

// Streams without translation of line ends. A stream that is closed stays unusable: no file that is
// opened later takes its place.
void PrepareStreams();

// Whether a program ends silently when nobody reads its output any longer. Where the system sees
// to that a write never fails for it, unless whoever started us wants it reported.
bool EndsOnBrokenPipe();

// A descriptor, or -1 with the reason in errno.
int OpenForReading(const std::string& name);
void Close(int file);

// Bytes read, 0 at the end, or -1 with the reason in errno.
int64_t ReadSome(int file, uint8_t* buffer, size_t size);

// The same from a position of a regular file.
int64_t ReadSomeAt(int file, int64_t offset, uint8_t* buffer, size_t size);

// Bytes of a regular file; -1 of any other.
int64_t SizeOf(int file);

// Where the next byte is read from; -1 where there are no positions.
int64_t PositionOf(int file);
void GoTo(int file, int64_t position);

// Writes everything; false with the reason in errno.
bool WriteAll(int file, const void* data, size_t size);

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
