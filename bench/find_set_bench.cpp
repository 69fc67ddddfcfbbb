// SPDX-License-Identifier: MIT

// The searches for a byte of a set beside strcspn and std::string_view. The texts hold no zero byte
// and end with one, so that strcspn sees what the others see.

#include <string.h>

#include <string>

#include "bench/inputs.h"
#include "bench/ratios.h"
#include "vekch/vekch.h"

namespace vekch_bench {
namespace {

constexpr int64_t kSizes[] = {1, 8, 16, 31, 64, 100, 256, 1 << 10, 4096, 1 << 16};
constexpr int64_t kLargestForView = 4096;  // slower by orders of magnitude

struct OurFind {
  int64_t operator()(const uint8_t* p, int32_t length, std::string_view set) const {
    return Result<veksFindCAny_8u>(p, length, reinterpret_cast<const uint8_t*>(set.data()),
                                   static_cast<int32_t>(set.size()));
  }
};

struct OurFindLast {
  int64_t operator()(const uint8_t* p, int32_t length, std::string_view set) const {
    return Result<veksFindRevCAny_8u>(p, length, reinterpret_cast<const uint8_t*>(set.data()),
                                      static_cast<int32_t>(set.size()));
  }
};

struct Strcspn {
  int64_t operator()(const uint8_t* p, int32_t length, std::string_view set) const {
    const size_t passed = strcspn(reinterpret_cast<const char*>(p), set.data());
    return passed == static_cast<size_t>(length) ? -1 : static_cast<int64_t>(passed);
  }
};

struct ViewFind {
  int64_t operator()(const uint8_t* p, int32_t length, std::string_view set) const {
    return Position(View(p, length).find_first_of(set));
  }
};

struct ViewFindLast {
  int64_t operator()(const uint8_t* p, int32_t length, std::string_view set) const {
    return Position(View(p, length).find_last_of(set));
  }
};

constexpr auto kRunFind = [](const std::string& name, int64_t bytes, int64_t calls, auto call) {
  Case one("find_set", name, bytes);
  one.Calls(calls).Ours([=] { return call(OurFind()); });
  one.Peer("strcspn", [=] { return call(Strcspn()); });
  if (bytes <= kLargestForView * calls) {
    one.Peer("string_view::find_first_of", [=] { return call(ViewFind()); });
  }
  one.Run();
};

constexpr auto kRunFindLast = [](const std::string& name, int64_t bytes, int64_t calls, auto call) {
  Case("find_last_set", name, bytes)
      .Calls(calls)
      .Ours([=] { return call(OurFindLast()); })
      .Peer("string_view::find_last_of", [=] { return call(ViewFindLast()); })
      .Run();
};

auto Once(const Input& text, std::string_view set) {
  return [p = text.data(), length = text.length(), set](auto find) { return find(p, length, set); };
}

auto AllForward(const Input& text, std::string_view set) {
  return [p = text.data(), length = text.length(), set](auto find) {
    return CountForward([=](int32_t from, int32_t rest) { return find(p + from, rest, set); },
                        length);
  };
}

auto AllBackward(const Input& text, std::string_view set) {
  return [p = text.data(), length = text.length(), set](auto find) {
    return CountBackward([=](int32_t, int32_t rest) { return find(p, rest, set); }, length);
  };
}

std::string Bytes(int32_t lowest, int32_t highest, int32_t step = 1) {
  std::string bytes;
  for (int32_t value = lowest; value <= highest; value += step) {
    bytes.push_back(static_cast<char>(value));
  }
  return bytes;
}

struct Set {
  std::string name;
  std::string members;
  std::string text;  // the alphabet of the text, which holds no member
};

std::vector<Set> AllSets() {
  const std::string letters = Bytes('a', 'z');
  std::vector<Set> sets;
  for (const int32_t count : {1, 2, 3, 5, 10, 20, 40}) {
    // No two of them neighbours.
    sets.push_back({std::to_string(count) + " scattered", Bytes(1, 2 * count - 1, 2), letters});
  }
  for (const size_t count : {5U, 7U, 12U, 20U}) {
    // Anywhere among the values that are no small letters.
    std::string members;
    for (uint32_t value = 1; members.size() < count; value = value * 37 % 251) {
      const char member = static_cast<char>(value);
      members += letters.find(member) == std::string::npos ? std::string(1, member) : "";
    }
    sets.push_back({std::to_string(count) + " random", members, letters});
  }
  sets.push_back({"digits", Bytes('0', '9'), letters});
  sets.push_back({"capitals", Bytes('A', 'Z'), letters});
  sets.push_back({"letters", Bytes('A', 'Z') + letters, Bytes(' ', '@')});
  sets.push_back({"not ASCII", Bytes(128, 255), letters});
  sets.push_back({"all but newline", Bytes(1, '\n' - 1) + Bytes('\n' + 1, 255), "\n"});
  return sets;
}

const Family kFindSet([] {
  const std::vector<Set> sets = AllSets();
  for (const Set& set : sets) {
    for (const int64_t bytes : kSizes) {
      kRunFind(set.name + ", absent", bytes, 1, Once(RandomOf(bytes, set.text), set.members));
    }
  }
  for (const Set& set : sets) {
    for (const int64_t bytes : {8, 31, 100, 1 << 10}) {
      Input text = RandomOf(bytes, set.text);
      text.Put(-1, std::string_view(set.members).substr(set.members.size() / 2, 1));
      kRunFind(set.name + ", at the end", bytes, 1, Once(text, set.members));
    }
  }
  for (const Set& set : {sets[2], sets[7]}) {
    for (const int64_t bytes : {1 << 20, 1 << 26}) {
      kRunFind(set.name + ", absent", bytes, 1, Once(RandomOf(bytes, set.text), set.members));
    }
  }
  const Input english = English(1 << 16);
  const auto runAll = [&](auto run, auto all) {
    for (const auto& [name, members] : {std::pair{"each space", " \n"},
                                        {"each punctuation", ".,;:()'\"-"},
                                        {"each vowel", "aeiouAEIOU"},
                                        {"each small vowel", "aeiou"},
                                        {"each sentence end", ".!?"},
                                        {"each delimiter", " \t\r\n,;:/|="},
                                        {"each word end", " \n.,;:!?()[]{}<>\"'`-/*=+#&%@$"},
                                        {"each of markup", "<>&\"'"},
                                        {"each capital", "ABCDEFGHIJKLMNOPQRSTUVWXYZ"}}) {
      run(std::string(name) + " in English", english.length(), Count(english, members),
          all(english, members));
    }
  };
  runAll(kRunFind, AllForward);
  for (const Set& set : sets) {
    for (const int64_t bytes : {8, 31, 100, 1 << 10}) {
      kRunFindLast(set.name + ", absent", bytes, 1, Once(RandomOf(bytes, set.text), set.members));
    }
  }
  runAll(kRunFindLast, AllBackward);
});

}  // namespace
}  // namespace vekch_bench
