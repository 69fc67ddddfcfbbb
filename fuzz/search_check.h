// SPDX-License-Identifier: MIT

// Searches held against the model, in blocks of just the size that they need.

#ifndef VEKCH_FUZZ_SEARCH_CHECK_H
#define VEKCH_FUZZ_SEARCH_CHECK_H

#include "fuzz/fuzz_input.h"
#include "tests/match_model.h"

namespace vekch::fuzz {

constexpr size_t kMostSubject = 64;
constexpr int64_t kMostSteps = 200000;  // larger searches show no more

// Searches so often, with an object whose searches are as the model's for `program`. Returns false
// if the model gave the search up.
inline bool CompareSearches(RegExpState* state, const RegExpState& program, const std::string& text,
                            int32_t room, int searches) {
  // A subject of length 0 has an address as well.
  const Block<uint8_t> subject = MakeText("-" + text, false);
  const uint8_t* const bytes = subject.get() + 1;
  const auto length = static_cast<int32_t>(text.size());
  const test::SearchAnswer expected = test::AnswerOfModel(program, bytes, length, room, kMostSteps);
  if (!expected.isComplete) {
    return false;
  }
  const Block<RegExpFindResult> results =
      MakeBlock<RegExpFindResult>(static_cast<size_t>(room) * sizeof(RegExpFindResult));
  const auto* const records = reinterpret_cast<const char*>(state + 1);
  const std::string compiled(records, static_cast<size_t>(state->nodeCount) * sizeof(ProgramNode));
  for (int search = 0; search < searches; ++search) {
    int32_t count = room;
    const vekStatus status = veksRegExpFind_8u(bytes, length, state, results.get(), &count);
    Require(status == expected.status && count == expected.count &&
                std::equal(expected.results.begin(), expected.results.end(), results.get()),
            "search " + std::to_string(search) + " with limit " +
                std::to_string(state->matchLimit) + ": status " + std::to_string(status) +
                ", not " + std::to_string(expected.status) + "; " + std::to_string(count) +
                " results, not " + std::to_string(expected.count));
  }
  Require(compiled.compare(0, compiled.size(), records, compiled.size()) == 0,
          "searches leave the program as it was compiled");
  return true;
}

}  // namespace vekch::fuzz

#endif
