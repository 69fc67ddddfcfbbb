// SPDX-License-Identifier: MIT

// Trimming beside plain loops with memcpy and beside std::string_view with memcpy.

#include <string.h>

#include <string>

#include "bench/edit_peers.h"
#include "bench/inputs.h"
#include "bench/ratios.h"
#include "vekch/vekch.h"

namespace vekch_bench {
namespace {

constexpr int64_t kSizes[] = {1, 8, 16, 31, 64, 256, 4096, 1 << 16};
constexpr int64_t kFewSizes[] = {8, 31, 64, 256, 4096};

constexpr std::string_view kSpace = " ";
constexpr std::string_view kSpaces = " \t\r\n";
constexpr std::string_view kSixSpaces = " \t\r\n\v\f";

const uint8_t* Bytes(std::string_view text) {
  return reinterpret_cast<const uint8_t*>(text.data());
}
int32_t Length(std::string_view text) { return static_cast<int32_t>(text.size()); }

// Letters with `dropped` members of the set at each end.
Input Padded(int64_t bytes, std::string_view set, int64_t dropped) {
  Input text = RandomLetters(bytes);
  for (int64_t i = 0; i < dropped && 2 * i < bytes; ++i) {
    text.data()[i] = static_cast<uint8_t>(set[static_cast<size_t>(i) % set.size()]);
    text.data()[bytes - 1 - i] = text.data()[i];
  }
  return text;
}

int64_t Kept(std::string_view kept, uint8_t* to) {
  memcpy(to, kept.data(), kept.size());
  return static_cast<int64_t>(kept.size());
}

std::string_view From(std::string_view text, size_t first) {
  return first == std::string_view::npos ? std::string_view() : text.substr(first);
}

std::string_view WithoutStart(std::string_view text, std::string_view set) {
  return From(text, text.find_first_not_of(set));
}

std::string_view WithoutEnd(std::string_view text, std::string_view set) {
  return text.substr(0, text.find_last_not_of(set) + 1);
}

void RunTrimByte(const std::string& name, int64_t bytes, int64_t dropped) {
  const Input source = Padded(bytes, kSpace, dropped);
  const Input destination(bytes);
  const uint8_t* from = source.data();
  uint8_t* to = destination.data();
  const int32_t length = source.length();
  Case("trim_byte", name, bytes)
      .Ours([=] {
        int32_t kept;
        veksTrimC_8u(from, length, ' ', to, &kept);
        return kept;
      })
      .Peer("plain loop", [=] { return PlainTrim(from, length, ' ', to); })
      .Peer("string_view",
            [=, text = source.view()] {
              return Kept(WithoutEnd(WithoutStart(text, kSpace), kSpace), to);
            })
      .Run();
}

// The contenders put the spaces back that they took.
void RunTrimByteInPlace(int64_t bytes) {
  const Input source = Padded(bytes, kSpace, 2);
  const Input buffer(bytes);
  const uint8_t* from = source.data();
  uint8_t* p = buffer.data();
  const int32_t length = source.length();
  const auto restore = [=] { memcpy(p, from, static_cast<size_t>(length)); };
  Case("trim_byte", "2 in place, restored", bytes)
      .Ours([=] {
        restore();
        int32_t kept = length;
        veksTrimC_8u_I(p, &kept, ' ');
        return kept;
      })
      .Peer("string_view and memmove",
            [=] {
              restore();
              const std::string_view text(reinterpret_cast<const char*>(p),
                                          static_cast<size_t>(length));
              const std::string_view kept = WithoutEnd(WithoutStart(text, kSpace), kSpace);
              memmove(p, kept.data(), kept.size());
              return static_cast<int64_t>(kept.size());
            })
      .Run();
}

// The contenders of one task.
struct TrimAny {
  Input source;
  Input destination;
  std::string_view set;

  TrimAny(int64_t bytes, std::string_view members, int64_t dropped)
      : source(Padded(bytes, members, dropped)), destination(bytes), set(members) {}

  auto Ours(decltype(veksTrimCAny_8u)* function) const {
    return [function, from = source.data(), length = source.length(), members = Bytes(set),
            count = Length(set), to = destination.data()] {
      int32_t kept;
      function(from, length, members, count, to, &kept);
      return kept;
    };
  }

  auto Plain(decltype(PlainTrimAny)* function) const {
    return [function, from = source.data(), length = source.length(), members = Bytes(set),
            count = Length(set),
            to = destination.data()] { return function(from, length, members, count, to); };
  }

  template <class Function>
  auto View(Function function) const {
    return [function, text = source.view(), members = set, to = destination.data()] {
      return Kept(function(text, members), to);
    };
  }
};

void RunTrimAny(const std::string& name, int64_t bytes, std::string_view set, int64_t dropped) {
  const TrimAny task(bytes, set, dropped);
  Case("trim_set", name, bytes)
      .Ours(task.Ours(veksTrimCAny_8u))
      .Peer("plain loop", task.Plain(PlainTrimAny))
      .Peer("string_view", task.View([](std::string_view text, std::string_view members) {
        return WithoutEnd(WithoutStart(text, members), members);
      }))
      .Run();
}

void RunTrimOneEnd(int64_t bytes) {
  const TrimAny task(bytes, kSpaces, 2);
  Case("trim_set", "2 at the start", bytes)
      .Ours(task.Ours(veksTrimStartCAny_8u))
      .Peer("plain loop", task.Plain(PlainTrimStartAny))
      .Peer("string_view", task.View(WithoutStart))
      .Run();
  Case("trim_set", "2 at the end", bytes)
      .Ours(task.Ours(veksTrimEndCAny_8u))
      .Peer("plain loop", task.Plain(PlainTrimEndAny))
      .Peer("string_view", task.View(WithoutEnd))
      .Run();
}

const Family kTrim([] {
  for (const int64_t bytes : kSizes) {
    RunTrimByte("none", bytes, 0);
    RunTrimByte("1 at each end", bytes, 1);
    RunTrimByte("8 at each end", bytes, 8);
    RunTrimByte("all", bytes, bytes);
    RunTrimByteInPlace(bytes);
  }
  static std::string controls;
  for (char c = 0; c <= ' '; ++c) {
    controls += c;
  }
  for (const std::string_view set :
       {kSpaces, kSixSpaces, std::string_view(controls).substr(21), std::string_view(controls)}) {
    const std::string of = " of " + std::to_string(set.size());
    for (const int64_t bytes : kFewSizes) {
      RunTrimAny("none" + of, bytes, set, 0);
      RunTrimAny("1 at each end" + of, bytes, set, 1);
      RunTrimAny("8 at each end" + of, bytes, set, 8);
      RunTrimAny("all" + of, bytes, set, bytes);
    }
  }
  for (const int64_t bytes : kSizes) {
    RunTrimOneEnd(bytes);
  }
});

}  // namespace
}  // namespace vekch_bench
