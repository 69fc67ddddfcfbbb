// SPDX-License-Identifier: MIT

// What the C++ header costs beside the C calls that a program would write in its place, with room
// that is just right from the start; texts that are made go into a std::string on both sides.

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "bench/inputs.h"
#include "bench/ratios.h"
#include "vekch/vekch.hpp"

namespace vekch_bench {
namespace {

const uint8_t* Bytes(std::string_view text) {
  return reinterpret_cast<const uint8_t*>(text.data());
}

struct Object {
  Object(const char* pattern, const char* options) {
    int32_t size = 0;
    int32_t offset = 0;
    veksRegExpGetSize(Bytes(pattern), &size);
    block.resize(static_cast<size_t>(size) / 8);
    veksRegExpInit(Bytes(pattern), Bytes(options), State(), &offset);
  }
  RegExpState* State() { return reinterpret_cast<RegExpState*>(block.data()); }
  std::vector<uint64_t> block;
};

void RunPatterns(int64_t bytes) {
  const Input input = English(bytes, 3);
  const std::string_view text(reinterpret_cast<const char*>(input.data()),
                              static_cast<size_t>(bytes));
  const auto length = static_cast<int32_t>(bytes);
  constexpr const char* kWord = "([a-z])[a-z]+";
  auto pattern = std::make_shared<vekch::Pattern>(kWord);
  auto first = std::make_shared<Object>(kWord, "");
  auto all = std::make_shared<Object>(kWord, "g");
  const auto slots = static_cast<size_t>(bytes + 2);
  Case("face", "first match", bytes)
      .Ours([=] { return static_cast<int64_t>(pattern->find(text)[1].size()); })
      .Peer("in C",
            [=] {
              RegExpFindResult found[2];
              int32_t count = 2;
              veksRegExpFind_8u(Bytes(text), length, first->State(), found, &count);
              return int64_t{count == 2 ? found[1].length : 0};
            })
      .Run();
  Case("face", "all matches", bytes)
      .Ours([=] { return static_cast<int64_t>(pattern->find_all(text).size()); })
      .Peer("in C",
            [=] {
              const std::unique_ptr<RegExpFindResult[]> found(new RegExpFindResult[slots]);
              auto count = static_cast<int32_t>(slots);
              vekRegExpFindAll(Bytes(text), length, all->State(), found.get(), &count);
              return int64_t{count / 2};
            })
      .Run();
  auto replacement = std::make_shared<vekch::Template>("$&-$1");
  auto items = std::make_shared<std::vector<uint64_t>>(12);
  auto* const itemsState = reinterpret_cast<RegExpReplaceState*>(items->data());
  veksRegExpReplaceInit(Bytes("$&-$1"), itemsState);
  Case("face", "replace all", bytes)
      .Ours([=] {
        return static_cast<int64_t>(pattern->replace_all(text, *replacement).text.size());
      })
      .Peer("in C",
            [=, keep = items] {
              const std::unique_ptr<RegExpFindResult[]> found(new RegExpFindResult[slots]);
              std::string room(2 * slots, '\0');
              auto count = static_cast<int32_t>(slots);
              auto written = static_cast<int32_t>(2 * slots);
              int32_t source = length;
              veksRegExpReplace_8u(Bytes(text), &source, reinterpret_cast<uint8_t*>(room.data()),
                                   &written, found.get(), &count, all->State(), itemsState);
              room.resize(static_cast<size_t>(written));
              return static_cast<int64_t>(room.size());
            })
      .Run();
}

void RunTexts(int64_t bytes) {
  const Input input = English(bytes, 3);
  const std::string_view text(reinterpret_cast<const char*>(input.data()),
                              static_cast<size_t>(bytes));
  const auto length = static_cast<int32_t>(bytes);
  const auto size = static_cast<size_t>(bytes);
  Case("face", "lower", bytes)
      .Ours([=] { return static_cast<int64_t>(vekch::lower(text).back()); })
      .Peer("in C",
            [=] {
              std::string room(size, '\0');
              veksLowercaseLatin_8u(Bytes(text), reinterpret_cast<uint8_t*>(room.data()), length);
              return static_cast<int64_t>(room.back());
            })
      .Run();
  Case("face", "to UTF-16", bytes)
      .Ours([=] { return static_cast<int64_t>(vekch::to_utf16(text).size()); })
      .Peer("in C",
            [=] {
              std::u16string room(size + 1, u'\0');
              int32_t source = length;
              int32_t units = length;
              veksConvertUTF_8u16u(Bytes(text), &source, reinterpret_cast<uint16_t*>(room.data()),
                                   &units, 0);
              room.resize(static_cast<size_t>(units));
              return static_cast<int64_t>(room.size());
            })
      .Run();
  const auto units = std::make_shared<std::u16string>(vekch::to_utf16(text));
  Case("face", "to UTF-8", bytes)
      .Ours([=] { return static_cast<int64_t>(vekch::to_utf8(*units).size()); })
      .Peer("in C",
            [=] {
              std::string room(3 * units->size(), '\0');
              auto source = static_cast<int32_t>(units->size());
              int32_t written = 3 * source;
              veksConvertUTF_16u8u(reinterpret_cast<const uint16_t*>(units->data()), &source,
                                   reinterpret_cast<uint8_t*>(room.data()), &written, 0);
              room.resize(static_cast<size_t>(written));
              return static_cast<int64_t>(room.size());
            })
      .Run();
  Case("face", "find", bytes)
      .Ours([=] { return static_cast<int64_t>(vekch::find(text, std::string_view("xyzzy", 5))); })
      .Peer("in C", [=] { return Result<veksFind_8u>(Bytes(text), length, Bytes("xyzzy"), 5); })
      .Run();
}

const Family kFace([] {
  for (const int64_t bytes : {16, 60, 1 << 10, 64 << 10, 1 << 20}) {
    RunPatterns(bytes);
    RunTexts(bytes);
  }
});

}  // namespace
}  // namespace vekch_bench
