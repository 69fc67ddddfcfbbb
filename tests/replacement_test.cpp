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

}  // namespace
}  // namespace vekch::test
