// SPDX-License-Identifier: MIT

// Compiles three patterns one after the other into one block, which is full of 0xAA at first, and
// searches with each of those that compile, while the format and the match limit change: what was
// in the block before must not show. A block of its own, and the model, say what is right.
//
// An input's head is the options of each pattern, settings of each, and a room and a match limit
// for all; its strings are the patterns and the subject.

#include <array>

#include "fuzz/pattern_mutator.h"
#include "fuzz/search_check.h"

namespace vekch::fuzz {

const size_t kPatternsOfInput = 3;

namespace {

// Programs but for the addresses in them, and what was prepared for searches.
bool AreSame(const RegExpState& a, const RegExpState& b) {
  const auto* records = reinterpret_cast<const ProgramNode*>(&a + 1);
  const auto* others = reinterpret_cast<const ProgramNode*>(&b + 1);
  return std::memcmp(&a, &b, sizeof a) == 0 &&
         std::equal(records, records + a.nodeCount, others,
                    [](const ProgramNode& x, const ProgramNode& y) {
                      return x.op == y.op && x.a == y.a && x.b == y.b && x.c == y.c;
                    });
}

struct Settings {
  int32_t format;
  int32_t limit;
};

void TryInput(const uint8_t* data, size_t size) {
  Input input(data, size);
  std::array<std::string, kPatternsOfInput> patterns;
  size_t blockSize = 0;
  for (std::string& pattern : patterns) {
    pattern = input.Next();
    blockSize = std::max(blockSize, ObjectSize(pattern));
  }
  const std::string subject = input.Rest(kMostSubject);
  const int32_t room = 1 + input.Head(6) % 40;
  const Block<RegExpState> reused = MakeBlock<RegExpState>(blockSize);
  for (size_t i = 0; i < kPatternsOfInput; ++i) {
    const std::string options = OptionLetters(input.Head(i));
    const Block<RegExpState> fresh = MakeBlock<RegExpState>(ObjectSize(patterns[i]));
    const Compiled expected = CompileInto(fresh.get(), patterns[i], options);
    const Compiled compiled = CompileInto(reused.get(), patterns[i], options);
    Require(compiled.status == expected.status && compiled.errorOffset == expected.errorOffset,
            "another status or offset than in a block of its own");
    if (compiled.status != StatusNoError) {
      continue;
    }
    Require(AreSame(*reused, *fresh), "another object than in a block of its own");
    const uint8_t bits = input.Head(kPatternsOfInput + i);
    const int32_t limit = bits / 4 % 2 == 0 ? RegExpDefaultMatchLimit : 4 * input.Head(7);
    const Settings changes[] = {
        {1, RegExpDefaultMatchLimit}, {1 - bits % 2, limit}, {bits / 2 % 2, limit / 3}, {1, limit}};
    for (const auto& [format, matchLimit] : changes) {
      for (RegExpState* state : {fresh.get(), reused.get()}) {
        veksRegExpSetFormat(format, state);
        veksRegExpSetMatchLimit(matchLimit, state);
      }
      CompareSearches(reused.get(), *fresh, subject, room, 1 + bits / 8 % 4);
    }
  }
}

}  // namespace
}  // namespace vekch::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  vekch::fuzz::TryInput(data, size);
  return 0;
}
