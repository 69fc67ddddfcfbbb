// SPDX-License-Identifier: MIT

// Searching with patterns beside other engines: every match in a text of 4 MB, and the first match
// in each of many short lines, where what a call costs by itself counts. Every match in shorter
// texts of other kinds, and replacing all of them, beside fewer engines.
//
// The texts are what scripts/fetch-texts makes of Debian packages; without them nothing is
// measured. Answers are numbers of matches, or stand for what was written. Our search collects all
// matches of a text in one call; the peers are called once for each match, as they offer nothing
// else, but for replacing.

#include <stdio.h>
#include <stdlib.h>

#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "bench/engines.h"
#include "bench/ratios.h"
#include "vekch/regexp_program.h"
#include "vekch/vekch.h"

namespace vekch_bench {
namespace {

constexpr size_t kShortest = 20;
constexpr size_t kLongest = 80;
constexpr size_t kLineCount = 2000;
constexpr size_t kMostResults = 1 << 20;
constexpr size_t kTextBytes = 256 << 10;  // of a text of another kind

// Ours, with the same Find as the peers', and with option g another that finds all at once.
class OurSearch {
 public:
  OurSearch(const Pattern& pattern, bool all) {
    const auto* text = reinterpret_cast<const uint8_t*>(pattern.text);
    int32_t size;
    int32_t errorOffset;
    veksRegExpGetSize(text, &size);
    state_.reset(static_cast<RegExpState*>(malloc(static_cast<size_t>(size))));
    const std::string options = std::string(pattern.options) + (all ? "g" : "");
    veksRegExpInit(text, reinterpret_cast<const uint8_t*>(options.c_str()), state_.get(),
                   &errorOffset);
    results_.resize(all ? kMostResults : static_cast<size_t>(state_->captureCount));
  }

  // A search sees no more than it is given: only a whole text is searched.
  bool Find(std::string_view text, size_t, Span* found) {
    auto count = static_cast<int32_t>(results_.size());
    if (Search(text, &count) != StatusNoError || count == 0) {
      return false;
    }
    const size_t start =
        static_cast<size_t>(reinterpret_cast<const char*>(results_[0].pointer) - text.data());
    *found = {start, start + static_cast<size_t>(results_[0].length)};
    return true;
  }

  // Elements are reported for the groups, or for the match where there are none.
  int64_t CountAll(std::string_view text) {
    auto count = static_cast<int32_t>(results_.size());
    const vekStatus status = Search(text, &count);
    const int32_t groups = state_->captureCount - 1;
    return status != StatusNoError ? status : groups > 0 ? count / groups : count;
  }

  int64_t ReplaceAll(std::string_view text, const RegExpReplaceState* replacement, uint8_t* room,
                     size_t size) {
    auto length = static_cast<int32_t>(text.size());
    auto written = static_cast<int32_t>(size);
    auto count = static_cast<int32_t>(results_.size());
    const vekStatus status =
        veksRegExpReplace_8u(reinterpret_cast<const uint8_t*>(text.data()), &length, room, &written,
                             results_.data(), &count, state_.get(), replacement);
    return status != StatusNoError ? status : written;
  }

 private:
  struct Free {
    void operator()(void* block) const { free(block); }
  };

  vekStatus Search(std::string_view text, int32_t* count) {
    return veksRegExpFind_8u(reinterpret_cast<const uint8_t*>(text.data()),
                             static_cast<int32_t>(text.size()), state_.get(), results_.data(),
                             count);
  }

  std::unique_ptr<RegExpState, Free> state_;
  std::vector<RegExpFindResult> results_;
};

int64_t CountAll(OurSearch& search, std::string_view text) { return search.CountAll(text); }

template <class Search>
int64_t CountAll(Search& search, std::string_view text) {
  int64_t count = 0;
  Span found;
  for (size_t at = 0; at <= text.size() && search.Find(text, at, &found); ++count) {
    at = found.end > found.start ? found.end : found.end + 1;
  }
  return count;
}

template <class Search>
int64_t CountLines(Search& search, const std::vector<std::string_view>& lines) {
  int64_t count = 0;
  Span found;
  for (const std::string_view line : lines) {
    count += search.Find(line, 0, &found);
  }
  return count;
}

std::string ReadText(const std::string& name) {
  std::ifstream stream(VEKCH_BENCH_TEXTS "/" + name + ".txt", std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(stream), {});
}

// The text itself, and lines of it that lie evenly spread, without the newlines.
struct Texts {
  Texts() {
    all = ReadText("search");
    std::vector<std::string_view> fitting;
    const std::string_view text = all;
    for (size_t at = 0, end; (end = text.find('\n', at)) != text.npos; at = end + 1) {
      if (end - at >= kShortest && end - at <= kLongest) {
        fitting.push_back(text.substr(at, end - at));
      }
    }
    for (size_t i = 0; i < kLineCount && !fitting.empty(); ++i) {
      lines.push_back(fitting[i * fitting.size() / kLineCount]);
      lineBytes += static_cast<int64_t>(lines.back().size());
    }
  }

