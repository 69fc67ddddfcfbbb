// SPDX-License-Identifier: MIT

// Replacing: what templates are read as, from a table; then every pattern, subject, template,
// capacity and number of elements of a small world beside a model of the result. The model knows of
// matches what searching for the pattern in one group more reports.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "tests/guarded_buffer.h"
#include "vekch/regexp_program.h"
#include "vekch/vekch.h"

namespace vekch::test {
namespace {

constexpr uint8_t kUnwritten = 0xEE;

const uint8_t* Bytes(const char* text) { return reinterpret_cast<const uint8_t*>(text); }

std::string Read(const uint8_t* p, size_t length) {
  return {reinterpret_cast<const char*>(p), length};
}

// ---- Templates.

struct Template {
  const char* text;
  const char* items;  // literal text and "<group>", with "|" between; null if it is refused
};

const Template kTemplates[] = {
    {"", ""},
    {"x", "x"},
    {"$&", "<0>"},
    {"a$&b", "a|<0>|b"},
    {"$1", "<1>"},
    {"$2$1", "<2>|<1>"},
    {"<$1>=$2;", "<|<1>|>=|<2>|;"},
    {"$1&", "<1>|&"},
    {"$9$&", "<9>|<0>"},
    {"$01", "<1>"},
    // Digits behind the first count by 11.
    {"$10", "<11>"},
    {"$12", "<13>"},
    {"$100", "<121>"},
    {"$999999999", "<2122152921>"},  // as far as no step passes 2^32
    // The backslash vanishes and hides nothing.
    {"\\", ""},
    {"\\\\", ""},
    {"\\$1", "<1>"},
    {"a\\b", "a|b"},
    {"a\\\\$&\\", "a|<0>"},
    {"$1\\0", "<1>|0"},
    {"\\&", "&"},
    // What a "$" may not have behind it.
    {"$", nullptr},
    {"a$", nullptr},
    {"$x", nullptr},
    {"$0", nullptr},
    {"$00", nullptr},
    {"$&$", nullptr},
    {"$$", nullptr},
    {"$\\1", nullptr},
    {"$ 1", nullptr},
};

struct FreeBlock {
  void operator()(void* block) const { std::free(block); }
};
using ReplaceStatePointer = std::unique_ptr<RegExpReplaceState, FreeBlock>;

// A block of just the size that a template asks for.
ReplaceStatePointer NewReplaceState(const char* text) {
  int32_t size = -1;
  EXPECT_EQ(veksRegExpReplaceGetSize(Bytes(text), &size), StatusNoError);
  EXPECT_EQ(size, 16 + 16 * static_cast<int32_t>(std::strlen(text)));
  auto* block = static_cast<uint8_t*>(std::malloc(static_cast<size_t>(size)));
  std::memset(block, kUnwritten, static_cast<size_t>(size));
  return ReplaceStatePointer(reinterpret_cast<RegExpReplaceState*>(block));
}

std::string Show(const RegExpReplaceState& state) {
  std::string shown;
  for (const ReplaceItem* item = state.items; item != state.items + state.itemCount; ++item) {
    shown += shown.empty() ? "" : "|";
    shown += item->kind == ReplaceLiteral ? Read(item->pointer, item->value)
             : item->kind == ReplaceGroup ? "<" + std::to_string(item->value) + ">"
                                          : "?";
  }
  return shown;
}

TEST(ReplacementTest, TemplatesAreReadAsItems) {
  for (const Template& one : kTemplates) {
    SCOPED_TRACE(one.text);
    const ReplaceStatePointer state = NewReplaceState(one.text);
    const vekStatus status = veksRegExpReplaceInit(Bytes(one.text), state.get());
    const uint32_t untouched = 0x01010101u * kUnwritten;
    EXPECT_EQ(state->unused, untouched);
    if (one.items == nullptr) {
      EXPECT_EQ(status, StatusRegExpFormatError);
      EXPECT_EQ(state->itemCount, untouched);
    } else {
      ASSERT_EQ(status, StatusNoError);
      EXPECT_EQ(state->items, reinterpret_cast<ReplaceItem*>(state.get() + 1));
      EXPECT_EQ(Show(*state), one.items);
    }
  }
}

TEST(ReplacementTest, NullIsAnEmptyTemplateButNoObject) {
  int32_t size = 7;
  EXPECT_EQ(veksRegExpReplaceGetSize(nullptr, nullptr), StatusNullPointer);
  EXPECT_EQ(veksRegExpReplaceGetSize(nullptr, &size), StatusNoError);
  EXPECT_EQ(size, 16);
  EXPECT_EQ(veksRegExpReplaceInit(Bytes("$"), nullptr), StatusNullPointer);
  const ReplaceStatePointer state = NewReplaceState("");
  EXPECT_EQ(veksRegExpReplaceInit(nullptr, state.get()), StatusNoError);
  EXPECT_EQ(state->items, nullptr);
  EXPECT_EQ(state->itemCount, 0u);
}

// ---- Replacing.

using StatePointer = std::unique_ptr<RegExpState, FreeBlock>;

StatePointer Compile(const std::string& pattern, const char* options) {
  int32_t size = 0;
  int32_t errorOffset = 0;
  EXPECT_EQ(veksRegExpGetSize(Bytes(pattern.c_str()), &size), StatusNoError);
  StatePointer state(static_cast<RegExpState*>(std::malloc(static_cast<size_t>(size))));
  EXPECT_EQ(veksRegExpInit(Bytes(pattern.c_str()), Bytes(options), state.get(), &errorOffset),
            StatusNoError);
  return state;
}

// What a group captured: nothing, or where and how much.
struct Capture {
  size_t start = 0;
  std::string text;
};

// Each match of a pattern as its whole and its groups: what the groups of "(pattern)" capture.
struct Matches {
  Matches(const std::string& pattern, const char* options, const std::string& subject) {
    const StatePointer state = Compile("(" + pattern + ")", options);
    std::array<RegExpFindResult, 64> found;
    auto count = static_cast<int32_t>(found.size());
    EXPECT_EQ(veksRegExpFind_8u(Bytes(subject.data()), static_cast<int32_t>(subject.size()),
                                state.get(), found.data(), &count),
              StatusNoError);
    for (int32_t i = *options == 'g' ? 0 : 1; i < count; ++i) {
      const RegExpFindResult& one = found[static_cast<size_t>(i)];
      slots.push_back(one.pointer == nullptr
                          ? Capture{}
                          : Capture{static_cast<size_t>(one.pointer - Bytes(subject.data())),
                                    Read(one.pointer, static_cast<size_t>(one.length))});
    }
    perMatch = static_cast<size_t>(state->captureCount) - 1;
  }

