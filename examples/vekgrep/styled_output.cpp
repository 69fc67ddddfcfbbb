// SPDX-License-Identifier: MIT

// Colours as terminals take them: a sequence in front of what is coloured and one behind it.

#include "styled_output.h"

namespace examples::vekgrep {
namespace {

constexpr char kStyleEnd[] = "\33[m";

const char* StyleStart(Style style) {
  switch (style) {
    case Style::kMatch:
      return "\33[01;31m";
    case Style::kFileName:
      return "\33[35m";
    case Style::kLineNumber:
      return "\33[32m";
    case Style::kSeparator:
      return "\33[36m";
  }
  return "";
}

}  // namespace

void StyledOutput::AppendStyled(Style style, const uint8_t* text, Range range) {
  if (hasColor) {
    Append(StyleStart(style));
  }
  Append(text, range);
  if (hasColor) {
    Append(kStyleEnd);
  }
}

void StyledOutput::AppendStyled(Style style, const std::string& bytes) {
  AppendStyled(style, reinterpret_cast<const uint8_t*>(bytes.data()),
               {0, static_cast<int32_t>(bytes.size())});
}

}  // namespace examples::vekgrep
