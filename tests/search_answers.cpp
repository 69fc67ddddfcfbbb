// SPDX-License-Identifier: MIT

// Searches for what the lines of its input say: options, pattern and subject, the two in
// hexadecimal digits, with a tab between. Each line of its output is what a search reports:
// "start+length" or "-" for each group, "none", or the status.

#include <iostream>

#include "tests/pattern_object.h"

namespace {

std::string FromDigits(const std::string& digits) {
  std::string bytes;
  for (size_t i = 0; i + 1 < digits.size(); i += 2) {
    bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
  }
  return bytes;
}

std::string Answer(const std::string& options, const std::string& pattern,
                   const std::string& subject) {
  vekch::test::PatternObject object(pattern.size());
  const vekStatus status = object.Compile(pattern, options.c_str());
  if (status != StatusNoError) {
    return "status " + std::to_string(status);
  }
  const uint8_t* const text = vekch::test::BytesOf(subject);
  const auto answer =
      vekch::test::Search(object.State(), text, static_cast<int32_t>(subject.size()), 100);
  return answer.count == 0 ? "none" : Show(answer, text);
}

}  // namespace

int main() {
  std::string options;
  std::string pattern;
  std::string subject;
  while (std::getline(std::cin, options, '\t') && std::getline(std::cin, pattern, '\t') &&
         std::getline(std::cin, subject)) {
    std::cout << Answer(options, FromDigits(pattern), FromDigits(subject)) << "\n";
  }
  return 0;
}