  std::vector<Capture> slots;
  size_t perMatch;
};

// One piece of a result and what becomes of the result where the piece does not fit.
struct Piece {
  std::string text;
  size_t uncounted;  // bytes before it that its test leaves out
  size_t sourceLength;
  size_t length;
};

struct Outcome {
  std::string written;  // also behind the result
  size_t sourceLength;
  size_t length;
};

std::vector<std::string> ItemsOf(const Template& one) {
  std::vector<std::string> items;
  std::string rest = one.items;
  for (size_t bar; (bar = rest.find('|')) != std::string::npos; rest.erase(0, bar + 1)) {
    items.push_back(rest.substr(0, bar));
  }
  if (!rest.empty()) {
    items.push_back(rest);
  }
  return items;
}

std::string TextOf(const std::string& item, const Capture* match, size_t slotCount) {
  if (item.size() < 3 || item.front() != '<' || item.back() != '>') {
    return item;
  }
  const size_t group = std::stoul(item.substr(1));
  return group < slotCount ? match[group].text : "";
}

Outcome Model(const std::string& subject, const Matches& matches, size_t room, bool all,
              const Template& replacement, size_t capacity) {
  const size_t slotCount = std::min(matches.slots.size(), room);
  if (slotCount == 0) {
    const size_t copied = std::min(subject.size(), capacity);
    return {subject.substr(0, copied), copied, copied};
  }
  const std::vector<std::string> items = ItemsOf(replacement);
  std::vector<Piece> pieces;
  size_t source = 0;
  size_t length = 0;  // of the pieces
  for (size_t first = 0; first < slotCount; first += matches.perMatch) {
    const Capture* match = &matches.slots[first];
    const std::string gap = subject.substr(source, match->start - source);
    pieces.push_back({gap, 0, source, length});
    length += gap.size();
    const size_t gapEnd = length;
    if (!all && items.empty()) {
      if (gapEnd >= capacity) {
        return {"", 0, 0};
      }
      const std::string rest = subject.substr(match->start + match->text.size());
      return {gap + rest, subject.size(), gapEnd};
    }
    for (const std::string& item : items) {
      const size_t known = std::min(matches.perMatch, slotCount - first);
      pieces.push_back({TextOf(item, match, known), all ? 0 : gapEnd, match->start, gapEnd});
      length += pieces.back().text.size();
    }
    source = match->start + match->text.size();
  }
  pieces.push_back({subject.substr(source), 0, source, length});
  std::string written;
  for (const Piece& piece : pieces) {
    if (written.size() + piece.text.size() >= capacity + piece.uncounted) {
      return {written, piece.sourceLength, piece.length};
    }
    written += piece.text;
  }
  return {written, subject.size(), written.size()};
}

class ReplaceTest : public testing::Test {
 protected:
  // Runs one replacement with the subject and the destination against pages that can't be touched.
  void Check(const std::string& subject, const Matches& matches, RegExpState* pattern,
             const RegExpReplaceState* replaceState, const Template& replacement, size_t room,
             size_t capacity) {
    const bool all = (pattern->compileFlags & RegExpOptionG) != 0;
    const Outcome expected = Model(subject, matches, room, all, replacement, capacity);
    const size_t slotCount = std::min(matches.slots.size(), room);
    uint8_t* source = source_.AtEnd(subject.size());
    std::memcpy(source, subject.data(), subject.size());
    const size_t touched = std::max(expected.written.size(), capacity);
    uint8_t* destination = destination_.AtEnd(touched);
    std::memset(destination, kUnwritten, touched);
    auto sourceLength = static_cast<int32_t>(subject.size());
    auto length = static_cast<int32_t>(capacity);
    auto count = static_cast<int32_t>(room);
    auto* results =
        reinterpret_cast<RegExpFindResult*>(results_.AtEnd(room * sizeof(RegExpFindResult)));
    const vekStatus status = veksRegExpReplace_8u(source, &sourceLength, destination, &length,
                                                  results, &count, pattern, replaceState);
    ASSERT_EQ(status, slotCount > 0 && slotCount < matches.perMatch ? StatusRegExpResultsTruncated
                                                                    : StatusNoError);
    ASSERT_EQ(static_cast<size_t>(count), slotCount);
    ASSERT_EQ(static_cast<size_t>(sourceLength), expected.sourceLength);
    ASSERT_EQ(static_cast<size_t>(length), expected.length);
    std::string unwritten(touched - expected.written.size(), static_cast<char>(kUnwritten));
    ASSERT_EQ(Read(destination, touched), expected.written + unwritten);
  }

