// Pattern objects: their size and settings.

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "tests/guarded_buffer.h"
#include "vekch/regexp_program.h"
#include "vekch/vekch.h"

namespace vekch::test {
namespace {

constexpr int32_t kUnwritten = 0x5A5A5A5A;

const uint8_t* Bytes(const char* text) { return reinterpret_cast<const uint8_t*>(text); }

TEST(ObjectTest, SizeOfEveryLengthBetweenTheGuards) {
  GuardedBuffer buffer(600);
  for (size_t length = 0; length <= 512; ++length) {
    uint8_t* pattern = buffer.AtEnd(length + 1);
    std::memset(pattern, '(', length);  // never parsed
    pattern[length] = 0;
    int32_t size = kUnwritten;
    ASSERT_EQ(veksRegExpGetSize(pattern, &size), StatusNoError);
    ASSERT_EQ(size, 48056 + 24 * static_cast<int32_t>(length));
  }
  int32_t size = kUnwritten;
  EXPECT_EQ(veksRegExpGetSize(nullptr, &size), StatusNullPointer);
  EXPECT_EQ(veksRegExpGetSize(Bytes("a"), nullptr), StatusNullPointer);
  EXPECT_EQ(size, kUnwritten);
}

// The setters write their one field of a block that was never compiled, and nothing else.
TEST(ObjectTest, SettersWriteOneFieldOrNothing) {
  struct Case {
    vekStatus (*set)(int32_t, RegExpState*) noexcept;
    int32_t value;
    vekStatus status;
    size_t field;
  };
  const size_t limit = offsetof(RegExpState, matchLimit);
  const size_t format = offsetof(RegExpState, characterFormat);
  const Case cases[] = {
      {veksRegExpSetMatchLimit, 0, StatusNoError, limit},
      {veksRegExpSetMatchLimit, 1, StatusNoError, limit},
      {veksRegExpSetMatchLimit, INT32_MAX, StatusNoError, limit},
      {veksRegExpSetMatchLimit, -1, StatusLengthError, limit},
      {veksRegExpSetMatchLimit, INT32_MIN, StatusLengthError, limit},
      {veksRegExpSetFormat, 0, StatusNoError, format},
      {veksRegExpSetFormat, 1, StatusNoError, format},
      {veksRegExpSetFormat, 2, StatusRangeError, format},
      {veksRegExpSetFormat, -1, StatusRangeError, format},
  };
  GuardedBuffer buffer(sizeof(RegExpState));
  for (const Case& test : cases) {
    uint8_t* block = buffer.AtEnd(sizeof(RegExpState));
    std::vector<uint8_t> expected(block, block + sizeof(RegExpState));
    if (test.status == StatusNoError) {
      std::memcpy(expected.data() + test.field, &test.value, sizeof test.value);
    }
    EXPECT_EQ(test.set(test.value, nullptr), StatusNullPointer);
    EXPECT_EQ(test.set(test.value, reinterpret_cast<RegExpState*>(block)), test.status);
    EXPECT_EQ(std::memcmp(block, expected.data(), expected.size()), 0) << test.value;
  }
}

}  // namespace
}  // namespace vekch::test
