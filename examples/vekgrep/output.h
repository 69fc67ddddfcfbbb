// What is printed: a buffer in front of standard output, colours, and messages on standard error
// in their order with what was printed before.

#ifndef VEKGREP_OUTPUT_H
#define VEKGREP_OUTPUT_H

#include <cstdint>
#include <string>

#include "bytes.h"

namespace vekgrep {

enum class Style { kMatch, kFileName, kLineNumber, kSeparator };

class Output {
 public:
  explicit Output(bool color);

  bool HasColor() const { return hasColor; }

  void Append(const std::string& bytes) { Append(bytes.data(), bytes.size()); }
  void Append(const uint8_t* text, Range range);
  void AppendStyled(Style style, const uint8_t* text, Range range);
  void AppendStyled(Style style, const std::string& bytes);

  void Flush();

  // Shows what there is so far to somebody who watches.
  void FlushToTerminal();

  // Prints "vekgrep: MESSAGE" or "vekgrep: NAME: REASON" on standard error.
  void Complain(const std::string& message);
  void Complain(const std::string& name, const std::string& reason) {
    Complain(name + ": " + reason);
  }

  // Value of errno at the first write that failed; from then on nothing is written. 0: none did.
  int Error() const { return error; }

 private:
  void Append(const char* bytes, size_t size);
  void WriteOut(const void* bytes, size_t size);

  const bool hasColor;
  const bool toTerminal;
  std::string buffer;
  int error = 0;
};

}  // namespace vekgrep

#endif
