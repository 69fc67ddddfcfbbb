// SPDX-License-Identifier: MIT

// Replacing: what templates are read as, from a table; then every pattern, subject, template,
// capacity and number of elements of a small world beside a model of the result.

#include <gtest/gtest.h>

#include <array>

#include "tests/match_model.h"
#include "tests/replacement_model.h"

namespace vekch::test {
namespace {

constexpr uint8_t kUnwritten = 0xEE;

std::string Read(const uint8_t* p, size_t length) {
  return {reinterpret_cast<const char*>(p), length};
}

// ---- Templates.

struct Template {
  const char* text;
  const char* items;  // literal text and "<group>", with "|" between
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
    // Digits after the first count by 11.
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
};

// What a "$" may not have after it.
const char* const kRefused[] = {"$", "a$", "$x", "$0", "$00", "$&$", "$$", "$\\1", "$ 1"};

// A template in a block of just the size that it asks for.
class ReplaceState {
 public:
  explicit ReplaceState(const char* text) {
    int32_t size = -1;
    EXPECT_EQ(veksRegExpReplaceGetSize(BytesOf(text_ = text), &size), StatusNoError);
    EXPECT_EQ(size, 16 + 16 * static_cast<int32_t>(text_.size()));
    uint8_t* const block = buffer_.AtEnd(static_cast<size_t>(size));
    std::memset(block, kUnwritten, static_cast<size_t>(size));
    state_ = reinterpret_cast<RegExpReplaceState*>(block);
    status = veksRegExpReplaceInit(BytesOf(text_), state_);
  }

  const RegExpReplaceState* operator->() const { return state_; }
  const RegExpReplaceState* Get() const { return state_; }

  vekStatus status;

 private:
  std::string text_;
  GuardedBuffer buffer_{4096};
  RegExpReplaceState* state_;
};

using Items = std::vector<TemplateItem>;

std::string Show(const Items& items) {
  std::string shown;
  for (const TemplateItem& item : items) {
    shown += shown.empty() ? "" : "|";
    shown += item.text.empty() ? "<" + std::to_string(item.group) + ">" : item.text;
  }
  return shown;
}

constexpr uint32_t kUntouched = 0x01010101u * kUnwritten;

TEST(ReplacementTest, TemplatesAreReadAsItems) {
  for (const Template& one : kTemplates) {
    SCOPED_TRACE(one.text);
    const ReplaceState state(one.text);
    const auto model = ReadTemplate(one.text);
    EXPECT_EQ(state->unused, kUntouched);
    ASSERT_EQ(state.status, StatusNoError);
    EXPECT_EQ(state->items, reinterpret_cast<const ReplaceItem*>(state.Get() + 1));
    Items items;
    for (const ReplaceItem* item = state->items; item != state->items + state->itemCount; ++item) {
      items.push_back(item->kind == ReplaceLiteral ? TemplateItem{Read(item->pointer, item->value)}
                                                   : TemplateItem{"", item->value});
    }
    EXPECT_EQ(Show(items), one.items);
    EXPECT_EQ(Show(*model), one.items);
  }
}

TEST(ReplacementTest, TemplatesAreRefused) {
  for (const char* text : kRefused) {
    const ReplaceState state(text);
    EXPECT_EQ(state.status, StatusRegExpFormatError) << text;
    EXPECT_TRUE(state->unused == kUntouched && state->itemCount == kUntouched) << text;
    EXPECT_FALSE(ReadTemplate(text)) << text;
  }
}

TEST(ReplacementTest, NullIsAnEmptyTemplateButNoObject) {
  int32_t size = 7;
  EXPECT_EQ(veksRegExpReplaceGetSize(nullptr, nullptr), StatusNullPointer);
  EXPECT_EQ(veksRegExpReplaceGetSize(nullptr, &size), StatusNoError);
  EXPECT_EQ(size, 16);
  EXPECT_EQ(veksRegExpReplaceInit(BytesOf("$"), nullptr), StatusNullPointer);
  RegExpReplaceState state = {};
  state.itemCount = 1;
  state.items = reinterpret_cast<ReplaceItem*>(&state);
  EXPECT_EQ(veksRegExpReplaceInit(nullptr, &state), StatusNoError);
  EXPECT_EQ(state.items, nullptr);
  EXPECT_EQ(state.itemCount, 0u);
}

// ---- Replacing.

class ReplaceTest : public testing::Test {
 protected:
  // The subject is put against a page that can't be touched, and searched by the model.
  void Place(const std::string& subject, const PatternObject& pattern, int32_t room) {
    subject_ = subject;
    room_ = room;
    source_ = sources_.AtEnd(subject.size());
    std::memcpy(source_, subject.data(), subject.size());
    found_ = AnswerOfModel(*pattern.State(), source_, static_cast<int32_t>(subject.size()), room,
                           INT64_MAX, Slots::kWholeMatchesToo);
  }

