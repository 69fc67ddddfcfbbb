// SPDX-License-Identifier: MIT

// Compiles any bytes as a pattern and searches any others with it, at several match limits: a fresh
// object, which the exact matcher answers for, the same one when it has been used so often that the
// fast matcher does, and one that is used at all of the limits must answer as the model does.
//
// An input's head is options, format, room, two match limits and how often the subject is repeated;
// its strings are the pattern and the subject.

#include "fuzz/pattern_mutator.h"
#include "fuzz/search_check.h"

const size_t vekch::fuzz::kPatternsOfInput = 1;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace vekch::fuzz;
  Input input(data, size);
  const std::string options = OptionLetters(input.Head(0));
  const int32_t room = 1 + input.Head(2) % 40;
  const std::string pattern = input.Next();
  // Some times over, so that it can be longer than what kernels take in a step.
  const std::string subject =
      vekch::test::Repeat(input.Rest(kMostSubject), size_t{1} + input.Head(5) % 8);
  const Block<RegExpState> used = Compile(pattern, options);
  if (used == nullptr) {
    return 0;
  }
  veksRegExpSetFormat(1 - (input.Head(1) & 1), used.get());
  for (const int32_t limit :
       {int32_t{RegExpDefaultMatchLimit}, 4 * input.Head(3), +input.Head(4)}) {
    const Block<RegExpState> fresh = Compile(pattern, options);
    veksRegExpSetFormat(1 - (input.Head(1) & 1), fresh.get());
    veksRegExpSetMatchLimit(limit, fresh.get());
    veksRegExpSetMatchLimit(limit, used.get());
    // The sixth search is the fast matcher's, where it knows the pattern.
    if (CompareSearches(fresh.get(), *fresh, subject, room, 6)) {
      CompareSearches(used.get(), *fresh, subject, room, 2);
    }
  }
  return 0;
}
