// SPDX-License-Identifier: MIT

// The conversions beside ICU, by its string functions and by its converters, and iconv.

#include <iconv.h>
#include <stdio.h>
#include <stdlib.h>
#include <unicode/ucnv.h>
#include <unicode/ustring.h>

#include <random>

#include "bench/inputs.h"
#include "bench/ratios.h"
#include "bench/utf_texts.h"
#include "vekch/vekch.h"

namespace vekch_bench {
namespace {

constexpr int64_t kSizes[] = {1,  2,  3,  4,  6,   8,       12,      16,
                              20, 24, 32, 64, 256, 1 << 10, 1 << 16, 1 << 20};

// One conversion of a text that starts at `from`, into a buffer with room for whatever it gives;
// the results are the elements written. Each peer does it both ways.

using ToUnits = int32_t (*)(const char* from, int32_t length, char16_t* to, int32_t room);
using ToBytes = int32_t (*)(const char16_t* from, int32_t length, char* to, int32_t room);

int32_t OurUnits(const char* from, int32_t length, char16_t* to, int32_t room) {
  veksConvertUTF_8u16u(reinterpret_cast<const uint8_t*>(from), &length,
                       reinterpret_cast<uint16_t*>(to), &room, 0);
  return room;
}

int32_t OurBytes(const char16_t* from, int32_t length, char* to, int32_t room) {
  veksConvertUTF_16u8u(reinterpret_cast<const uint16_t*>(from), &length,
                       reinterpret_cast<uint8_t*>(to), &room, 0);
  return room;
}

int32_t StringUnits(const char* from, int32_t length, char16_t* to, int32_t room) {
  UErrorCode error = U_ZERO_ERROR;
  int32_t written = 0;
  u_strFromUTF8(to, room, &written, from, length, &error);
  return written;
}

int32_t StringBytes(const char16_t* from, int32_t length, char* to, int32_t room) {
  UErrorCode error = U_ZERO_ERROR;
  int32_t written = 0;
  u_strToUTF8(to, room, &written, from, length, &error);
  return written;
}

UConverter* TheConverter() {
  static UConverter* const converter = [] {
    UErrorCode error = U_ZERO_ERROR;
    return ucnv_open("UTF-8", &error);
  }();
  return converter;
}

int32_t ConverterUnits(const char* from, int32_t length, char16_t* to, int32_t room) {
  UErrorCode error = U_ZERO_ERROR;
  char16_t* end = to;
  ucnv_toUnicode(TheConverter(), &end, to + room, &from, from + length, nullptr, 1, &error);
  return static_cast<int32_t>(end - to);
}

int32_t ConverterBytes(const char16_t* from, int32_t length, char* to, int32_t room) {
  UErrorCode error = U_ZERO_ERROR;
  char* end = to;
  ucnv_fromUnicode(TheConverter(), &end, to + room, &from, from + length, nullptr, 1, &error);
  return static_cast<int32_t>(end - to);
}

iconv_t OpenIconv(const char* to, const char* from) {
  const iconv_t opened = iconv_open(to, from);
  if (opened == reinterpret_cast<iconv_t>(-1)) {
    fprintf(stderr, "iconv knows no %s or no %s\n", to, from);
    exit(1);
  }
  return opened;
}

template <class From, class To>
int32_t Iconv(iconv_t opened, const From* from, int32_t length, To* to, int32_t room) {
  char* source = const_cast<char*>(reinterpret_cast<const char*>(from));
  char* end = reinterpret_cast<char*>(to);
  size_t left = static_cast<size_t>(length) * sizeof(From);
  size_t free = static_cast<size_t>(room) * sizeof(To);
  iconv(opened, &source, &left, &end, &free);
  return static_cast<int32_t>(reinterpret_cast<To*>(end) - to);
}

int32_t IconvUnits(const char* from, int32_t length, char16_t* to, int32_t room) {
  static const iconv_t opened = OpenIconv("UTF-16LE", "UTF-8");
  return Iconv(opened, from, length, to, room);
}

int32_t IconvBytes(const char16_t* from, int32_t length, char* to, int32_t room) {
  static const iconv_t opened = OpenIconv("UTF-8", "UTF-16LE");
  return Iconv(opened, from, length, to, room);
}

// A function as a type of its own: the timing loop then calls it directly.
template <auto kFunction>
struct Converter {
  template <class From, class To>
  int32_t operator()(const From* from, int32_t length, To* to, int32_t room) const {
    return kFunction(from, length, to, room);
  }
};

struct Piece {
  int32_t start;
  int32_t length;
};

// Converts all pieces of a text, one after the other into the same buffer, and answers for the last
// one's result and for the sum of the lengths.
template <class From, class To>
struct Task {
  const From* from;
  std::vector<Piece> pieces;
  std::vector<To> to;

