// SPDX-License-Identifier: MIT

// Searches for what the lines of its input say: options, pattern and subject, the two in
// hexadecimal digits, with a tab between. Each line of its output is what a search reports: "start
// length" or "-" for each group, "none", or the status.

#include <iostream>
#include <string>
#include <vector>

#include "vekch/vekch.h"

namespace {

std::string FromDigits(const std::string& digits) {
  std::string bytes;
  for (size_t i = 0; i + 1 < digits.size(); i += 2) {
    bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
  }
  return bytes;
}

const uint8_t* Bytes(const std::string& text) {
  return reinterpret_cast<const uint8_t*>(text.c_str());
}

std::string Answer(const std::string& options, const std::string& pattern,
                   const std::string& subject) {
  int32_t size = 0;
  int32_t offset = 0;
  veksRegExpGetSize(Bytes(pattern), &size);
  std::vector<uint64_t> object(static_cast<size_t>(size) / 8);
  auto* state = reinterpret_cast<RegExpState*>(object.data());
  vekStatus status = veksRegExpInit(Bytes(pattern), Bytes(options), state, &offset);
  RegExpFindResult results[100];
  int32_t count = 100;
  if (status == StatusNoError) {
    const auto length = static_cast<int32_t>(subject.size());
    status = veksRegExpFind_8u(Bytes(subject), length, state, results, &count);
  }
  if (status != StatusNoError || count == 0) {
    return status == StatusNoError ? "none" : "status " + std::to_string(status);
  }
  std::string text;
  for (const RegExpFindResult* each = results; each < results + count; ++each) {
    text += each == results ? "" : ", ";
    text += each->pointer == nullptr ? "-"
                                     : std::to_string(each->pointer - Bytes(subject)) + " " +
                                           std::to_string(each->length);
  }
  return text;
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
