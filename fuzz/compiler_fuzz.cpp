// SPDX-License-Identifier: MIT

// Compiles any bytes as a pattern, in blocks of just the size that they need: whatever is read or
// written outside is found by the instrumentation, and a program must be well formed.
//
// An input's head begins with the options; its string is the pattern.

#include "fuzz/fuzz_input.h"
#include "fuzz/pattern_mutator.h"
#include "tests/program_checks.h"

const size_t vekch::fuzz::kPatternsOfInput = 1;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace vekch::fuzz;
  Input input(data, size);
  const std::string pattern = input.Next();
  const Block<RegExpState> state = MakeBlock<RegExpState>(ObjectSize(pattern));
  const auto [status, offset] = CompileInto(state.get(), pattern, OptionLetters(input.Head(0)));
  if (status == StatusNoError) {
    Require(offset == -1, "an offset without a fault");
    const std::string flaw = vekch::test::FindFlaw(*state, pattern.size());
    Require(flaw.empty(), flaw);
  } else {
    Require(status <= StatusRegExpEscapeError && status >= StatusRegExpQuantifierError, "status");
    Require(offset >= 0 && static_cast<size_t>(offset) <= pattern.size(), "offset");
  }
  return 0;
}
