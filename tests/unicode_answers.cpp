// SPDX-License-Identifier: MIT

// Prints what the library answers for every code point, for the test that compares the answers
// with the package that the tables are made from. Arguments: names of categories and scripts.

#include <cstdint>
#include <cstdio>
#include <string>

#include "regexp/characters/properties.h"

namespace {

using vekch::regexp::MatchPropertyItem;

constexpr int32_t kCodePoints = 0x110000;

void PrintMembers(const std::string& escape, const ProgramNode& node) {
  std::printf("%s", escape.c_str());
  for (int32_t x = 0; x < kCodePoints;) {
    const int32_t first = x;
    while (x < kCodePoints && MatchPropertyItem(x, &node, 0) >= 0) {
      ++x;
    }
    if (x > first) {
      std::printf(" %x-%x", first, x - 1);
    } else {
      ++x;
    }
  }
  std::printf("\n");
}

bool PrintProperty(const std::string& name) {
  for (const char letter : {'p', 'P'}) {
    const std::string escape = letter + ("{" + name + "}");
    const uint8_t* position = reinterpret_cast<const uint8_t*>(escape.c_str());
    ProgramNode node = {};
    int32_t count = 0;
    if (vekch::regexp::ParsePropertyEscape(&position, &node, &count, letter == 'P' ? -1 : 0) != 0) {
      return false;
    }
    PrintMembers(escape, node);
  }
  return true;
}

void PrintFolding() {
  std::printf("folding");
  for (int32_t x = 0; x < kCodePoints; ++x) {
    if (vekch::regexp::FoldCase(x) != x) {
      std::printf(" %x-%x", x, vekch::regexp::FoldCase(x));
    }
  }
  std::printf("\n");
}

void PrintBlocks() {
  std::printf("blocks");
  std::string names = vekch::regexp::kBlockNames;
  while (!names.empty()) {
    const std::string escape = "p{" + names.substr(0, names.find('}') + 1);
    names.erase(0, names.find('}') + 1);
    const uint8_t* position = reinterpret_cast<const uint8_t*>(escape.c_str());
    ProgramNode node = {};
    int32_t count = 0;
    vekch::regexp::ParsePropertyEscape(&position, &node, &count, 0);
    std::printf(" %s%x-%x", escape.c_str() + 2, node.a, node.b);
  }
  std::printf("\n");
}

}  // namespace

int main(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    if (!PrintProperty(argv[i])) {
      std::printf("%s is refused\n", argv[i]);
    }
  }
  PrintFolding();
  PrintBlocks();
  return 0;
}
