// SPDX-License-Identifier: MIT

// logstat < access.log: requests and bytes for each status and method, by the groups of a pattern.
// Lines that are no request are counted and left out.

#include <iostream>
#include <map>
#include <string>
#include <utility>

#include "vekch/vekch.hpp"

int main() {
  vekch::Pattern request(R"(\A(\S+) \S+ \S+ \[([^\]]+)\] "([A-Z]+) (\S+)[^"]*" (\d{3}) (\d+|-))");
  struct Sum {
    int64_t requests = 0;
    int64_t bytes = 0;
  };
  std::map<std::pair<std::string, std::string>, Sum> sums;
  int64_t others = 0;
  for (std::string line; std::getline(std::cin, line);) {
    const auto match = request.find(line);
    if (!match) {
      ++others;
      continue;
    }
    Sum& sum = sums[{std::string(match[5]), std::string(match[3])}];
    ++sum.requests;
    sum.bytes += match[6] == "-" ? 0 : std::stoll(std::string(match[6]));
  }
  for (const auto& [key, sum] : sums) {
    std::cout << key.first << ' ' << key.second << ' ' << sum.requests << ' ' << sum.bytes << '\n';
  }
  std::cout << "other lines: " << others << '\n';
  return 0;
}