  void Sweep(const std::string& pattern, const char* options, const std::string& subject,
             size_t longest, size_t step = 1) {
    const Matches matches(pattern, options, subject);
    const StatePointer state = Compile(pattern, options);
    for (const Template& one : kTemplates) {
      if (one.items == nullptr) {
        continue;
      }
      const ReplaceStatePointer replaceState = NewReplaceState(one.text);
      ASSERT_EQ(veksRegExpReplaceInit(Bytes(one.text), replaceState.get()), StatusNoError);
      for (const size_t room : {size_t{1}, size_t{2}, size_t{64}}) {
        for (size_t capacity = 1; capacity <= longest; capacity += step) {
          ASSERT_NO_FATAL_FAILURE(
              Check(subject, matches, state.get(), replaceState.get(), one, room, capacity))
              << '"' << pattern << "\" " << options << " in \"" << subject << "\" by \"" << one.text
              << "\", room " << room << ", capacity " << capacity;
        }
      }
    }
  }

  GuardedBuffer source_{4096};
  GuardedBuffer destination_{65536};
  GuardedBuffer results_{4096};
};

TEST_F(ReplaceTest, SmallWorldAgreesWithTheModel) {
  std::vector<std::string> subjects = {"a", "b"};
  for (size_t i = 0; subjects[i].size() < 4; ++i) {
    subjects.push_back(subjects[i] + 'a');
    subjects.push_back(subjects[i] + 'b');
  }
  for (const char* pattern : {"a", "b+", "a*", "(a*?)", "(a)(b)?", "a|b", "(a)|(b)", "(?:a|(b))b",
                              "^a", "b$", "", "c", "\\b", "(a(b*))+"}) {
    for (const std::string& subject : subjects) {
      for (const char* options : {"", "g"}) {
        ASSERT_NO_FATAL_FAILURE(Sweep(pattern, options, subject, 14));
      }
    }
  }
}

// Long enough for each way to copy.
TEST_F(ReplaceTest, LongPiecesAgreeWithTheModel) {
  std::string subject(700, 'x');
  for (const size_t at : std::array<size_t, 5>{0, 40, 41, 200, 690}) {
    subject.replace(at, 3, "a-a");
  }
  for (const char* pattern : {"(a)-(a)", "x{60}(x+)", "-ax(x{127,})"}) {
    ASSERT_NO_FATAL_FAILURE(Sweep(pattern, "", subject, 1500, 23));
    ASSERT_NO_FATAL_FAILURE(Sweep(pattern, "g", subject, 1500, 23));
  }
}

// The rest of the source is copied behind a capacity that it passes by far, and not counted.
TEST_F(ReplaceTest, EmptyTemplateCopiesTheRestUnchecked) {
  const std::string subject = "ab" + std::string(3000, 'x');
  const ReplaceStatePointer nothing = NewReplaceState("");
  ASSERT_EQ(veksRegExpReplaceInit(nullptr, nothing.get()), StatusNoError);
  const StatePointer state = Compile("b", "");
  const Matches matches("b", "", subject);
  Check(subject, matches, state.get(), nothing.get(), {"", ""}, 1, 2);
  EXPECT_EQ(destination_.AtEnd(0)[-1], 'x');
}

// A match may be reported longer than it is, and longer than the source.
TEST_F(ReplaceTest, MatchesEndWithTheSource) {
  const ReplaceStatePointer replaceState = NewReplaceState("[$&$1]");
  ASSERT_EQ(veksRegExpReplaceInit(Bytes("[$&$1]"), replaceState.get()), StatusNoError);
  for (const char* options : {"", "g"}) {
    const StatePointer state = Compile("(\\x{E9})", options);
    uint8_t* source = source_.AtEnd(1);
    *source = 0xE9;
    int32_t sourceLength = 1;
    int32_t length = 5;
    int32_t count = 2;
    std::array<RegExpFindResult, 2> results;
    uint8_t* destination = destination_.AtEnd(5);
    EXPECT_EQ(veksRegExpReplace_8u(source, &sourceLength, destination, &length, results.data(),
                                   &count, state.get(), replaceState.get()),
              StatusNoError);
    EXPECT_EQ(results[0].length, 2);
    EXPECT_EQ(sourceLength, 1);
    EXPECT_EQ(Read(destination, static_cast<size_t>(length)), "[\xE9\xE9]");
  }
}

// What the search reports comes through, with the source copied as for no match.
TEST_F(ReplaceTest, FailedSearchesCopyTheSource) {
  const StatePointer state = Compile("(?:a|b)*c", "");
  const ReplaceStatePointer replaceState = NewReplaceState("x");
  ASSERT_EQ(veksRegExpReplaceInit(Bytes("x"), replaceState.get()), StatusNoError);
  const struct {
    int32_t capacity, room;
    bool compiled;
    int32_t matchLimit;
    vekStatus status;
    int32_t count;
  } rows[] = {
      {4, 0, false, 0, StatusSizeError, 0},   {3, -1, true, 0, StatusSizeError, -1},
      {9, 1, false, 0, StatusRegExpError, 1}, {3, 1, true, 0, StatusRegExpMatchLimit, 0},
      {4, 1, true, 10000, StatusNoError, 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    state->regExpTag = row.compiled ? RegExpTag : 0;
    state->matchLimit = row.matchLimit;
    int32_t sourceLength = 4;
    int32_t length = row.capacity;
    int32_t count = row.room;
    RegExpFindResult result;
    const int32_t copied = std::min(row.capacity, 4);
    uint8_t* destination = destination_.AtEnd(static_cast<size_t>(copied));
    EXPECT_EQ(veksRegExpReplace_8u(Bytes("abab"), &sourceLength, destination, &length, &result,
                                   &count, state.get(), replaceState.get()),
              row.status);
    EXPECT_EQ(sourceLength, copied);
    EXPECT_EQ(Read(destination, static_cast<size_t>(length)),
              std::string("abab").substr(0, static_cast<size_t>(copied)));
    EXPECT_EQ(count, row.count);
  }
}

}  // namespace
}  // namespace vekch::test
