// SPDX-License-Identifier: MIT

// Editing beside memcpy and memmove where they do the same, std::string, a plain loop, and a split
// by memchr.

#include <string.h>

#include <memory>
#include <random>
#include <string>

#include "bench/edit_peers.h"
#include "bench/inputs.h"
#include "bench/ratios.h"
#include "vekch/vekch.h"

namespace vekch_bench {
namespace {

constexpr int64_t kSizes[] = {2, 8, 15, 16, 31, 32, 64, 100, 256, 1 << 10, 4096, 1 << 16, 1 << 20};

// What the std::string peers work in: it never has to grow.
std::shared_ptr<std::string> Roomy(int64_t bytes) {
  auto text = std::make_shared<std::string>();
  text->reserve(static_cast<size_t>(bytes) + 64);
  return text;
}

int64_t DigestOf(const std::string& text) {
  return Digest(text.data(), static_cast<int64_t>(text.size()));
}

void RunConcat(int64_t bytes) {
  const Input first = RandomLetters(bytes / 2);
  const Input second = RandomBytes(bytes - bytes / 2, 3);
  const Input destination(bytes);
  uint8_t* to = destination.data();
  const auto joined = Roomy(bytes);
  const auto written = [=] { return Digest(to, bytes); };
  Case("concat", "halves", bytes)
      .Ours([a = first.data(), b = second.data(), m = first.length(), n = second.length(),
             to] { return veksConcat_8u(a, m, b, n, to); },
            written)
      .Peer(
          "memcpy",
          [a = first.data(), b = second.data(), m = first.size(), n = second.size(), to] {
            memcpy(to, a, m);
            return memcpy(to + m, b, n) != nullptr;
          },
          written)
      .Peer(
          "std::string",
          [joined, a = first.view(), b = second.view()] {
            return joined->assign(a).append(b).size();
          },
          [joined] { return DigestOf(*joined); })
      .Run();
}

// Rows as an order system exports them, in one line: numbers, dates, names, amounts, empty fields.
Input Csv(int64_t bytes) {
  static constexpr std::string_view kNames[] = {"Baker", "Ng",       "Papadopoulos", "O'Brien",
                                                "Li",    "Svensson", "Abe",          "Fernandez",
                                                "Kim",   "Novak"};
  static constexpr std::string_view kStreets[] = {"12 Mill Lane", "4b High Street", "Flat 3",
                                                  "The Old Rectory, Church Road", ""};
  static constexpr std::string_view kTowns[] = {"York", "Stoke-on-Trent", "Ely", "Bath",
                                                "Kingston upon Hull"};
  static constexpr std::string_view kStates[] = {"shipped", "paid", "returned", "open", ""};
  std::minstd_rand random(5);
  const auto number = [&random](uint32_t limit) { return std::to_string((random() >> 8) % limit); };
  const auto one = [&random](const auto& list) {
    return std::string(list[(random() >> 8) % std::size(list)]);
  };
  std::string text;
  while (text.size() < static_cast<size_t>(bytes)) {
    text += number(1000000) + ",2026-0" + number(9) + "-1" + number(10) + ',' + one(kNames) + ',' +
            one(kStreets).substr(0, 12) + ',' + one(kTowns) + ',' + number(2000) + '.' +
            number(10) + "0,EUR," + number(20) + ',' + one(kStates) + ',';
  }
  Input csv(bytes);
  csv.Put(0, std::string_view(text).substr(0, static_cast<size_t>(bytes)));
  return csv;
}

struct StringList {
  std::vector<const uint8_t*> strings;
  std::vector<int32_t> lengths;
};

void RunConcatList(const char* name, const std::shared_ptr<StringList>& list) {
  const size_t count = list->strings.size();
  const int64_t bytes = Sum(list->lengths) + static_cast<int64_t>(count) - 1;
  const Input destination(bytes);
  uint8_t* to = destination.data();
  const auto joined = Roomy(bytes);
  const auto written = [=] { return Digest(to, bytes); };
  Case("concat_list", name, bytes)
      .Ours(
          [=] {
            return veksConcatC_8u_D2L(list->strings.data(), list->lengths.data(),
                                      static_cast<int32_t>(count), ',', to);
          },
          written)
      .Peer(
          "memcpy",
          [=] {
            uint8_t* p = to;
            for (size_t i = 0; i < count; ++i) {
              if (i > 0) {
                *p++ = ',';
              }
              const auto length = static_cast<size_t>(list->lengths[i]);
              memcpy(p, list->strings[i], length);
              p += length;
            }
            return p - to;
          },
          written)
      .Peer(
          "std::string",
          [=] {
            joined->clear();
            for (size_t i = 0; i < count; ++i) {
              if (i > 0) {
                joined->push_back(',');
              }
              joined->append(reinterpret_cast<const char*>(list->strings[i]),
                             static_cast<size_t>(list->lengths[i]));
            }
            return joined->size();
          },
          [=] { return DigestOf(*joined); })
      .Run();
}

// The same text over and over, in lengths that follow no pattern.
void RunConcatLengths(const char* name, int32_t lowest, int32_t highest) {
  constexpr size_t kCount = 64;
  const Input text = RandomLetters(highest);
  const auto list = std::make_shared<StringList>();
  list->strings.assign(kCount, text.data());
  list->lengths = RandomLengths(kCount, lowest, highest);
  RunConcatList(name, list);
}

// The fields of a table, joined again.
void RunConcatCsv(int64_t bytes) {
  const Input csv = Csv(bytes);
  const auto list = std::make_shared<StringList>();
  const std::string_view text = csv.view();
  for (size_t from = 0; from < text.size();) {
    const size_t end = std::min(text.find(',', from), text.size());
    list->strings.push_back(csv.data() + from);
    list->lengths.push_back(static_cast<int32_t>(end - from));
    from = end + 1;
  }
  RunConcatList("CSV", list);
}

// A text of eight bytes in the middle, into a copy.
void RunInsert(int64_t bytes) {
  const Input source = RandomLetters(bytes);
  const Input destination(bytes + 8);
  const Input inserted = RandomBytes(8);
  const uint8_t* from = source.data();
  const uint8_t* text = inserted.data();
  uint8_t* to = destination.data();
  const auto length = static_cast<int32_t>(bytes);
  const auto half = static_cast<size_t>(bytes / 2);
  const auto edited = Roomy(bytes);
  const auto written = [=] { return Digest(to, bytes + 8); };
  Case("insert", "8 in the middle", bytes)
      .Ours([=] { return veksInsert_8u(from, length, text, 8, to, length / 2); }, written)
      .Peer(
          "memcpy",
          [=] {
            memcpy(to, from, half);
            memcpy(to + half, text, 8);
            return memcpy(to + half + 8, from + half, static_cast<size_t>(bytes) - half) != nullptr;
          },
          written)
      .Peer(
          "std::string",
          [=, view = source.view(), added = inserted.view()] {
            return edited->assign(view).insert(half, added).size();
          },
          [edited] { return DigestOf(*edited); })
      .Run();
}

// Inserted in place and removed again.
void RunInsertAndRemove(int64_t bytes) {
  const Input buffer(bytes + 8);
  const Input source = RandomLetters(bytes);
  const Input inserted = RandomBytes(8);
  const uint8_t* text = inserted.data();
  uint8_t* p = buffer.data();
  memcpy(p, source.data(), source.size());
  const auto half = static_cast<int32_t>(bytes / 2);
  const auto at = static_cast<size_t>(half);
  const size_t rest = static_cast<size_t>(bytes) - at;
  const auto edited = Roomy(bytes);
  edited->assign(source.view());
  const auto written = [=] { return Digest(p, bytes); };
  Case("insert_and_remove", "8 in place", bytes)
      .Calls(2)
      .Ours(
          [=] {
            auto length = static_cast<int32_t>(bytes);
            veksInsert_8u_I(text, 8, p, &length, half);
            return veksRemove_8u_I(p, &length, half, 8);
          },
          written)
      .Peer(
          "memmove",
          [=] {
            memmove(p + at + 8, p + at, rest);
            memcpy(p + at, text, 8);
            return memmove(p + at, p + at + 8, rest) != nullptr;
          },
          written)
      .Peer(
          "std::string",
          [edited, at, added = inserted.view()] {
            return edited->insert(at, added).erase(at, 8).size();
          },
          [edited] { return DigestOf(*edited); })
      .Run();
}

void RunRemove(int64_t bytes) {
  const Input source = RandomLetters(bytes + 8);
  const Input destination(bytes);
  const uint8_t* from = source.data();
  uint8_t* to = destination.data();
  const auto length = source.length();
  const auto half = static_cast<size_t>(bytes / 2);
  const auto edited = Roomy(bytes);
  const auto written = [=] { return Digest(to, bytes); };
  Case("remove", "8 in the middle", bytes)
      .Ours([=] { return veksRemove_8u(from, length, to, static_cast<int32_t>(half), 8); }, written)
      .Peer(
          "memcpy",
          [=] {
            memcpy(to, from, half);
            return memcpy(to + half, from + half + 8, static_cast<size_t>(bytes) - half) != nullptr;
          },
          written)
      .Peer(
          "std::string",
          [edited, half, view = source.view()] {
            return edited->assign(view.substr(0, half)).append(view.substr(half + 8)).size();
          },
          [edited] { return DigestOf(*edited); })
      .Run();
}

void RunReplace(const char* name, int64_t bytes, int64_t offset) {
  const Input source = RandomOf(bytes, "abcdefgh");
  const Input destination(bytes, offset);
  const uint8_t* from = source.data();
  uint8_t* to = destination.data();
  const auto length = source.length();
  const auto written = [=] { return Digest(to, bytes); };
  Case("replace", name, bytes)
      .Ours([=] { return veksReplaceC_8u(from, to, length, 'c', '_'); }, written)
      .Peer(
          "plain loop",
          [=] {
            PlainReplace(from, to, length, 'c', '_');
            return 0;
          },
          written)
      .Run();
}

// A line of fields of up to `longest` bytes.
Input Fields(int64_t bytes, int32_t longest) {
  Input source = RandomLetters(bytes);
  for (int64_t i = 0; i < bytes; ++i) {
    i += RandomLengths(static_cast<size_t>(i % 64 + 1), 0, longest).back();
    if (i < bytes) {
      source.data()[i] = ',';
    }
  }
  return source;
}

void RunSplit(const char* name, const Input& source, int32_t longest) {
  const int64_t bytes = source.length();
  const auto slots = static_cast<size_t>(bytes);
  const Input room(bytes);
  const auto pointers = std::make_shared<std::vector<uint8_t*>>(slots);
  for (size_t i = 0; i < slots; ++i) {
    // A piece is shorter than what the slots before it leave of the room.
    (*pointers)[i] = room.data() + i % (slots - std::min(slots - 1, static_cast<size_t>(longest)));
  }
  const auto lengths = std::make_shared<std::vector<int32_t>>(slots);
  const auto capacities = std::make_shared<std::vector<int32_t>>(slots, longest);
  const uint8_t* from = source.data();
  const auto length = source.length();
  const auto written = [=] {
    return Digest(lengths->data(), static_cast<int64_t>(sizeof(int32_t) * slots));
  };
  // Every contender refills the capacities, which only ours needs.
  const auto refill = [=] { memcpy(lengths->data(), capacities->data(), sizeof(int32_t) * slots); };
  Case("split", name, bytes)
      .Ours(
          [=] {
            refill();
            auto count = static_cast<int32_t>(slots);
            return veksSplitC_8u_D2L(from, length, ',', pointers->data(), lengths->data(), &count);
          },
          written)
      .Peer(
          "memchr and memcpy",
          [=] {
            refill();
            return MemchrSplit(from, length, ',', pointers->data(), lengths->data());
          },
          written)
      .Run();
}

const Family kEdit([] {
  for (const int64_t bytes : kSizes) {
    RunConcat(bytes);
  }
  RunConcatLengths("64 of 1 to 16", 1, 16);
  RunConcatLengths("64 of 20 to 100", 20, 100);
  RunConcatLengths("64 of 500 to 2000", 500, 2000);
  RunConcatCsv(1 << 10);
  RunConcatCsv(1 << 16);
  for (const int64_t bytes : kSizes) {
    RunInsert(bytes);
  }
  for (const int64_t bytes : kSizes) {
    RunInsertAndRemove(bytes);
  }
  for (const int64_t bytes : kSizes) {
    RunRemove(bytes);
  }
  for (const int64_t bytes : {1, 2, 4, 8, 16, 31, 64, 100, 256, 1 << 10, 4096, 1 << 16, 1 << 20}) {
    RunReplace("aligned", bytes, 0);
  }
  RunReplace("unaligned", 100, 3);
  RunReplace("unaligned", 4096, 3);
  for (const int64_t bytes : {64, 1 << 10, 1 << 16}) {
    RunSplit("fields to 10", Fields(bytes, 10), 10);
    RunSplit("fields to 60", Fields(bytes, 60), 60);
    RunSplit("CSV", Csv(bytes), 60);
  }
  RunSplit("fields to 1000", Fields(1 << 16, 1000), 1000);
});

}  // namespace
}  // namespace vekch_bench
