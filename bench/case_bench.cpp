// SPDX-License-Identifier: MIT

// The case mappings beside a plain loop, a vectorised one, and tolower and toupper for each byte.

#include <memory>

#include "bench/inputs.h"
#include "bench/plain_loops.h"
#include "bench/ratios.h"
#include "vekch/vekch.h"

namespace vekch_bench {
namespace {

// A direction, ours in both forms and its peers, which serve both.
struct Direction {
  const char* name;
  vekStatus (*copy)(const uint8_t*, uint8_t*, int32_t) noexcept;
  vekStatus (*inPlace)(uint8_t*, int32_t) noexcept;
  void (*plain)(const uint8_t*, uint8_t*, int32_t);
  void (*vectorised)(const uint8_t*, uint8_t*, int32_t);
  void (*library)(const uint8_t*, uint8_t*, int32_t);
};

template <const Direction& kDirection>
void RunCopy(const Input& source, const Input& destination) {
  const uint8_t* from = source.data();
  uint8_t* to = destination.data();
  const int32_t length = source.length();
  const auto written = [=] { return Digest(to, length); };
  const auto peer = [=](auto map) {
    return [=] {
      map(from, to, length);
      return 0;
    };
  };
  Case("case", std::string(kDirection.name) + ", copied", length)
      .Ours([=] { return kDirection.copy(from, to, length); }, written)
      .Peer("plain loop", peer([](auto... a) { kDirection.plain(a...); }), written)
      .Peer("vectorised", peer([](auto... a) { kDirection.vectorised(a...); }), written)
      .Peer("each by libc", peer([](auto... a) { kDirection.library(a...); }), written)
      .Run();
}

// Many strings in turn: who maps the same few bytes again and again waits for his own stores.
template <const Direction& kDirection>
void RunInPlace(int64_t bytes) {
  const int64_t strings = bytes <= 256 ? 64 : 1;
  const auto buffer = std::make_shared<Input>(English(bytes * strings, 3));
  uint8_t* first = buffer->data();
  const auto length = static_cast<int32_t>(bytes);
  const auto written = [=] { return Digest(first, bytes * strings); };
  const auto forEach = [=](auto map) {
    return [=, keep = buffer] {
      for (int64_t i = 0; i < strings; ++i) {
        map(first + i * bytes);
      }
      return 0;
    };
  };
  Case("case", std::string(kDirection.name) + ", in place", bytes)
      .Calls(strings)
      .Ours(forEach([=](uint8_t* p) { kDirection.inPlace(p, length); }), written)
      .Peer("plain loop", forEach([=](uint8_t* p) { kDirection.plain(p, p, length); }), written)
      .Peer("vectorised", forEach([=](uint8_t* p) { kDirection.vectorised(p, p, length); }),
            written)
      .Peer("each by libc", forEach([=](uint8_t* p) { kDirection.library(p, p, length); }), written)
      .Run();
}

constexpr Direction kLower = {"lower",        veksLowercaseLatin_8u, veksLowercaseLatin_8u_I,
                              PlainLowercase, VectorisedLowercase,   ToLowerEach};
constexpr Direction kUpper = {"upper",        veksUppercaseLatin_8u, veksUppercaseLatin_8u_I,
                              PlainUppercase, VectorisedUppercase,   ToUpperEach};

const Family kCase([] {
  for (int64_t bytes :
       {1, 2, 3, 4, 6, 8, 12, 16, 24, 32, 48, 64, 128, 256, 1 << 10, 16 << 10, 1 << 20}) {
    const Input text = English(bytes, 3);
    const Input destination(bytes, 7);
    RunCopy<kLower>(text, destination);
    RunCopy<kUpper>(text, destination);
    RunInPlace<kLower>(bytes);
    RunInPlace<kUpper>(bytes);
  }
});

}  // namespace
}  // namespace vekch_bench
