// SPDX-License-Identifier: MIT

// Compiles any bytes as a pattern and searches any others with it: the library must answer as the
// model does, when its object is new and when it has been used, and read and write nothing outside
// of blocks of just the size that they need.
//
// An input is options, format, room, the match limit in two bytes, the length of the pattern, the
// pattern up to a zero byte, and the subject.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "fuzz/fuzz_input.h"
#include "tests/match_model.h"
#include "vekch/vekch.h"

namespace vekch::fuzz {
namespace {

using test::SearchAnswer;

constexpr size_t kHead = 6;
constexpr size_t kMostSubject = 64;
constexpr int64_t kMostSteps = 200000;  // larger searches tell no more

bool IsSame(const RegExpFindResult& a, const RegExpFindResult& b) {
  return a.pointer == b.pointer && a.length == b.length;
}

// The pattern's block is gone when its object is searched with.
Block<RegExpState> Compile(const std::string& text, const std::string& options) {
  const Block<uint8_t> pattern = MakeBlock<uint8_t>(text.size() + 1);
  std::copy_n(text.c_str(), text.size() + 1, pattern.get());
  int32_t size = 0;
  int32_t offset = 0;
  veksRegExpGetSize(pattern.get(), &size);
  Block<RegExpState> state = MakeBlock<RegExpState>(static_cast<size_t>(size));
  if (veksRegExpInit(pattern.get(), reinterpret_cast<const uint8_t*>(options.c_str()), state.get(),
                     &offset) != StatusNoError) {
    state.reset();
  }
  return state;
}

void CompareSearches(RegExpState* state, const std::string& text, int32_t room) {
  const auto length = static_cast<int32_t>(text.size());
  const Block<uint8_t> subject = MakeBlock<uint8_t>(text.size() + 1);
  uint8_t* const bytes = subject.get() + 1;  // a length of 0 has an address as well
  std::copy_n(text.data(), text.size(), bytes);
  const SearchAnswer expected = test::AnswerOfModel(*state, bytes, length, room, kMostSteps);
  if (!expected.isComplete) {
    return;
  }
  const Block<RegExpFindResult> results =
      MakeBlock<RegExpFindResult>(static_cast<size_t>(room) * sizeof(RegExpFindResult));
  // The first searches are the exact matcher's, the last one is the fast matcher's.
  for (int32_t use = 0; use < 6; ++use) {
    int32_t count = room;
    const vekStatus status = veksRegExpFind_8u(bytes, length, state, results.get(), &count);
    if (status != expected.status || count != expected.count ||
        !std::equal(expected.results.begin(), expected.results.end(), results.get(), IsSame)) {
      std::fprintf(stderr, "use %d: status %d, not %d; %d results, not %d\n", use, status,
                   expected.status, count, expected.count);
      std::abort();
    }
  }
}

void TryInput(const uint8_t* data, size_t size) {
  if (size < kHead) {
    return;
  }
  const std::string rest(reinterpret_cast<const char*>(data + kHead), size - kHead);
  const size_t patternSize = std::min<size_t>(data[5], rest.size());
  const std::string pattern = rest.substr(0, std::min(rest.find('\0'), patternSize));
  const Block<RegExpState> state = Compile(pattern, OptionLetters(data[0]));
  if (state != nullptr) {
    veksRegExpSetFormat(data[1] & 1, state.get());
    const int32_t limit = data[3] + 256 * (data[4] & 3);
    veksRegExpSetMatchLimit((data[1] & 2) != 0 ? limit : 10000, state.get());
    CompareSearches(state.get(), rest.substr(patternSize, kMostSubject), 1 + data[2] % 40);
  }
}

}  // namespace
}  // namespace vekch::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  vekch::fuzz::TryInput(data, size);
  return 0;
}
