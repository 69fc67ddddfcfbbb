// SPDX-License-Identifier: MIT

// Compiles any bytes as a pattern, in blocks of just the size that they need: whatever is read or
// written outside is found by the instrumentation, and a program must be well formed.
//
// The first byte of an input chooses the options, the rest up to a zero byte is the pattern.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "fuzz/fuzz_input.h"
#include "tests/program_checks.h"
#include "vekch/vekch.h"

namespace {

void Require(bool holds, const std::string& what) {
  if (!holds) {
    std::fprintf(stderr, "%s\n", what.c_str());
    std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace vekch::fuzz;
  if (size == 0) {
    return 0;
  }
  const std::string options = OptionLetters(data[0]);
  const std::string text(reinterpret_cast<const char*>(data + 1), size - 1);
  const size_t length = std::min(text.find('\0'), text.size());

  const Block<uint8_t> pattern = MakeBlock<uint8_t>(length + 1);
  std::copy_n(text.c_str(), length, pattern.get());
  pattern.get()[length] = 0;
  int32_t objectSize = 0;
  veksRegExpGetSize(pattern.get(), &objectSize);
  const Block<RegExpState> state = MakeBlock<RegExpState>(static_cast<size_t>(objectSize));

  int32_t offset = -1;
  const vekStatus status = veksRegExpInit(
      pattern.get(), reinterpret_cast<const uint8_t*>(options.c_str()), state.get(), &offset);
  if (status == StatusNoError) {
    const std::string flaw = vekch::test::FindFlaw(*state, length);
    Require(flaw.empty(), flaw);
  } else {
    Require(status <= StatusRegExpEscapeError && status >= StatusRegExpQuantifierError, "status");
    Require(offset >= 0 && static_cast<size_t>(offset) <= length, "offset");
  }
  return 0;
}
