// SPDX-License-Identifier: MIT

// The searches for one byte beside memchr, memrchr, strchr, strlen and std::string_view.

#include <string.h>

#include <string>

#include "bench/inputs.h"
#include "bench/ratios.h"
#include "vekch/vekch.h"

namespace vekch_bench {
namespace {

// The searches in one form: a string of some length to a position.

struct OurFind {
  int64_t operator()(const uint8_t* p, int32_t length, char c) const {
    return Result<veksFindC_8u>(p, length, static_cast<uint8_t>(c));
  }
};

struct OurFindLast {
  int64_t operator()(const uint8_t* p, int32_t length, char c) const {
    return Result<veksFindRevC_8u>(p, length, static_cast<uint8_t>(c));
  }
};

struct OurFindTerminated {
  int64_t operator()(const uint8_t* p, int32_t, char c) const {
    return Result<veksFindC_Z_8u>(p, static_cast<uint8_t>(c));
  }
};

struct Memchr {
  int64_t operator()(const uint8_t* p, int32_t length, char c) const {
    return Position(memchr(p, c, static_cast<size_t>(length)), p);
  }
};

struct Memrchr {
  int64_t operator()(const uint8_t* p, int32_t length, char c) const {
    return Position(memrchr(p, c, static_cast<size_t>(length)), p);
  }
};

struct Strchr {
  int64_t operator()(const uint8_t* p, int32_t, char c) const {
    return Position(strchr(reinterpret_cast<const char*>(p), c), p);
  }
};

struct Strlen {
  int64_t operator()(const uint8_t* p, int32_t, char) const {
    return static_cast<int64_t>(strlen(reinterpret_cast<const char*>(p)));
  }
};

struct ViewFind {
  int64_t operator()(const uint8_t* p, int32_t length, char c) const {
    return Position(View(p, length).find(c));
  }
};

struct ViewFindLast {
  int64_t operator()(const uint8_t* p, int32_t length, char c) const {
    return Position(View(p, length).rfind(c));
  }
};

// Each runs one case of its family. `call` says what one run does with a search.

constexpr auto kRunFind = [](const std::string& name, int64_t bytes, int64_t calls, auto call) {
  Case("find_byte", name, bytes)
      .Calls(calls)
      .Ours([=] { return call(OurFind()); })
      .Peer("memchr", [=] { return call(Memchr()); })
      .Peer("string_view::find", [=] { return call(ViewFind()); })
      .Run();
};

constexpr auto kRunFindLast = [](const std::string& name, int64_t bytes, int64_t calls, auto call) {
  Case("find_last_byte", name, bytes)
      .Calls(calls)
      .Ours([=] { return call(OurFindLast()); })
      .Peer("memrchr", [=] { return call(Memrchr()); })
      .Peer("string_view::rfind", [=] { return call(ViewFindLast()); })
      .Run();
};

constexpr auto kRunFindTerminated = [](const std::string& name, int64_t bytes, int64_t calls,
                                       auto call) {
  Case("find_byte_z", name, bytes)
      .Calls(calls)
      .Ours([=] { return call(OurFindTerminated()); })
      .Peer("strchr", [=] { return call(Strchr()); })
      .Run();
};

constexpr auto kRunTerminator = [](const std::string& name, int64_t bytes, int64_t calls,
                                   auto call) {
  Case("find_byte_z", name, bytes)
      .Calls(calls)
      .Ours([=] { return call(OurFindTerminated()); })
      .Peer("strlen", [=] { return call(Strlen()); })
      .Run();
};

// One call. The string lives as long as the case's expression.
auto Once(const Input& text, char c) {
  return [p = text.data(), length = text.length(), c](auto find) { return find(p, length, c); };
}

// A call for each length; how the lengths follow one another can't be foreseen.
auto ForEach(const Input& text, char c, const std::vector<int32_t>& lengths) {
  return [p = text.data(), c, &lengths](auto find) {
    int64_t sum = 0;
    for (const int32_t length : lengths) {
      sum += find(p, length, c);
    }
    return sum;
  };
}

// Terminated strings of these lengths, each at a position of its own.
std::vector<Input> StringsOf(const std::vector<int32_t>& lengths) {
  std::vector<Input> strings;
  for (const int32_t length : lengths) {
    strings.push_back(RandomLetters(length, static_cast<int64_t>(strings.size() * 7 % 64)));
  }
  return strings;
}

auto ForEachOf(const std::vector<Input>& strings, char c) {
  return [&strings, c](auto find) {
    int64_t sum = 0;
    for (const Input& string : strings) {
      sum += find(string.data(), string.length(), c);
    }
    return sum;
  };
}

// All positions at which the byte is, one after the other.
auto AllForward(const Input& text, char c) {
  return [p = text.data(), length = text.length(), c](auto find) {
    return CountForward([=](int32_t from, int32_t rest) { return find(p + from, rest, c); },
                        length);
  };
}

auto AllBackward(const Input& text, char c) {
  return [p = text.data(), length = text.length(), c](auto find) {
    return CountBackward([=](int32_t, int32_t rest) { return find(p, rest, c); }, length);
  };
}

// `hit` is the position of the only hit, as Input::Put has it.
template <class Run>
void RunLengths(Run run, const std::string& hitName, int64_t hit) {
  for (const int64_t bytes : kAllSizes) {
    run("absent", bytes, 1, Once(RandomLetters(bytes), '!'));
  }
  for (const int64_t bytes : kSomeSizes) {
    run("absent, unaligned", bytes, 1, Once(RandomLetters(bytes, 5), '!'));
  }
  for (const int64_t bytes : kSomeSizes) {
    Input text = RandomLetters(bytes);
    text.Put(hit, "!");
    run(hitName, bytes, 1, Once(text, '!'));
  }
  for (const int64_t bytes : {64, 4096}) {
    // Bytes next to the one sought, and those that differ from it in one bit.
    run("near misses", bytes, 1, Once(Repeated(bytes, "`bcqA\xE1i"), 'a'));
  }
}

template <class Run>
void RunMixedLengths(Run run) {
  for (const int32_t highest : {16, 64, 256}) {
    const std::vector<int32_t> lengths = RandomLengths(4000, 1, highest);
    run("absent, 1-" + std::to_string(highest) + " mixed", Sum(lengths), 4000,
        ForEach(RandomLetters(highest), '!', lengths));
  }
}

const Family kFindByte([] {
  RunLengths(kRunFind, "at the end", -1);
  RunMixedLengths(kRunFind);
  const Input text = English(1 << 16);
  kRunFind("each line in English", text.length(), Count(text, "\n"), AllForward(text, '\n'));
  kRunFind("each 'e' in English", text.length(), Count(text, "e"), AllForward(text, 'e'));

  RunLengths(kRunFindLast, "at the start", 0);
  RunMixedLengths(kRunFindLast);
  kRunFindLast("each line in English", text.length(), Count(text, "\n"), AllBackward(text, '\n'));
  kRunFindLast("each 'e' in English", text.length(), Count(text, "e"), AllBackward(text, 'e'));

  RunLengths(kRunFindTerminated, "at the end", -1);
  kRunFindTerminated("each line in English", text.length(), Count(text, "\n"),
                     AllForward(text, '\n'));
  kRunFindTerminated("each 'e' in English", text.length(), Count(text, "e"), AllForward(text, 'e'));
  for (const int64_t bytes : kAllSizes) {
    kRunTerminator("terminator", bytes, 1, Once(RandomLetters(bytes), '\0'));
  }
  for (const int64_t bytes : kSomeSizes) {
    kRunTerminator("terminator, unaligned", bytes, 1, Once(RandomLetters(bytes, 53), '\0'));
  }
  for (const int32_t highest : {16, 64, 256}) {
    const std::vector<int32_t> lengths = RandomLengths(4000, 1, highest);
    const std::vector<Input> strings = StringsOf(lengths);
    kRunTerminator("terminator, 1-" + std::to_string(highest) + " mixed", Sum(lengths), 4000,
                   ForEachOf(strings, '\0'));
    kRunFindTerminated("absent, 1-" + std::to_string(highest) + " mixed", Sum(lengths), 4000,
                       ForEachOf(strings, '!'));
  }
});

}  // namespace
}  // namespace vekch_bench
