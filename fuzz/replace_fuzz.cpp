// SPDX-License-Identifier: MIT

// Reads any bytes as a template and replaces by it what any pattern matches: items, results,
// lengths and what is written after them must be as the models have them.
//
// An input's head is options, format, room, the match limit in two bytes and the capacity; its
// strings are the pattern, the template and the subject.

#include "fuzz/pattern_mutator.h"
#include "fuzz/search_check.h"
#include "tests/match_model.h"
#include "tests/replacement_model.h"

namespace vekch::fuzz {

const size_t kPatternsOfInput = 1;

namespace {

using Items = std::vector<test::TemplateItem>;

bool IsSame(const ReplaceItem& item, const test::TemplateItem& expected) {
  return expected.text.empty()
             ? item.kind == ReplaceGroup && item.value == expected.group
             : item.kind == ReplaceLiteral && item.value == expected.text.size() &&
                   std::memcmp(item.pointer, expected.text.data(), item.value) == 0;
}

// Null if the template is refused, and then it must be one that the model refuses.
Block<RegExpReplaceState> ReadInto(const uint8_t* text, const std::optional<Items>& expected) {
  int32_t size = 0;
  veksRegExpReplaceGetSize(text, &size);
  Block<RegExpReplaceState> state = MakeBlock<RegExpReplaceState>(static_cast<size_t>(size));
  const bool isRead = veksRegExpReplaceInit(text, state.get()) == StatusNoError;
  Require(isRead == expected.has_value(), "the template's status");
  if (!isRead) {
    state.reset();
    return state;
  }
  Require(std::equal(state->items, state->items + state->itemCount, expected->begin(),
                     expected->end(), IsSame),
          "the template's items");
  return state;
}

// Replaces with blocks of just the size that the model writes to.
void CompareReplacements(RegExpState* state, const RegExpReplaceState& replaceState,
                         const Items& items, const std::string& text, int32_t room,
                         size_t capacity) {
  const Block<uint8_t> subject = MakeText(text, false);
  const auto length = static_cast<int32_t>(text.size());
  const test::SearchAnswer found = test::AnswerOfModel(*state, subject.get(), length, room,
                                                       kMostSteps, test::Slots::kWholeMatchesToo);
  if (!found.isComplete) {
    return;
  }
  const test::Replacement expected =
      test::ReplaceByModel(*state, found, text, subject.get(), items, capacity);
  const size_t touched = std::max(expected.written.size(), capacity);
  const Block<uint8_t> to = MakeBlock<uint8_t>(touched);
  const Block<RegExpFindResult> results =
      MakeBlock<RegExpFindResult>(static_cast<size_t>(room) * sizeof(RegExpFindResult));
  int32_t sourceLength = length;
  auto written = static_cast<int32_t>(capacity);
  int32_t count = room;
  Require(veksRegExpReplace_8u(subject.get(), &sourceLength, to.get(), &written, results.get(),
                               &count, state, &replaceState) == found.status,
          "the status");
  Require(found.status < 0 || count == static_cast<int32_t>(found.results.size()), "the count");
  Require(static_cast<size_t>(sourceLength) == expected.sourceLength &&
              static_cast<size_t>(written) == expected.length,
          "the lengths");
  const std::string rest(touched - expected.written.size(), static_cast<char>(kUnwritten));
  Require(std::memcmp(to.get(), (expected.written + rest).data(), touched) == 0, "the result");
}

void TryInput(const uint8_t* data, size_t size) {
  Input input(data, size);
  const std::string pattern = input.Next();
  const std::string replacement = input.Next();
  const std::string subject = input.Rest(kMostSubject);
  const Block<uint8_t> text = MakeText(replacement, true);
  const auto items = test::ReadTemplate(replacement);
  const Block<RegExpReplaceState> replaceState = ReadInto(text.get(), items);
  const Block<RegExpState> state = Compile(pattern, OptionLetters(input.Head(0)));
  if (replaceState == nullptr || state == nullptr || subject.empty()) {
    return;
  }
  veksRegExpSetFormat(1 - (input.Head(1) & 1), state.get());
  if ((input.Head(1) & 2) != 0) {
    veksRegExpSetMatchLimit(input.Head(3) + 256 * (input.Head(4) & 3), state.get());
  }
  for (const size_t capacity : {size_t{1} + input.Head(5), subject.size() + 1, size_t{1} << 12}) {
    CompareReplacements(state.get(), *replaceState, *items, subject, 1 + input.Head(2) % 40,
                        capacity);
  }
}

}  // namespace
}  // namespace vekch::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  vekch::fuzz::TryInput(data, size);
  return 0;
}
