// SPDX-License-Identifier: MIT

// Output with parts of it in colour.

#ifndef VEKGREP_STYLED_OUTPUT_H
#define VEKGREP_STYLED_OUTPUT_H

#include <array>
#include <cstdint>
#include <string>

#include "common/output.h"

namespace examples::vekgrep {

enum class Style {
  kMatch,
  kContextMatch,
  kFileName,
  kLineNumber,
  kByteOffset,
  kSeparator,
  kSelected,
  kContext
};
constexpr size_t kStyleCount = 8;

// What each part looks like on a terminal.
struct Colors {
  bool enabled = false;
  bool erases = true;                           // to the end of the line, after each change
  std::array<std::string, kStyleCount> styles;  // as in "01;31"; empty: plain
};

// The usual colours, changed by a list as GREP_COLORS has it: "mt=01;32:ne:rv". `inverted`: lines
// without a match are selected, which "rv" depends on.
Colors ReadColors(const char* list, bool inverted);

class StyledOutput : public Output {
 public:
  StyledOutput(const char* programName, Sink& target, const Colors& styleColors)
      : Output(programName, target), colors(styleColors) {}

  bool HasColor() const { return colors.enabled; }

  // Whether parts of this style look different.
  bool Shows(Style style) const {
    return colors.enabled && !colors.styles[static_cast<size_t>(style)].empty();
  }

  void AppendStyled(Style style, const uint8_t* text, Range range);
  void AppendStyled(Style style, const std::string& bytes);
  // What begins a style, which the next end of one ends.
  std::string Start(Style style) const;

  std::string Styled(Style style, const std::string& bytes) const;
  void AppendNumberStyled(Style style, int64_t number);

 private:
  const char* End(Style style) const;

  const Colors& colors;
};

}  // namespace examples::vekgrep

#endif
