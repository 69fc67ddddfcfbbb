// SPDX-License-Identifier: MIT

// What is printed: a buffer in front of standard output, and messages on standard error in their
// order with what was printed before.

#ifndef EXAMPLES_COMMON_OUTPUT_H
#define EXAMPLES_COMMON_OUTPUT_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "common/bytes.h"

namespace examples {

class Output {
 public:
  // `program` is the name in front of messages.
  explicit Output(const char* program);

  void Append(const std::string& bytes) { Append(bytes.data(), bytes.size()); }
  void Append(const uint8_t* text, Range range);

  void Flush();

  // Shows a line on the terminal of standard error, which obeys colour sequences, until something
  // else is written.
  void ShowStatus(const std::string& text);
  void EraseStatus();

  // Shows what there is so far to somebody who watches.
  void FlushToTerminal();

  // Prints "PROGRAM: MESSAGE" or "PROGRAM: NAME: REASON" on standard error.
  void Complain(const std::string& message);
  void Complain(const std::string& name, const std::string& reason) {
    Complain(name + ": " + reason);
  }

  // Value of errno at the first write that failed; from then on nothing is written. 0: none did.
  int Error() const { return error; }

 private:
  void Append(const char* bytes, size_t size);
  void WriteOut(const void* bytes, size_t size);

  const char* const program;
  const bool toTerminal;
  std::string buffer;
  bool showsStatus = false;
  int error = 0;
};

}  // namespace examples

#endif
