// SPDX-License-Identifier: MIT

// The comparisons beside memcmp, strncasecmp and std::string_view.

#include <string.h>
#include <strings.h>

#include <string>

#include "bench/inputs.h"
#include "bench/ratios.h"
#include "vekch/vekch.h"

namespace vekch_bench {
namespace {

// The comparisons in one form: two strings of one length to an answer.

struct OurCompare {
  int64_t operator()(const uint8_t* a, const uint8_t* b, int32_t length) const {
    return Sign(Result<veksCompare_8u>(a, b, length));
  }
};

struct OurEqual {
  int64_t operator()(const uint8_t* a, const uint8_t* b, int32_t length) const {
    return Result<veksEqual_8u>(a, b, length);
  }
};

struct OurCompareIgnoreCase {
  int64_t operator()(const uint8_t* a, const uint8_t* b, int32_t length) const {
    return Sign(Result<veksCompareIgnoreCaseLatin_8u>(a, b, length));
  }
};

struct MemcmpSign {
  int64_t operator()(const uint8_t* a, const uint8_t* b, int32_t length) const {
    return Sign(memcmp(a, b, static_cast<size_t>(length)));
  }
};

struct MemcmpIsZero {
  int64_t operator()(const uint8_t* a, const uint8_t* b, int32_t length) const {
    return memcmp(a, b, static_cast<size_t>(length)) == 0;
  }
};

struct ViewCompare {
  int64_t operator()(const uint8_t* a, const uint8_t* b, int32_t length) const {
    return Sign(View(a, length).compare(View(b, length)));
  }
};

struct ViewEqual {
  int64_t operator()(const uint8_t* a, const uint8_t* b, int32_t length) const {
    return View(a, length) == View(b, length);
  }
};

struct Strncasecmp {
  int64_t operator()(const uint8_t* a, const uint8_t* b, int32_t length) const {
    return Sign(strncasecmp(reinterpret_cast<const char*>(a), reinterpret_cast<const char*>(b),
                            static_cast<size_t>(length)));
  }
};

// Each runs one case of its family. `call` says what one run does with a comparison.

constexpr auto kRunCompare = [](const std::string& name, int64_t bytes, int64_t calls, auto call) {
  Case("compare", name, bytes)
      .Calls(calls)
      .Ours([=] { return call(OurCompare()); })
      .Peer("memcmp", [=] { return call(MemcmpSign()); })
      .Peer("string_view", [=] { return call(ViewCompare()); })
      .Run();
};

constexpr auto kRunEqual = [](const std::string& name, int64_t bytes, int64_t calls, auto call) {
  Case("equal", name, bytes)
      .Calls(calls)
      .Ours([=] { return call(OurEqual()); })
      .Peer("memcmp", [=] { return call(MemcmpIsZero()); })
      .Peer("string_view", [=] { return call(ViewEqual()); })
      .Run();
};

constexpr auto kRunIgnoreCase = [](const std::string& name, int64_t bytes, int64_t calls,
                                   auto call) {
  Case("compare_ignore_case", name, bytes)
      .Calls(calls)
      .Ours([=] { return call(OurCompareIgnoreCase()); })
      .Peer("strncasecmp", [=] { return call(Strncasecmp()); })
      .Run();
};

// One call on two strings. The strings live as long as the case's expression.
auto Once(const Input& first, const Input& second) {
  return [a = first.data(), b = second.data(), length = first.length()](auto compare) {
    return compare(a, b, length);
  };
}

// A call for each length, on strings that are equal; how the lengths follow one another can't be
// foreseen.
auto ForEach(const Input& first, const Input& second, const std::vector<int32_t>& lengths) {
  return [a = first.data(), b = second.data(), &lengths](auto compare) {
    int64_t sum = 0;
    for (const int32_t length : lengths) {
      sum += compare(a, b, length);
    }
    return sum;
  };
}

template <class Run>
void RunAll(Run run) {
  for (const int64_t bytes : kAllSizes) {
    run("equal", bytes, 1, Once(RandomLetters(bytes), RandomLetters(bytes)));
  }
  for (const int64_t bytes : kSomeSizes) {
    run("equal, unaligned", bytes, 1, Once(RandomLetters(bytes, 5), RandomLetters(bytes, 11)));
  }
  for (const int32_t highest : {16, 64, 256}) {
    const std::vector<int32_t> lengths = RandomLengths(4000, 1, highest);
    run("equal, 1-" + std::to_string(highest) + " mixed", Sum(lengths), 4000,
        ForEach(RandomLetters(highest), RandomLetters(highest), lengths));
  }
  for (const int64_t bytes : kSomeSizes) {
    Input other = RandomLetters(bytes);
    other.Put(-1, "{");
    run("differ at the end", bytes, 1, Once(RandomLetters(bytes), other));
  }
  for (const int64_t bytes : {8, 31, 256}) {
    Input other = RandomLetters(bytes);
    other.Put(0, "{");
    run("differ at the start", bytes, 1, Once(RandomLetters(bytes), other));
  }
}

const Family kComparisons([] {
  RunAll(kRunCompare);
  RunAll(kRunEqual);
  RunAll(kRunIgnoreCase);
  for (const int64_t bytes : kSomeSizes) {
    Input capitals = RandomLetters(bytes);
    for (int64_t i = 0; i < bytes; i += 2) {
      capitals.data()[i] = static_cast<uint8_t>(capitals.data()[i] - 'a' + 'A');
    }
    kRunIgnoreCase("equal but for case", bytes, 1, Once(RandomLetters(bytes), capitals));
  }
  // Some groups of 64 bytes have a capital and some have none, and no one foresees which.
  const Input english = English(1 << 16);
  Input small = English(1 << 16);
  veksLowercaseLatin_8u_I(small.data(), small.length());
  kRunIgnoreCase("English, small letters", 1 << 16, 1, Once(english, small));
});

}  // namespace
}  // namespace vekch_bench
