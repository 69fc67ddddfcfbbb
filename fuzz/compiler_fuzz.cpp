// SPDX-License-Identifier: MIT

// Compiles any bytes as a pattern, in blocks of just the size that they need: whatever is read or
// written outside is found by the instrumentation, and a program must be well formed. A short one
// is compiled once more, spelled in the characters that the model of patterns knows: status and
// offset must be the model's.
//
// An input's head begins with the options; its string is the pattern.

#include "fuzz/fuzz_input.h"
#include "fuzz/pattern_mutator.h"
#include "tests/pattern_model.h"
#include "tests/program_checks.h"

const size_t vekch::fuzz::kPatternsOfInput = 1;

namespace vekch::fuzz {
namespace {

// A longer one could have eleven groups, or numbers that are too large for the model.
constexpr size_t kMostForModel = 20;

Compiled Check(const std::string& pattern, const std::string& options) {
  const Block<RegExpState> state = MakeBlock<RegExpState>(ObjectSize(pattern));
  const Compiled compiled = CompileInto(state.get(), pattern, options);
  const auto [status, offset] = compiled;
  if (status == StatusNoError) {
    Require(offset == -1, "an offset without a fault");
    const std::string flaw = test::FindFlaw(*state, pattern.size());
    Require(flaw.empty(), flaw);
  } else {
    Require(status <= StatusRegExpEscapeError && status >= StatusRegExpQuantifierError, "status");
    Require(offset >= 0 && static_cast<size_t>(offset) <= pattern.size(), "offset");
  }
  return compiled;
}

void CompareWithModel(std::string pattern) {
  const std::string alphabet = test::kModelAlphabet;
  for (char& c : pattern) {
    c = alphabet.find(c) == std::string::npos ? alphabet[static_cast<uint8_t>(c) % alphabet.size()]
                                              : c;
  }
  const test::Verdict expected = test::JudgePattern(pattern);
  const auto [status, offset] = Check(pattern, "");
  Require(status == expected.status, "another status than the model's for " + pattern);
  Require(status == StatusNoError || static_cast<size_t>(offset) == expected.offset,
          "another offset than the model's for " + pattern);
}

}  // namespace
}  // namespace vekch::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace vekch::fuzz;
  Input input(data, size);
  const std::string pattern = input.Next();
  Check(pattern, OptionLetters(input.Head(0)));
  if (pattern.size() <= kMostForModel) {
    CompareWithModel(pattern);
  }
  return 0;
}
