// SPDX-License-Identifier: MIT

// What is printed: standard output through a buffer, and messages on standard error in their
// order with what was printed before. Where both go is a sink: the streams, or memory until the
// turn to write them has come.

#ifndef EXAMPLES_COMMON_OUTPUT_H
#define EXAMPLES_COMMON_OUTPUT_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <mutex>
#include <string>

#include "common/bytes.h"

namespace examples {

class Sink {
 public:
  virtual ~Sink() = default;

  // `file` is the descriptor of standard output or standard error.
  virtual void Write(int file, const char* bytes, size_t size) = 0;

  // Writes to standard output what is to be between groups of lines: nothing before the first.
  virtual void WriteBetween(const char* bytes, size_t size) = 0;

  // Whether a write to standard output failed; from then on nothing is written to it.
  virtual bool Failed() const = 0;
};

// The streams themselves; any thread may write.
class StandardStreams : public Sink {
 public:
  // `program` is the name that precedes what is shown.
  explicit StandardStreams(const char* program) : name(program) {}

  void Write(int file, const char* bytes, size_t size) override;
  void WriteBetween(const char* bytes, size_t size) override;
  bool Failed() const override { return error.load(std::memory_order_relaxed) != 0; }

  // Value of errno at the first write that failed; 0: none did.
  int Error() const { return error; }

  // Shows a line on the terminal of standard error, which obeys colour sequences, until something
  // else is written.
  void ShowStatus(const std::string& text);
  void EraseStatus();

 private:
  void EraseLocked();

  const char* const name;
  std::mutex mutex;
  bool showsStatus = false;
  bool hasGroups = false;
  std::atomic<int> error{0};
};

class Output {
 public:
  // `program` is the name that precedes messages.
  Output(const char* programName, Sink& target) : program(programName), sink(target) {}

  void Append(const char* bytes, size_t size);
  void Append(const char* text) { Append(text, std::strlen(text)); }
  void Append(const std::string& bytes) { Append(bytes.data(), bytes.size()); }
  void Append(const uint8_t* text, Range range) {
    Append(reinterpret_cast<const char*>(text) + range.begin,
           static_cast<size_t>(range.end - range.begin));
  }
  void AppendNumber(int64_t number);

  // What is to be between groups of lines, where a group begins that may be the first.
  void AppendBetween(const std::string& bytes);

  void Flush();

  // Prints "PROGRAM: MESSAGE" or "PROGRAM: NAME: REASON" on standard error.
  void Complain(const std::string& message);
  void Complain(const std::string& name, const std::string& reason) {
    Complain(name + ": " + reason);
  }

  bool Failed() const { return sink.Failed(); }

 private:
  const char* const program;
  Sink& sink;
  std::string buffer;
};

}  // namespace examples

#endif
