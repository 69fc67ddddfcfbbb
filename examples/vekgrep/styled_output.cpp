// SPDX-License-Identifier: MIT

// Colours as terminals take them: a sequence before what is coloured and one after it.

#include "styled_output.h"

#include <utility>

namespace examples::vekgrep {
namespace {

std::string& Of(Colors& colors, Style style) { return colors.styles[static_cast<size_t>(style)]; }

void Apply(Colors& colors, const std::string& name, const std::string& value, bool* reverses) {
  const std::pair<const char*, Style> names[] = {
      {"ms", Style::kMatch},        {"mt", Style::kMatch},     {"mc", Style::kContextMatch},
      {"mt", Style::kContextMatch}, {"fn", Style::kFileName},  {"ln", Style::kLineNumber},
      {"bn", Style::kByteOffset},   {"se", Style::kSeparator}, {"sl", Style::kSelected},
      {"cx", Style::kContext}};
  for (const auto& [known, style] : names) {
    if (name == known) {
      Of(colors, style) = value;
    }
  }
  *reverses = *reverses || name == "rv";
  colors.erases = colors.erases && name != "ne";
}

}  // namespace

// What isn't known is passed over; the list ends where it is malformed.
Colors ReadColors(const char* list, bool inverted) {
  Colors colors;
  colors.styles = {"01;31", "01;31", "35", "32", "32", "36", "", ""};
  bool reverses = false;
  std::string rest = list == nullptr ? "" : list;
  while (!rest.empty()) {
    const std::string one = rest.substr(0, rest.find(':'));
    const std::string name = one.substr(0, one.find('='));
    const std::string value = one.size() > name.size() ? one.substr(name.size() + 1) : "";
    if (value.find_first_not_of("0123456789;") != std::string::npos) {
      break;
    }
    Apply(colors, name, value, &reverses);
    rest.erase(0, one.size() + 1);
  }
  if (reverses && inverted) {
    std::swap(Of(colors, Style::kSelected), Of(colors, Style::kContext));
  }
  return colors;
}

std::string StyledOutput::Start(Style style) const {
  return Shows(style)
             ? "\33[" + colors.styles[static_cast<size_t>(style)] + (colors.erases ? "m\33[K" : "m")
             : "";
}

const char* StyledOutput::End(Style style) const {
  return !Shows(style) ? "" : colors.erases ? "\33[m\33[K" : "\33[m";
}

std::string StyledOutput::Styled(Style style, const std::string& bytes) const {
  return Start(style) + bytes + End(style);
}

void StyledOutput::AppendStyled(Style style, const uint8_t* text, Range range) {
  if (range.begin == range.end) {
    return;
  }
  if (!Shows(style)) {
    Append(text, range);
    return;
  }
  Append(Start(style));
  Append(text, range);
  Append(End(style));
}

void StyledOutput::AppendStyled(Style style, const std::string& bytes) {
  AppendStyled(style, reinterpret_cast<const uint8_t*>(bytes.data()),
               {0, static_cast<int32_t>(bytes.size())});
}

void StyledOutput::AppendNumberStyled(Style style, int64_t number) {
  if (!Shows(style)) {
    AppendNumber(number);
    return;
  }
  Append(Start(style));
  AppendNumber(number);
  Append(End(style));
}

}  // namespace examples::vekgrep
