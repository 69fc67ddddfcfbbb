// SPDX-License-Identifier: MIT
#include <iostream>
#include <vekch/vekch.hpp>

int main() {
  vekch::Pattern pattern("(\\w+)=(\\d+)");
  const std::string text = "width=640, height=480";
  for (const auto match : pattern.find_all(text)) {
    std::cout << match[1] << " is " << match[2] << '\n';
  }
  std::cout << pattern.replace_all(text, "$2 $1").text << '\n';
  std::cout << vekch::Pattern("(\\w+").fault().text() << '\n';
}
