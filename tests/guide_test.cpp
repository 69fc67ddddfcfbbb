// SPDX-License-Identifier: MIT

// The examples of the guides: every line of a block "patterns", "templates" or "differences" in
// docs/*.md is run. The forms, with two spaces or more between the columns:
//
//   /pattern/options   "text"   "match" ("group" -) "match"      or none, or refused: cause
//   s/pattern/template/options  "text"   "result"
//
// Option b takes bytes for characters. In quotation marks \n, \t and \xHH are bytes. Of a line of
// "differences" the third column, our first match, is looked at here.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "vekch/vekch.hpp"

namespace vekch::test {
namespace {

// The bytes that a column means.
std::string Unescaped(const std::string& column) {
  std::string text;
  for (size_t i = 0; i < column.size(); ++i) {
    if (column[i] != '\\') {
      text += column[i];
    } else if (column[++i] == 'x') {
      text += static_cast<char>(std::stoi(column.substr(i + 1, 2), nullptr, 16));
      i += 2;
    } else {
      text += column[i] == 'n' ? '\n' : column[i] == 't' ? '\t' : column[i];
    }
  }
  return text;
}

std::string Quoted(std::string_view text) { return '"' + std::string(text) + '"'; }

std::string Shown(const Matches& matches, size_t most) {
  std::string shown;
  for (const auto match : matches) {
    if (most-- == 0) {
      break;
    }
    shown += (shown.empty() ? "" : " ") + Quoted(match[0]);
    for (size_t group = 1; group < match.size(); ++group) {
      shown += (group == 1 ? " (" : " ") + (match.has(group) ? Quoted(match[group]) : "-");
    }
    shown += match.size() > 1 ? ")" : "";
  }
  return shown.empty() ? "none" : shown;
}

struct Example {
  std::string pattern;
  std::string replacement;
  std::string options;
  std::vector<std::string> columns;  // the text first
};

// The slash that ends the pattern is the first one with options, spaces and a column after it.
Example Read(const std::string& line) {
  static const std::regex kForm("(s?)/(.*?)/([gimsxb]*) {2,}(.*)");
  static const std::regex kGap(" {2,}");
  std::smatch parts;
  EXPECT_TRUE(std::regex_match(line, parts, kForm)) << line;
  const std::string body = parts.str(2);
  const std::string columns = parts.str(4);
  const size_t middle = parts.str(1).empty() ? npos : body.rfind('/');
  return {body.substr(0, middle),
          middle == npos ? "" : body.substr(middle + 1),
          parts.str(3),
          {std::sregex_token_iterator(columns.begin(), columns.end(), kGap, -1), {}}};
}

void Check(const std::string& kind, const std::string& line) {
  const Example example = Read(line);
  ASSERT_FALSE(example.columns.empty());
  std::string options = example.options;
  const bool bytes = options.find('b') != npos;
  options.erase(std::remove(options.begin(), options.end(), 'b'), options.end());
  Pattern pattern(example.pattern, options);
  if (!pattern) {
    const std::string& wanted = example.columns[kind == "differences" ? 1 : 0];
    EXPECT_EQ(kind == "differences" ? "refused" : "refused: " + std::string(pattern.fault().cause),
              wanted);
    return;
  }
  pattern.set_bytes(bytes);
  ASSERT_GE(example.columns.size(), 2u);
  const std::string quoted = Unescaped(example.columns[0]);
  const std::string text = quoted.substr(1, quoted.size() - 2);
  if (kind == "templates") {
    const Template replacement(example.replacement);
    EXPECT_EQ(replacement.ok() ? Quoted(pattern.replace_all(text, replacement).text) : "refused",
              Unescaped(example.columns[1]));
    return;
  }
  EXPECT_EQ(Shown(pattern.find_all(text), kind == "differences" ? 1 : npos),
            Unescaped(example.columns[1]));
}

TEST(GuideTest, EveryExampleIsTrue) {
  int32_t examples = 0;
  for (const auto& entry : std::filesystem::directory_iterator(VEKCH_DOCS_FOLDER)) {
    std::ifstream file(entry.path());
    std::string kind;
    std::string line;
    for (int32_t number = 1; std::getline(file, line); ++number) {
      if (line.rfind("```", 0) == 0) {
        kind = kind.empty() ? line.substr(3) + " " : "";
      } else if ((kind == "patterns " || kind == "templates " || kind == "differences ") &&
                 (line[0] == '/' || line[0] == 's')) {
        SCOPED_TRACE(entry.path().filename().string() + ":" + std::to_string(number) + ": " + line);
        Check(kind.substr(0, kind.size() - 1), line);
        ++examples;
      }
    }
  }
  EXPECT_GT(examples, 100);
}

}  // namespace
}  // namespace vekch::test