  template <class Convert>
  auto Run(Convert convert) {
    return [this, convert] {
      int64_t sum = 0;
      for (const Piece& piece : pieces) {
        sum +=
            convert(from + piece.start, piece.length, to.data(), static_cast<int32_t>(to.size()));
      }
      return sum;
    };
  }

  template <class Convert>
  auto Answer(Convert convert) {
    return [this, convert] {
      int64_t answer = 0;
      for (const Piece& piece : pieces) {
        const int32_t written =
            convert(from + piece.start, piece.length, to.data(), static_cast<int32_t>(to.size()));
        answer = answer * 31 + Digest(to.data(), written * static_cast<int64_t>(sizeof(To)));
      }
      return answer;
    };
  }
};

template <class Ours, class String, class Conv, class Icv, class From, class To>
void RunCase(const char* family, const std::string& name, int64_t bytes, Task<From, To>& task) {
  Case(family, name, bytes)
      .Calls(static_cast<int64_t>(task.pieces.size()))
      .Ours(task.Run(Ours()), task.Answer(Ours()))
      .Peer("ICU strings", task.Run(String()), task.Answer(String()))
      .Peer("ICU converters", task.Run(Conv()), task.Answer(Conv()))
      .Peer("iconv", task.Run(Icv()), task.Answer(Icv()))
      .Run();
}

void RunToUnits(const std::string& name, int64_t bytes, const std::string& text,
                const std::vector<Piece>& pieces) {
  Task<char, char16_t> task{text.data(), pieces, std::vector<char16_t>(text.size() + 8)};
  RunCase<Converter<OurUnits>, Converter<StringUnits>, Converter<ConverterUnits>,
          Converter<IconvUnits>>("utf8_to_utf16", name, bytes, task);
}

void RunToBytes(const std::string& name, int64_t bytes, const std::u16string& text,
                const std::vector<Piece>& pieces) {
  Task<char16_t, char> task{text.data(), pieces, std::vector<char>(3 * text.size() + 8)};
  RunCase<Converter<OurBytes>, Converter<StringBytes>, Converter<ConverterBytes>,
          Converter<IconvBytes>>("utf16_to_utf8", name, bytes, task);
}

std::u16string ToUtf16(const std::string& text) {
  std::u16string units(text.size() + 1, u'\0');
  units.resize(static_cast<size_t>(StringUnits(text.data(), static_cast<int32_t>(text.size()),
                                               units.data(), static_cast<int32_t>(units.size()))));
  return units;
}

bool IsInside(char element) { return (element & 0xC0) == 0x80; }
bool IsInside(char16_t element) { return (element & 0xFC00) == 0xDC00; }

// Whole characters from anywhere in the text, of about 1 to 32 elements each.
template <class Text>
std::vector<Piece> ShortPieces(const Text& text) {
  constexpr size_t kPieces = 4000;
  std::mt19937 random(11);
  std::vector<Piece> pieces;
  for (const int32_t length : RandomLengths(kPieces, 1, 32)) {
    size_t start = random() % (text.size() - 64);
    while (IsInside(text[start])) {
      ++start;
    }
    size_t end = start + static_cast<size_t>(length);
    while (IsInside(text[end])) {
      ++end;
    }
    pieces.push_back({static_cast<int32_t>(start), static_cast<int32_t>(end - start)});
  }
  return pieces;
}

int64_t TotalLength(const std::vector<Piece>& pieces) {
  int64_t total = 0;
  for (const Piece& piece : pieces) {
    total += piece.length;
  }
  return total;
}

const Family kToUnits([] {
  for (const std::string name : kTextNames) {
    for (const int64_t bytes : kSizes) {
      const std::string text = MakeText(name, bytes);
      RunToUnits(name, bytes, text, {{0, static_cast<int32_t>(text.size())}});
    }
    const std::string text = MakeText(name, 1 << 16);
    const std::vector<Piece> pieces = ShortPieces(text);
    RunToUnits(name + ", 1-32 mixed", TotalLength(pieces), text, pieces);
  }
});

// The sizes are those of the UTF-8 that is made.
const Family kToBytes([] {
  for (const std::string name : kTextNames) {
    for (const int64_t bytes : kSizes) {
      const std::u16string text = ToUtf16(MakeText(name, bytes));
      RunToBytes(name, bytes, text, {{0, static_cast<int32_t>(text.size())}});
    }
    const std::u16string text = ToUtf16(MakeText(name, 1 << 16));
    const std::vector<Piece> pieces = ShortPieces(text);
    RunToBytes(name + ", 1-32 mixed", 2 * TotalLength(pieces), text, pieces);
  }
});

}  // namespace
}  // namespace vekch_bench
