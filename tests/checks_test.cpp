// SPDX-License-Identifier: MIT

// The checks of arguments: every function with every combination of null pointers, and with numbers
// out of range. Nulls count first, then lengths, then counts; and what fails writes nothing.

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <set>
#include <type_traits>

#include "tests/every_function.h"

namespace vekch::test {
namespace {

// An argument of a call that must fail: a null, or the next of the numbers.
struct Filler {
  unsigned nulls;
  const Numbers& numbers;
  size_t next = 0;

  void Take(int32_t* number) { *number = next < numbers.size() ? numbers[next++] : *number; }

  template <class T>
  void Plain(T* argument) {
    if constexpr (std::is_same_v<T, int32_t>) {
      Take(argument);
    }
  }

  template <class T>
  void Pointer(T* argument) {
    if constexpr (std::is_same_v<T, int32_t*>) {
      Take(*argument);
    }
    if constexpr (std::is_pointer_v<T>) {
      *argument = (nulls & 1) != 0 ? nullptr : *argument;
      nulls >>= 1;
    }
  }
};

struct Refusals {
  Written& written;
  Written before = {};
  std::set<const void*> seen = {};

  template <class... A>
  void operator()(vekStatus (*function)(A...) noexcept, const std::tuple<A...>& arguments,
                  vekStatus status, const std::vector<Numbers>& rows, unsigned mayBeNull = 0) {
    seen.insert(reinterpret_cast<const void*>(function));
    written.Prepare();
    for (const Numbers& row : rows) {
      for (unsigned nulls = 0; nulls < 1U << (std::is_pointer_v<A> + ... + 0); ++nulls) {
        if ((nulls & mayBeNull) != 0 || (nulls == 0 && status == StatusNoError)) {
          continue;
        }
        std::tuple<A...> changed = arguments;
        Filler filler = {nulls, row};
        const bool plainFirst = row.size() <= (std::is_same_v<A, int32_t> + ... + 0);
        for (const bool plain : {plainFirst, !plainFirst}) {
          std::apply([&](auto&... a) { ((plain ? filler.Plain(&a) : filler.Pointer(&a)), ...); },
                     changed);
        }
        std::memcpy(&before, &written, sizeof before);
        EXPECT_EQ(std::apply(function, changed), nulls != 0 ? StatusNullPointer : status)
            << "function " << seen.size() << ", nulls " << nulls << ", first number "
            << (row.empty() ? 0 : row[0]);
        EXPECT_EQ(std::memcmp(&written, &before, sizeof before), 0);
      }
    }
  }
};

TEST(ChecksTest, EveryFunction) {
  const auto written = std::make_unique<Written>();
  Refusals refusals = {*written};
  EveryFunction(*written, written->Template(), refusals);
  // The table has every exported function but the one without arguments.
  refusals.seen.insert(reinterpret_cast<const void*>(vekchGetLibVersion));
#define USE(name) EXPECT_EQ(refusals.seen.erase(reinterpret_cast<const void*>(name)), 1U) << #name;
#include "use_exports.inc"
  EXPECT_TRUE(refusals.seen.empty());
  // Where the byte 0 ends the search, the index is not tested.
  EXPECT_EQ(veksFindC_Z_8u(nullptr, 0, &written->number), StatusNullPointer);
  // An object that nothing was compiled into.
  std::memset(written->object, 0x5A, sizeof written->object);
  written->count = 1;
  EXPECT_EQ(veksRegExpFind_8u(kText, 1, written->State(), &written->result, &written->count),
            StatusRegExpError);
}

}  // namespace
}  // namespace vekch::test
