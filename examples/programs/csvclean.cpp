// SPDX-License-Identifier: MIT

// csvclean < in.csv > out.csv: fields without white space around them, lines without a field left
// out, quotation marks only where they are needed. Quoted fields may hold commas and quotation
// marks (twice), not newlines.

#include <iostream>
#include <string>
#include <vector>

#include "vekch/vekch.hpp"

int main() {
  // Group 1 is the inside of a quoted field, group 2 a plain one.
  vekch::Pattern field(R"re([ \t]*(?:"((?>(?:[^"]|"")*))"[ \t]*|([^,"]*))(?:,|\z))re");
  vekch::Pattern doubled("\"\"");
  vekch::Pattern needsQuotes(R"([,"]|\A\s|\s\z)");
  const auto twice = vekch::Template::literal("\"\"");
  const auto once = vekch::Template::literal("\"");
  vekch::Pattern mark("\"");
  int64_t number = 0;
  for (std::string line; std::getline(std::cin, line);) {
    ++number;
    std::vector<std::string> fields;
    const std::string_view text = vekch::trim_end(line, "\r\n");
    size_t end = 0;
    for (const auto match : field.find_all(text)) {
      if (match.position() != end ||
          (match.position() == text.size() && !fields.empty() && text.back() != ',')) {
        break;
      }
      end = match.end();
      fields.push_back(match.has(1) ? doubled.replace_all(match[1], once).text
                                    : std::string(vekch::trim(match[2])));
    }
    if (end != text.size()) {
      std::cerr << "line " << number << ": a quotation mark in the middle of a field\n";
      return 1;
    }
    bool any = false;
    for (std::string& each : fields) {
      any = any || !each.empty();
      if (needsQuotes.found_in(each)) {
        each = "\"" + mark.replace_all(each, twice).text + "\"";
      }
    }
    if (any) {
      std::cout << vekch::join(fields, ",") << '\n';
    }
  }
  return 0;
}