  std::string all;
  std::vector<std::string_view> lines;
  int64_t lineBytes = 0;
};

// `count` is given each contender's search and asks it for its answer.
template <class Count>
void RunPattern(const Pattern& pattern, const char* family, int64_t bytes, bool all, Count count,
                bool allPeers = true) {
  OurSearch ours(pattern, all);
  const Pcre2Search pcre2(pattern, false);
  const Pcre2Search pcre2Jit(pattern, true);
  const OnigurumaSearch oniguruma(pattern);
  Case task(family, pattern.name, bytes);
  task.Ours([&] { return count(ours); })
      .Peer("pcre2", [&] { return count(pcre2); })
      .Peer("pcre2 jit", [&] { return count(pcre2Jit); });
  if (allPeers) {
    task.Peer("oniguruma", [&] { return count(oniguruma); });
  }
  std::unique_ptr<const Re2Search> re2;
  if (pattern.needs != Needs::kBacktracking) {
    re2 = std::make_unique<const Re2Search>(pattern);
    task.Peer("re2", [&] { return count(*re2); });
  }
  std::unique_ptr<BoostSearch> boost;
  if (allPeers && pattern.needs != Needs::kCategories) {  // not without ICU's strings
    boost = std::make_unique<BoostSearch>(pattern);
    task.Peer("boost", [&] { return count(*boost); });
  }
  task.Run();
}

const Family kSearch([] {
  OnigEncoding encoding = ONIG_ENCODING_UTF8;
  onig_initialize(&encoding, 1);
  const Texts texts;
  if (texts.all.empty()) {
    printf("\nsearch is left out: scripts/fetch-texts brings its text\n");
    return;
  }
  for (const Pattern& pattern : kPatterns) {
    RunPattern(pattern, "search", static_cast<int64_t>(texts.all.size()), true,
               [&](auto& search) { return CountAll(search, texts.all); });
  }
  for (const Pattern& pattern : kPatterns) {
    RunPattern(pattern, "search_lines", texts.lineBytes, false,
               [&](auto& search) { return CountLines(search, texts.lines); });
  }
});

// A call for each subject, as in a loop over fields.
void RunField(const Field& field, bool isWhole) {
  const std::string text = isWhole ? "^(?:" + std::string(field.text) + ")$" : field.text;
  const std::string name = std::string(field.name) + (isWhole ? ", whole" : "");
  const Pattern pattern = {name.c_str(), text.c_str(), "", Needs::kNothing, ""};
  std::vector<std::string_view> subjects(std::begin(field.subjects), std::end(field.subjects));
  int64_t bytes = 0;
  for (const std::string_view subject : subjects) {
    bytes += static_cast<int64_t>(subject.size());
  }
  RunPattern(pattern, "search_fields", bytes, false,
             [&](auto& search) { return CountLines(search, subjects); });
}

const Family kFieldSearch([] {
  for (const Field& field : kFields) {
    RunField(field, false);
    RunField(field, true);
  }
});

const Family kTextSearch([] {
  for (const TextPattern& each : kTextPatterns) {
    const std::string text = ReadText(each.text).substr(0, kTextBytes);
    RunPattern(
        each.pattern, "search_texts", static_cast<int64_t>(text.size()), true,
        [&](auto& search) { return CountAll(search, text); }, false);
  }
});

// ---- Replacing.

// Every contender writes to the same room, which has enough for all of them, and returns how much
// it wrote.
void RunReplacing(const Replacing& task, std::string_view text) {
  std::vector<uint8_t> room(4 * text.size());
  OurSearch ours(task.pattern, true);
  std::vector<uint64_t> block(1000);
  auto* const replacement = reinterpret_cast<RegExpReplaceState*>(block.data());
  veksRegExpReplaceInit(reinterpret_cast<const uint8_t*>(task.ours), replacement);
  const Pcre2Search pcre2(task.pattern, false);
  const Pcre2Search pcre2Jit(task.pattern, true);
  const Re2Search re2(task.pattern);
  const auto byPcre2 = [&](const Pcre2Search& search) {
    return search.ReplaceAll(text, task.pcre2, room.data(), room.size());
  };
  Case("replace_pattern", task.pattern.name, static_cast<int64_t>(text.size()))
      .Ours([&] { return ours.ReplaceAll(text, replacement, room.data(), room.size()); },
            [&] {
              return Digest(room.data(),
                            ours.ReplaceAll(text, replacement, room.data(), room.size()));
            })
      .Peer(
          "pcre2", [&] { return byPcre2(pcre2); },
          [&] { return Digest(room.data(), byPcre2(pcre2)); })
      .Peer(
          "pcre2 jit", [&] { return byPcre2(pcre2Jit); },
          [&] { return Digest(room.data(), byPcre2(pcre2Jit)); })
      .Peer(
          "re2", [&] { return static_cast<int64_t>(re2.ReplaceAll(text, task.re2).size()); },
          [&] {
            const std::string all = re2.ReplaceAll(text, task.re2);
            return Digest(all.data(), static_cast<int64_t>(all.size()));
          })
      .Run();
}

const Family kReplacePattern([] {
  for (const Replacing& task : kReplacing) {
    RunReplacing(task, ReadText(task.text).substr(0, kTextBytes));
  }
});

}  // namespace
}  // namespace vekch_bench