  // Runs one replacement with the destination against such a page.
  void Check(RegExpState* pattern, const ReplaceState& replaceState, const Items& items,
             size_t capacity) {
    const Replacement expected =
        ReplaceByModel(*pattern, found_, subject_, source_, items, capacity);
    const size_t touched = std::max(expected.written.size(), capacity);
    uint8_t* destination = destinations_.AtEnd(touched);
    std::memset(destination, kUnwritten, touched);
    auto sourceLength = static_cast<int32_t>(subject_.size());
    auto length = static_cast<int32_t>(capacity);
    int32_t count = room_;
    auto* results = reinterpret_cast<RegExpFindResult*>(
        results_.AtEnd(static_cast<size_t>(std::max(room_, 0)) * sizeof(RegExpFindResult)));
    ASSERT_EQ(veksRegExpReplace_8u(source_, &sourceLength, destination, &length, results, &count,
                                   pattern, replaceState.Get()),
              found_.status);
    ASSERT_EQ(count, found_.count);
    ASSERT_EQ(static_cast<size_t>(sourceLength), expected.sourceLength);
    ASSERT_EQ(static_cast<size_t>(length), expected.length);
    std::string unwritten(touched - expected.written.size(), static_cast<char>(kUnwritten));
    ASSERT_EQ(Read(destination, touched), expected.written + unwritten);
  }

  void Sweep(const std::string& pattern, const std::vector<std::string>& subjects, size_t longest,
             size_t step = 1, int32_t limit = kDefaultLimit) {
    for (const char* options : {"", "g"}) {
      const PatternObject object(pattern, options, 1, limit);
      for (const Template& one : kTemplates) {
        const ReplaceState replaceState(one.text);
        const Items items = *ReadTemplate(one.text);
        for (const std::string& subject : subjects) {
          for (const int32_t room : {1, 2, 64}) {
            Place(subject, object, room);
            for (size_t capacity = 1; capacity <= longest; capacity += step) {
              ASSERT_NO_FATAL_FAILURE(Check(object.State(), replaceState, items, capacity))
                  << '"' << pattern << "\" " << options << " in \"" << subject << "\" by \""
                  << one.text << "\", room " << room << ", capacity " << capacity;
            }
          }
        }
      }
    }
  }

  std::string subject_;
  uint8_t* source_ = nullptr;
  int32_t room_ = 0;
  SearchAnswer found_;
  GuardedBuffer sources_{4096};
  GuardedBuffer destinations_{65536};
  GuardedBuffer results_{4096};
};

TEST_F(ReplaceTest, SmallWorldAgreesWithTheModel) {
  Words subjects = AllTexts({"a", "b"}, 4);
  subjects.erase(subjects.begin());  // no source is empty
  for (const char* pattern : {"a", "b+", "a*", "(a*?)", "(a)(b)?", "a|b", "(a)|(b)", "(?:a|(b))b",
                              "^a", "b$", "", "c", "\\b", "(a(b*))+"}) {
    ASSERT_NO_FATAL_FAILURE(Sweep(pattern, subjects, 14));
  }
  // A match may be reported longer than it is, and longer than the source; and the limit may end
  // the search.
  ASSERT_NO_FATAL_FAILURE(Sweep("(\\x{E9})", {"\xE9", "a\xE9\xE9"}, 9));
  ASSERT_NO_FATAL_FAILURE(Sweep("(?:a|b)*c", {"abab"}, 9, 1, 0));
}

// Long enough for each way to copy.
TEST_F(ReplaceTest, LongPiecesAgreeWithTheModel) {
  std::string subject(700, 'x');
  for (const size_t at : std::array<size_t, 5>{0, 40, 41, 200, 690}) {
    subject.replace(at, 3, "a-a");
  }
  for (const char* pattern : {"(a)-(a)", "x{60}(x+)", "-ax(x{127,})", "([a-w]+)"}) {
    ASSERT_NO_FATAL_FAILURE(Sweep(pattern, {subject}, 1500, 23));
  }
  // The rest of the source is copied after a capacity that it passes by far, and not counted.
  const PatternObject pattern("b");
  Place("ab" + std::string(3000, 'x'), pattern, 1);
  Check(pattern.State(), ReplaceState(""), {}, 2);
  EXPECT_EQ(destinations_.AtEnd(0)[-1], 'x');
}

// What fails before the search copies the source as well.
TEST_F(ReplaceTest, FailedCallsCopyTheSource) {
  const struct {
    size_t capacity;
    int32_t room;
    uint32_t tag;
    vekStatus status;
  } rows[] = {{4, 0, RegExpTag, StatusSizeError},
              {3, -1, RegExpTag, StatusSizeError},
              {9, 1, 0, StatusRegExpError}};
  const PatternObject pattern("a");
  const ReplaceState replaceState("x");
  Place("abab", pattern, 1);
  for (const auto& row : rows) {
    pattern.State()->regExpTag = row.tag;
    room_ = row.room;
    found_ = {row.status, row.room, {}};
    ASSERT_NO_FATAL_FAILURE(Check(pattern.State(), replaceState, {}, row.capacity));
  }
}

}  // namespace
}  // namespace vekch::test
