// SPDX-License-Identifier: MIT

// What a replacement gives, from the rules alone: templates read as items, and the pieces of the
// result laid down one after the other.

#ifndef VEKCH_TESTS_REPLACEMENT_MODEL_H
#define VEKCH_TESTS_REPLACEMENT_MODEL_H

#include <optional>
#include <string>
#include <vector>

#include "tests/pattern_object.h"

namespace vekch::test {

struct TemplateItem {
  std::string text;    // literal
  uint32_t group = 0;  // unless there is literal text
};

// The items of a template, none if it is refused.
std::optional<std::vector<TemplateItem>> ReadTemplate(const std::string& text);

struct Replacement {
  std::string written;  // what lies after the reported length as well
  size_t sourceLength;
  size_t length;
};

// `found` is what the search of the replacement reports, whole matches too.
Replacement ReplaceByModel(const RegExpState& state, const SearchAnswer& found,
                           const std::string& source, const uint8_t* subject,
                           const std::vector<TemplateItem>& items, size_t capacity);

}  // namespace vekch::test

#endif
