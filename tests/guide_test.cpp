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

// The slash that ends the pattern is the one with options, spaces and a column after it.
Example Read(const std::string& line) {
  Example example;
  const bool replaces = line[0] == 's';
  size_t end = line.find('/');
  size_t next;
  do {
    end = line.find('/', end + 1);
    next = end == npos ? npos : line.find_first_not_of("gimsxb", end + 1);
  } while (next != npos && line.compare(next, 2, "  ") != 0);
  EXPECT_NE(next, npos) << line;
  if (next == npos) {
    return example;
  }
  const size_t start = line.find('/') + 1;
  const std::string body = line.substr(start, end - start);
  const size_t middle = replaces ? body.rfind('/') : npos;
  example.pattern = body.substr(0, middle);
  example.replacement = replaces ? body.substr(middle + 1) : "";
  example.options = line.substr(end + 1, next - end - 1);
  while (next < line.size()) {
    const size_t from = line.find_first_not_of(' ', next);
    next = std::min(line.find("  ", from + 1), line.size());
    example.columns.push_back(line.substr(from, next - from));
  }
  return example;
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
