// SPDX-License-Identifier: MIT

// The searches for a substring beside memmem, strstr and std::string_view.

#include <string.h>

#include <functional>
#include <string>
#include <vector>

#include "bench/inputs.h"
#include "bench/ratios.h"
#include "vekch/vekch.h"

namespace vekch_bench {
namespace {

constexpr int64_t kLargestForView = 1 << 16;  // its time can grow with needle times text

const uint8_t* Unsigned(std::string_view s) { return reinterpret_cast<const uint8_t*>(s.data()); }
const char* Signed(const uint8_t* p) { return reinterpret_cast<const char*>(p); }

struct OurFind {
  int64_t operator()(const uint8_t* p, int32_t length, std::string_view needle) const {
    return Result<veksFind_8u>(p, length, Unsigned(needle), static_cast<int32_t>(needle.size()));
  }
};

struct OurFindLast {
  int64_t operator()(const uint8_t* p, int32_t length, std::string_view needle) const {
    return Result<veksFindRev_8u>(p, length, Unsigned(needle), static_cast<int32_t>(needle.size()));
  }
};

struct OurFindTerminated {
  int64_t operator()(const uint8_t* p, int32_t, std::string_view needle) const {
    return Result<veksFind_Z_8u>(p, Unsigned(needle));
  }
};

struct Memmem {
  int64_t operator()(const uint8_t* p, int32_t length, std::string_view needle) const {
    return Position(memmem(p, static_cast<size_t>(length), needle.data(), needle.size()), p);
  }
};

struct Strstr {
  int64_t operator()(const uint8_t* p, int32_t, std::string_view needle) const {
    return Position(strstr(Signed(p), needle.data()), p);
  }
};

struct ViewFind {
  int64_t operator()(const uint8_t* p, int32_t length, std::string_view needle) const {
    return Position(View(p, length).find(needle));
  }
};

struct ViewFindLast {
  int64_t operator()(const uint8_t* p, int32_t length, std::string_view needle) const {
    return Position(View(p, length).rfind(needle));
  }
};

constexpr auto kRunFind = [](const std::string& name, int64_t bytes, int64_t calls, auto call) {
  Case one("find_string", name, bytes);
  one.Calls(calls).Ours([=] { return call(OurFind()); });
  one.Peer("memmem", [=] { return call(Memmem()); });
  if (bytes <= kLargestForView) {
    one.Peer("string_view::find", [=] { return call(ViewFind()); });
  }
  one.Run();
};

constexpr auto kRunFindLast = [](const std::string& name, int64_t bytes, int64_t calls, auto call) {
  Case("find_last_string", name, bytes)
      .Calls(calls)
      .Ours([=] { return call(OurFindLast()); })
      .Peer("string_view::rfind", [=] { return call(ViewFindLast()); })
      .Run();
};

constexpr auto kRunFindTerminated = [](const std::string& name, int64_t bytes, int64_t calls,
                                       auto call) {
  Case("find_string_z", name, bytes)
      .Calls(calls)
      .Ours([=] { return call(OurFindTerminated()); })
      .Peer("strstr", [=] { return call(Strstr()); })
      .Run();
};

struct Task {
  std::string name;
  std::function<Input(int64_t)> text;  // of a size
  std::string needle;
  int64_t largest = INT64_MAX;  // in larger texts chance puts the needle elsewhere too
};

Task InEnglish(const std::string& kind, const std::string& needle) {
  return {kind + " in English, absent", [](int64_t bytes) { return English(bytes); }, needle};
}

// The needle is where the search comes to last.
Task AtLast(bool forward, int64_t needleLength) {
  const std::string needle(RandomOf(needleLength, "qwerty").view());
  return {std::to_string(needleLength) + " letters, found last",
          [=](int64_t bytes) {
            Input text = RandomLetters(bytes);
            if (needleLength <= bytes) {
              text.Put(forward ? -needleLength : 0, needle);
            }
            return text;
          },
          needle, needleLength == 4 ? 1 << 16 : INT64_MAX};
}

// Few positions look like the needle.
std::vector<Task> PlainTasks(bool forward) {
  return {InEnglish("2 rare bytes", "zq"),
          InEnglish("2 common bytes", "hh"),
          InEnglish("common letters", "otherest"),
          InEnglish("rare letters", "Xylophones"),
          InEnglish("sentence", "that there is no such sentence in it is certain"),
          AtLast(forward, 4),
          AtLast(forward, 16),
          AtLast(forward, 64)};
}

// The text ends with the needle, a piece of English that was changed in one byte, and holds no
// other one. A rare byte keeps chance from putting a short one elsewhere.
Task PieceOfEnglish(int64_t needleLength) {
  std::string needle(English(40'000).view().substr(20'000, static_cast<size_t>(needleLength)));
  char& changed = needle[needle.size() * 2 / 3];
  changed = needleLength <= 8 ? '^' : static_cast<char>(changed + 1);
  return {std::to_string(needleLength) + " bytes of English, at the end",
          [=](int64_t bytes) {
            Input text = English(bytes);
            text.Put(-needleLength, needle);
            return text;
          },
          needle};
}

std::vector<Task> PiecesOfEnglish() {
  std::vector<Task> tasks;
  for (const int64_t length : {5, 8, 12, 20, 33, 50, 100, 200, 500, 1000}) {
    tasks.push_back(PieceOfEnglish(length));
  }
  return tasks;
}

Task InRepeated(const std::string& name, const std::string& unit, const std::string& needle) {
  return {name, [=](int64_t bytes) { return Repeated(bytes, unit); }, needle};
}

// Many positions look like the needle.
std::vector<Task> Traps() {
  const auto a = [](size_t count) { return std::string(count, 'a'); };
  const auto b = [](size_t count) { return std::string(count, 'b'); };
  return {
      InRepeated("a^31 b in a's", "a", a(31) + "b"),
      InRepeated("b a^31 in a's", "a", "b" + a(31)),
      InRepeated("a^15 b a^16 in a's", "a", a(15) + "b" + a(16)),
      InRepeated("a^128 b a^128 in a's", "a", a(128) + "b" + a(128)),
      InRepeated("(ab)^8 b in (ab)'s", "ab", "ababababababababb"),
      InRepeated("a^31 b in (a^30 b)'s", a(30) + "b", a(31) + "b"),
      InRepeated("common start", "needle in a hay", "needle in a stack"),
      InRepeated("an absent line of a log",
                 "2026-11-02 10:15:27 INFO  worker-7 request served in 12 ms\n",
                 "worker-7 request served in 13 ms"),
      InRepeated("an absent row of a table", "0000;0000;0000;0001;0000;0000\n", "0001;0000;0001"),
      InRepeated("20 of a period of 3", "abc", "abcabcabcabcabcabdab"),
      InRepeated("an absent base", "ACGTTGCATGTCGCATGATGCATGAGAGCT", "GCATGAGAGCA"),
      {"a^20 b^20 in random a, b", [](int64_t bytes) { return RandomOf(bytes, "ab"); },
       a(20) + b(20)},
      {"common ends in English", [](int64_t bytes) { return English(bytes); }, "e_____________t"}};
}

template <class Run>
void RunTasks(Run run, const std::vector<Task>& tasks, const std::vector<int64_t>& sizes) {
  for (const Task& task : tasks) {
    const std::string_view needle = task.needle;
    for (const int64_t bytes : sizes) {
      if (static_cast<int64_t>(needle.size()) <= bytes && bytes <= task.largest) {
        const Input text = task.text(bytes);
        run(task.name, bytes, 1, [p = text.data(), length = text.length(), needle](auto find) {
          return find(p, length, needle);
        });
      }
    }
  }
}

// All positions at which the needle is, one after the other.
auto AllForward(const Input& text, std::string_view needle) {
  return [p = text.data(), length = text.length(), needle](auto find) {
    return CountForward([=](int32_t from, int32_t rest) { return find(p + from, rest, needle); },
                        length);
  };
}

auto AllBackward(const Input& text, std::string_view needle) {
  return [p = text.data(), length = text.length(), needle](auto find) {
    return CountBackward([=](int32_t, int32_t rest) { return find(p, rest, needle); }, length);
  };
}

template <class Run, class All, class Find>
void RunEach(Run run, All all, Find find) {
  const Input text = English(1 << 16);
  for (const std::string_view needle : {"the", "License", ". ", "copyright"}) {
    const auto call = all(text, needle);
    run("each '" + std::string(needle) + "' in English", text.length(), call(find) + 1, call);
  }
}

const std::vector<int64_t> kCachedSizes = {8,   16,      31,   64,      100,
                                           256, 1 << 10, 4096, 1 << 16, 1 << 20};
const std::vector<int64_t> kTrapSizes = {64, 256, 1 << 10, 4096, 1 << 16, 1 << 20};
const std::vector<int64_t> kPieceSizes = {64, 256, 1 << 10, 4096, 1 << 16, 1 << 20};

// A hit soon after the start of a string that goes on.
Task NearHit(const std::string& needle, int64_t position) {
  return {"'" + needle + "' at " + std::to_string(position),
          [=](int64_t bytes) {
            Input text = RandomLetters(bytes);
            text.Put(position, needle);
            return text;
          },
          needle};
}

const Family kFindString([] {
  for (const Task& task : PlainTasks(true)) {
    RunTasks(kRunFind, {task}, kCachedSizes);
    RunTasks(kRunFind, {task}, {1 << 26});
  }
  RunTasks(kRunFind, Traps(), kTrapSizes);
  RunTasks(kRunFind, PiecesOfEnglish(), kPieceSizes);
  RunTasks(kRunFind, {NearHit("Key", 10), NearHit("Key", 100)}, {1 << 10, 1 << 20});
  RunEach(kRunFind, AllForward, ViewFind());

  RunTasks(kRunFindLast, PlainTasks(false), kCachedSizes);
  RunTasks(kRunFindLast, {PlainTasks(false).front()}, {1 << 26});
  RunTasks(kRunFindLast, Traps(), kTrapSizes);
  RunEach(kRunFindLast, AllBackward, ViewFindLast());

  RunTasks(kRunFindTerminated, PlainTasks(true), kCachedSizes);
  RunTasks(kRunFindTerminated, Traps(), kTrapSizes);
  RunTasks(kRunFindTerminated, PiecesOfEnglish(), kPieceSizes);
  RunTasks(kRunFindTerminated, {NearHit("Key", 10), NearHit("Key", 100)},
           {1 << 10, 1 << 16, 1 << 20});
  RunEach(kRunFindTerminated, AllForward, ViewFind());
});

}  // namespace
}  // namespace vekch_bench
