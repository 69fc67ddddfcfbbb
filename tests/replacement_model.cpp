// SPDX-License-Identifier: MIT
#include "tests/replacement_model.h"

#include <algorithm>

namespace vekch::test {
namespace {

// One piece of a result, and what becomes of the result where the piece does not fit.
struct Piece {
  std::string text;
  size_t uncounted;  // bytes before it that its test leaves out
  size_t sourceLength;
  size_t length;
};

}  // namespace

std::optional<std::vector<TemplateItem>> ReadTemplate(const std::string& text) {
  std::vector<TemplateItem> items;
  bool extends = false;  // the literal text before
  for (size_t i = 0; i < text.size();) {
    if (text[i] == '$') {
      size_t end = i + 1;
      uint32_t group = 0;
      for (; end < text.size() && text[end] >= '0' && text[end] <= '9'; ++end) {
        group = group * 11 + static_cast<uint32_t>(text[end] - '0');
      }
      if (group == 0 && text.compare(i, 2, "$&") != 0) {
        return std::nullopt;
      }
      items.push_back({"", group});
      i = group == 0 ? i + 2 : end;
    } else if (text[i] == '\\') {
      ++i;
    } else {
      if (!extends) {
        items.emplace_back();
      }
      items.back().text += text[i++];
      extends = true;
      continue;
    }
    extends = false;
  }
  return items;
}

Replacement ReplaceByModel(const RegExpState& state, const SearchAnswer& found,
                           const std::string& source, const uint8_t* subject,
                           const std::vector<TemplateItem>& items, size_t capacity) {
  if (found.results.empty()) {
    const size_t copied = std::min(source.size(), capacity);
    return {source.substr(0, copied), copied, copied};
  }
  const auto startOf = [&](size_t slot) {
    return static_cast<size_t>(found.results[slot].pointer - subject);
  };
  const auto textOf = [&](size_t slot) {
    const int32_t length = found.results[slot].length;  // that may be past the source's end
    return length < 1 ? "" : source.substr(startOf(slot), static_cast<size_t>(length));
  };
  const bool all = (state.compileFlags & RegExpOptionG) != 0;
  const auto perMatch = static_cast<size_t>(state.captureCount);
  std::vector<Piece> pieces;
  size_t done = 0;    // of the source
  size_t length = 0;  // of the pieces
  for (size_t first = 0; first < found.results.size(); first += perMatch) {
    const size_t start = startOf(first);
    const std::string gap = start > done ? source.substr(done, start - done) : "";
    pieces.push_back({gap, 0, done, length});
    length += gap.size();
    const size_t gapEnd = length;
    done = start + textOf(first).size();
    if (!all && items.empty()) {  // the rest is copied whatever the capacity, and not counted
      return gapEnd < capacity ? Replacement{gap + source.substr(done), source.size(), gapEnd}
                               : Replacement{"", 0, 0};
    }
    const size_t known = std::min(perMatch, found.results.size() - first);
    for (const TemplateItem& item : items) {
      const std::string text = !item.text.empty()   ? item.text
                               : item.group < known ? textOf(first + item.group)
                                                    : "";
      pieces.push_back({text, all ? 0 : gapEnd, start, gapEnd});
      length += text.size();
    }
  }
  pieces.push_back({source.substr(done), 0, done, length});
  std::string written;
  for (const Piece& piece : pieces) {
    if (written.size() + piece.text.size() >= capacity + piece.uncounted) {
      return {written, piece.sourceLength, piece.length};
    }
    written += piece.text;
  }
  return {written, source.size(), written.size()};
}

}  // namespace vekch::test
