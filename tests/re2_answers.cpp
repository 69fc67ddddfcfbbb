// SPDX-License-Identifier: MIT

// re2_answers PATTERN TEXT: "=" and RE2's first match, "none" or "refused".

#include <re2/re2.h>

#include <iostream>

int main(int argc, char** argv) {
  if (argc != 3) {
    return 2;
  }
  RE2::Options options;
  options.set_log_errors(false);
  const RE2 pattern(argv[1], options);
  re2::StringPiece match;
  const re2::StringPiece text(argv[2]);
  if (!pattern.ok()) {
    std::cout << "refused";
  } else if (pattern.Match(text, 0, text.size(), RE2::UNANCHORED, &match, 1)) {
    std::cout << "=" << match;
  } else {
    std::cout << "none";
  }
  return 0;
}
