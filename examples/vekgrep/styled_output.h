// SPDX-License-Identifier: MIT

// Output with parts of it in colour.

#ifndef VEKGREP_STYLED_OUTPUT_H
#define VEKGREP_STYLED_OUTPUT_H

#include <cstdint>
#include <string>

#include "common/output.h"

namespace examples::vekgrep {

enum class Style { kMatch, kFileName, kLineNumber, kSeparator };

class StyledOutput : public Output {
 public:
  StyledOutput(const char* programName, bool color) : Output(programName), hasColor(color) {}

  bool HasColor() const { return hasColor; }

  void AppendStyled(Style style, const uint8_t* text, Range range);
  void AppendStyled(Style style, const std::string& bytes);

 private:
  const bool hasColor;
};

}  // namespace examples::vekgrep

#endif
