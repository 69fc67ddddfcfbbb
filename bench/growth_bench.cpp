// SPDX-License-Identifier: MIT

// Growth: patterns that can share out the same bytes in many ways, on texts that they fail in, so
// that an engine which tries all ways takes twice as long for each byte.
//
// Every engine keeps the limits that it comes with. A peer that ends with its limit's error has no
// answer: its time is that of giving up, under a name that says so, and longer texts are spared
// it.

#include <stdlib.h>

#include <memory>
#include <string>
#include <string_view>

#include "bench/engines.h"
#include "bench/ratios.h"
#include "vekch/vekch.h"

namespace vekch_bench {
namespace {

constexpr Pattern kGrowing[] = {
    {"(a+)+[bc]", "(a+)+[bc]", "", Needs::kNothing, "A loop in a loop."},
    {"(a|a)*[bc]", "(a|a)*[bc]", "", Needs::kNothing, "Two ways for each byte."},
    {"(a|aa)+$", "(a|aa)+$", "", Needs::kNothing, "One byte or two."},
    {"(\\w+\\s?)*$", "(\\w+\\s?)*$", "", Needs::kNothing, "Words, where a space may be missing."},
    {"(a*)*[bc]", "(a*)*[bc]", "", Needs::kNothing, "Loops that may take nothing."},
    {"(?:(?:a+)+)+[bc]", "(?:(?:a+)+)+[bc]", "", Needs::kNothing, "Three loops."},
    {"^(([a-z])+.)+[A-Z]([a-z])+$", "^(([a-z])+.)+[A-Z]([a-z])+$", "", Needs::kNothing,
     "A class name, as a well-known library of patterns has it."},
};

constexpr size_t kLengths[] = {25, 50, 100, 200, 400};

constexpr int64_t kNowhere = -1;
constexpr int64_t kGaveUp = -2;

// Each search answers with where the first match begins.

class OurSearch {
 public:
  explicit OurSearch(const Pattern& pattern) {
    const auto* text = reinterpret_cast<const uint8_t*>(pattern.text);
    int32_t size;
    int32_t errorOffset;
    veksRegExpGetSize(text, &size);
    state_.reset(static_cast<RegExpState*>(malloc(static_cast<size_t>(size))));
    veksRegExpInit(text, nullptr, state_.get(), &errorOffset);
  }

  int64_t Answer(std::string_view text) const {
    RegExpFindResult results[kMostResults];
    int32_t count = kMostResults;
    const auto* subject = reinterpret_cast<const uint8_t*>(text.data());
    const vekStatus status = veksRegExpFind_8u(subject, static_cast<int32_t>(text.size()),
                                               state_.get(), results, &count);
    return status != StatusNoError ? kGaveUp : count == 0 ? kNowhere : results[0].pointer - subject;
  }

 private:
  static constexpr int32_t kMostResults = 10;
  struct Free {
    void operator()(void* block) const { free(block); }
  };
  std::unique_ptr<RegExpState, Free> state_;
};

int64_t AnswerOf(const Pcre2Search& search, std::string_view text) {
  Span found;
  const int status = search.Match(text, 0, &found);
  return status > 0                      ? static_cast<int64_t>(found.start)
         : status == PCRE2_ERROR_NOMATCH ? kNowhere
                                         : kGaveUp;
}

int64_t AnswerOf(const Re2Search& search, std::string_view text) {
  Span found;
  return search.Find(text, 0, &found) ? static_cast<int64_t>(found.start) : kNowhere;
}

void RunPattern(const Pattern& pattern) {
  const OurSearch ours(pattern);
  const Pcre2Search interpreter(pattern, false);
  const Pcre2Search jit(pattern, true);
  const Re2Search re2(pattern);
  struct Limited {
    const char* name;
    const Pcre2Search& search;
    bool hasGivenUp;
  };
  Limited limited[] = {{"pcre2", interpreter, false}, {"pcre2 jit", jit, false}};
  for (const size_t length : kLengths) {
    const std::string text = std::string(length - 1, 'a') + "!";
    const int64_t expected = ours.Answer(text);
    Case task("growth", pattern.name, static_cast<int64_t>(length));
    task.Ours([&] { return ours.Answer(text); }).Peer("re2", [&] { return AnswerOf(re2, text); });
    for (Limited& peer : limited) {
      if (peer.hasGivenUp) {
        continue;
      }
      peer.hasGivenUp = AnswerOf(peer.search, text) == kGaveUp;
      const auto search = [&] { return AnswerOf(peer.search, text); };
      if (peer.hasGivenUp) {
        task.Peer(std::string(peer.name) + " (limit)", search, [=] { return expected; });
      } else {
        task.Peer(peer.name, search);
      }
    }
    task.Run();
  }
}

const Family kGrowth([] {
  for (const Pattern& pattern : kGrowing) {
    RunPattern(pattern);
  }
});

}  // namespace
}  // namespace vekch_bench
