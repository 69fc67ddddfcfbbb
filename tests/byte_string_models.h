// SPDX-License-Identifier: MIT

// The functions on byte strings as rows of the sweep, each with its naive model; and those that
// don't fit into a row (lists, splitting, zero-terminated strings), each called between pages that
// can't be touched and held against its model.

#ifndef VEKCH_TESTS_BYTE_STRING_MODELS_H
#define VEKCH_TESTS_BYTE_STRING_MODELS_H

#include <algorithm>
#include <vector>

#include "tests/sweep.h"
#include "vekch/vekch.h"

namespace vekch::test {

// ---- How a function is called: its arguments are taken from the call by their types.

using In = const uint8_t*;
using Result = int32_t*;

inline vekStatus Pass(vekStatus (*f)(In, uint8_t*, int32_t) noexcept, Call& c) {
  return f(c.text, c.to, c.length);
}
inline vekStatus Pass(vekStatus (*f)(uint8_t*, int32_t) noexcept, Call& c) {
  return f(c.to, c.length);
}
inline vekStatus Pass(vekStatus (*f)(In, In, int32_t, Result) noexcept, Call& c) {
  return f(c.text, c.other, c.length, &c.number);
}
inline vekStatus Pass(vekStatus (*f)(In, int32_t, uint8_t, Result) noexcept, Call& c) {
  return f(c.text, c.length, *c.other, &c.number);
}
inline vekStatus Pass(vekStatus (*f)(In, int32_t, In, int32_t, Result) noexcept, Call& c) {
  return f(c.text, c.length, c.other, c.otherLength, &c.number);
}
inline vekStatus Pass(vekStatus (*f)(In, int32_t, In, int32_t, uint8_t*, Result) noexcept,
                      Call& c) {
  return f(c.text, c.length, c.other, c.otherLength, c.to, &c.number);
}

template <auto kFunction>
vekStatus Run(Call& c) {
  return Pass(kFunction, c);
}

// ---- Case mapping.

inline constexpr char kCapitals[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
inline constexpr char kSmall[] = "abcdefghijklmnopqrstuvwxyz";

inline Output Map(Bytes text, const char* from, const char* to) {
  for (uint8_t& byte : text) {
    const char* letter = byte == 0 ? nullptr : std::strchr(from, byte);
    byte = letter == nullptr ? byte : static_cast<uint8_t>(to[letter - from]);
  }
  return {kNoNumber, text};
}

inline Output ToLower(const Input& in) { return Map(in.text, kCapitals, kSmall); }
inline Output ToUpper(const Input& in) { return Map(in.text, kSmall, kCapitals); }

inline constexpr Function kMappings[] = {
    {"Lower", Run<veksLowercaseLatin_8u>, ToLower, kAnyPosition},
    {"Lower_I", Run<veksLowercaseLatin_8u_I>, ToLower, kInPlace},
    {"Upper", Run<veksUppercaseLatin_8u>, ToUpper, kAnyPosition},
    {"Upper_I", Run<veksUppercaseLatin_8u_I>, ToUpper, kInPlace},
};

// ---- Comparison.

inline uint8_t FoldLatin(uint8_t byte) {
  return byte >= 'A' && byte <= 'Z' ? static_cast<uint8_t>(byte + 32) : byte;
}

inline Output NaiveCompare(const Input& in) {
  const auto differ = std::mismatch(in.text.begin(), in.text.end(), in.other.begin());
  return {differ.first == in.text.end() ? 0 : *differ.first - *differ.second};
}

inline Output NaiveCompareFolded(const Input& in) {
  Input folded = in;
  std::transform(in.text.begin(), in.text.end(), folded.text.begin(), FoldLatin);
  std::transform(in.other.begin(), in.other.end(), folded.other.begin(), FoldLatin);
  return NaiveCompare(folded);
}

inline constexpr Function kComparisons[] = {
    {"Compare", Run<veksCompare_8u>, NaiveCompare},
    {"IgnoreCase", Run<veksCompareIgnoreCaseLatin_8u>, NaiveCompareFolded},
    {"Equal", Run<veksEqual_8u>,
     [](const Input& in) -> Output { return {in.text == in.other ? 1 : 0}; }},
};

// ---- Searches: the first or last of the positions at which a predicate holds.

enum Direction { kForward, kBackward };

template <class Holds>
Output Naive(Direction direction, int32_t positions, Holds holds) {
  for (int32_t step = 0; step < positions; ++step) {
    const int32_t i = direction == kForward ? step : positions - 1 - step;
    if (holds(i)) {
      return {i};
    }
  }
  return {-1};
}

template <Direction kDirection>
Output NaiveFind(const Input& in) {
  const int32_t n = Size(in.other);
  return n == 0 ? Output{-1} : Naive(kDirection, Size(in.text) - n + 1, [&](int32_t i) {
    return std::equal(in.other.begin(), in.other.end(), in.text.begin() + i);
  });
}

template <Direction kDirection>
Output NaiveFindAny(const Input& in) {
  return Naive(kDirection, Size(in.text), [&](int32_t i) {
    return in.other.find(in.text[static_cast<size_t>(i)]) != Bytes::npos;
  });
}

inline constexpr Function kFindsOfByte[] = {
    {"FindC", Run<veksFindC_8u>, NaiveFind<kForward>},
    {"FindRevC", Run<veksFindRevC_8u>, NaiveFind<kBackward>},
};
inline constexpr Function kFindsOfNeedle[] = {
    {"Find", Run<veksFind_8u>, NaiveFind<kForward>},
    {"FindRev", Run<veksFindRev_8u>, NaiveFind<kBackward>},
};
inline constexpr Function kFindsOfSet[] = {
    {"FindCAny", Run<veksFindCAny_8u>, NaiveFindAny<kForward>},
    {"FindRevCAny", Run<veksFindRevCAny_8u>, NaiveFindAny<kBackward>},
};

// ---- Zero-terminated strings.

// A string in its own pages, with bytes around it that must not count. From 64 bytes before the end
// of the pages on, no aligned group after the terminator's may be read; at their start, none before
// the string's.
class TerminatedString {
 public:
  explicit TerminatedString(size_t longest) : buffer_(longest + 2 * kGroup) {}

  static constexpr size_t kGroup = 64;
  static constexpr size_t kPositions = 2 * kGroup;

  const uint8_t* Place(const Bytes& text, size_t position, uint8_t around) {
    std::fill(buffer_.AtStart(), buffer_.AtEnd(0), around);
    uint8_t* s = position < kGroup ? buffer_.AtEnd(text.size() + 1, position)
                                   : buffer_.AtStart(position - kGroup);
    std::copy(text.begin(), text.end(), s);
    s[text.size()] = 0;
    return s;
  }

 private:
  GuardedBuffer buffer_;
};

class TerminatedFinds {
 public:
  explicit TerminatedFinds(size_t longestText = 70000, size_t longestNeedle = 5100)
      : text_(longestText), needle_(longestNeedle) {}

  void ExpectByte(const Bytes& text, uint8_t value, size_t position) {
    const uint8_t* s = text_.Place(text, position, value == 0 ? 'x' : value);
    const size_t at = value == 0 ? text.size() : text.find(value);
    int32_t index = kNoNumber;
    ASSERT_EQ(veksFindC_Z_8u(s, value, &index), StatusNoError);
    ASSERT_EQ(index, static_cast<int32_t>(at)) << text.size() << " bytes, position " << position;
  }

  void ExpectNeedle(const Bytes& text, const Bytes& needle, size_t position) {
    const uint8_t* s = text_.Place(text, position, needle.empty() ? 'x' : needle[0]);
    const uint8_t* n = needle_.Place(needle, position * 37 % TerminatedString::kPositions, 'x');
    const size_t at = needle.empty() ? Bytes::npos : text.find(needle);
    int32_t index = kNoNumber;
    ASSERT_EQ(veksFind_Z_8u(s, n, &index), StatusNoError);
    ASSERT_EQ(index, static_cast<int32_t>(at))
        << text.size() << " and " << needle.size() << " bytes, position " << position;
  }

 private:
  TerminatedString text_;
  TerminatedString needle_;
};

// ---- Trimming.

template <bool kStart, bool kEnd>
Output NaiveTrim(const Input& in) {
  Bytes text = in.text;
  const auto drops = [&](uint8_t byte) { return in.other.find(byte) != Bytes::npos; };
  while (kStart && !text.empty() && drops(text.front())) {
    text.erase(0, 1);
  }
  while (kEnd && !text.empty() && drops(text.back())) {
    text.pop_back();
  }
  return {Size(text), text};
}

inline constexpr Function kTrimsOfSet[] = {
    {"TrimCAny", Run<veksTrimCAny_8u>, NaiveTrim<true, true>, kAnyPosition},
    {"TrimStartCAny", Run<veksTrimStartCAny_8u>, NaiveTrim<true, false>, kAnyPosition},
    {"TrimEndCAny", Run<veksTrimEndCAny_8u>, NaiveTrim<false, true>, kAnyPosition},
};

inline constexpr Function kTrimsOfByte[] = {
    {"TrimC", [](Call& c) { return veksTrimC_8u(c.text, c.length, *c.other, c.to, &c.number); },
     NaiveTrim<true, true>, kAnyPosition},
    {"TrimC_I",
     [](Call& c) {
       c.number = c.length;
       return veksTrimC_8u_I(c.to, &c.number, *c.other);
     },
     NaiveTrim<true, true>, kInPlace},
};

// ---- Editing. In place, the number is the length that is kept up to date.

inline Output Inserted(const Input& in) {
  return {kNoNumber, Bytes(in.text).insert(static_cast<size_t>(in.x), in.other)};
}

inline Output Removed(const Input& in) {
  return {kNoNumber, Bytes(in.text).erase(static_cast<size_t>(in.x), static_cast<size_t>(in.y))};
}

template <Output (*kModel)(const Input&)>
Output WithLength(const Input& in) {
  const Output output = kModel(in);
  return {Size(output.stored), output.stored};
}

inline constexpr Function kConcat = {
    "Concat", [](Call& c) { return veksConcat_8u(c.text, c.length, c.other, c.otherLength, c.to); },
    [](const Input& in) -> Output {
      return {kNoNumber, in.text + in.other};
    }};

inline constexpr Function kInsertions[] = {
    {"Insert",
     [](Call& c) { return veksInsert_8u(c.text, c.length, c.other, c.otherLength, c.to, c.x); },
     Inserted, kAnyPosition},
    {"Insert_I",
     [](Call& c) {
       c.number = c.length;
       return veksInsert_8u_I(c.other, c.otherLength, c.to, &c.number, c.x);
     },
     WithLength<Inserted>, kInPlace},
    {"Insert of the start",  // the inserted text is before the position, as `other` does
     [](Call& c) {
       return veksInsert_8u(c.text, c.length, c.to + c.x - c.otherLength, c.otherLength, c.to, c.x);
     },
     [](const Input& in) -> Output {
       const auto end = static_cast<size_t>(in.x);
       const size_t size = in.other.size();
       return {kNoNumber, Bytes(in.text).insert(end, in.text.substr(end - size, size))};
     },
     kInPlace},
};

inline constexpr Function kRemovals[] = {
    {"Remove", [](Call& c) { return veksRemove_8u(c.text, c.length, c.to, c.x, c.y); }, Removed},
    {"Remove_I",
     [](Call& c) {
       c.number = c.length;
       return veksRemove_8u_I(c.to, &c.number, c.x, c.y);
     },
     WithLength<Removed>, kInPlace},
};

inline constexpr Function kReplaceC = {
    "Replace",
    [](Call& c) {
      return veksReplaceC_8u(c.text, c.to, c.length, static_cast<uint8_t>(c.x),
                             static_cast<uint8_t>(c.y));
    },
    [](const Input& in) -> Output {
      Bytes text = in.text;
      std::replace(text.begin(), text.end(), static_cast<uint8_t>(in.x),
                   static_cast<uint8_t>(in.y));
      return {kNoNumber, text};
    },
    kAnyPosition};

// ---- Lists.

inline void ExpectConcatList(const std::vector<Bytes>& texts, bool delimited) {
  std::vector<const uint8_t*> strings;
  std::vector<int32_t> lengths;
  Bytes joined;
  for (const Bytes& text : texts) {
    joined += (strings.empty() || !delimited ? ""_b : ","_b) + text;
    strings.push_back(text.data());
    lengths.push_back(Size(text));
  }
  const auto count = static_cast<int32_t>(texts.size());
  GuardedBuffer buffer(joined.size());
  uint8_t* to = buffer.AtEnd(joined.size());
  ASSERT_EQ(delimited ? veksConcatC_8u_D2L(strings.data(), lengths.data(), count, ',', to)
                      : veksConcat_8u_D2L(strings.data(), lengths.data(), count, to),
            StatusNoError);
  ASSERT_EQ(Bytes(to, joined.size()), joined);
}

// ---- Splitting.

// Cuts the text into all its pieces first, then deals them out. Slots that stay unused are made
// unusable.
inline void ExpectSplit(const Bytes& text, const std::vector<int32_t>& capacities) {
  std::vector<Bytes> pieces;
  for (size_t start = 0; start < text.size(); start += pieces.back().size() + 1) {
    pieces.push_back(text.substr(start, text.find(',', start) - start));
  }
  const size_t slots = capacities.size();
  const size_t used = std::min(pieces.size(), slots);
  vekStatus expected = StatusNoError;
  std::vector<Bytes> room(slots, Bytes(80, kUnwritten));
  std::vector<uint8_t*> pointers(slots, nullptr);
  std::vector<int32_t> lengths(slots, -1);
  for (size_t i = 0; i < used; ++i) {
    expected = Size(pieces[i]) > capacities[i] ? StatusDestinationTruncated : expected;
    pointers[i] = room[i].data();
    lengths[i] = capacities[i];
  }
  expected = pieces.size() > slots ? StatusDestinationsExhausted : expected;
  auto count = static_cast<int32_t>(slots);
  GuardedBuffer buffer(text.size());
  uint8_t* source = buffer.AtEnd(text.size());
  std::copy(text.begin(), text.end(), source);
  ASSERT_EQ(veksSplitC_8u_D2L(source, Size(text), ',', pointers.data(), lengths.data(), &count),
            expected);
  ASSERT_EQ(count, static_cast<int32_t>(used));
  for (size_t i = 0; i < used; ++i) {
    const Bytes piece = pieces[i].substr(0, static_cast<size_t>(capacities[i]));
    ASSERT_EQ(lengths[i], Size(piece)) << "piece " << i;
    ASSERT_EQ(room[i], piece + Bytes(80 - piece.size(), kUnwritten)) << "piece " << i;
  }
}

// ---- Hashes.

inline uint32_t StepShiftXor(uint32_t h, uint32_t c) { return (h << 1) ^ c; }
inline uint32_t StepMultiply31(uint32_t h, uint32_t c) { return h * 31 + c; }
inline uint32_t StepMultiply33(uint32_t h, uint32_t c) { return (h * 33) ^ c; }

struct Hash {
  vekStatus (*bytes)(const uint8_t*, int32_t, uint32_t*) noexcept;
  vekStatus (*units)(const uint16_t*, int32_t, uint32_t*) noexcept;
  uint32_t (*step)(uint32_t, uint32_t);
  uint32_t start;
  bool stopsAtZero;
  bool storesEach;  // an overlapping hash is stored before every read
};

inline constexpr Hash kHashes[] = {
    {veksHash_8u32u, veksHash_16u32u, StepShiftXor, 0, false, false},
    {veksHashSJ2_8u32u, veksHashSJ2_16u32u, StepMultiply31, 0, false, true},
    {veksHashMSCS_8u32u, veksHashMSCS_16u32u, StepMultiply33, 5381, true, false},
};

// The definition for elements of `size` bytes, with the hash kept where the caller wants it.
inline void DefineHash(const Hash& hash, const uint8_t* string, int32_t length, size_t size,
                       uint8_t* to) {
  uint32_t h = hash.start;
  for (int32_t i = 0; i < length; ++i, string += size) {
    if (hash.storesEach) {
      std::memcpy(to, &h, sizeof h);
    }
    const uint32_t element = size == 1 ? *string : *string + string[1] * 256U;
    if (hash.stopsAtZero && element == 0) {
      break;
    }
    h = hash.step(h, element);
  }
  std::memcpy(to, &h, sizeof h);
}

inline vekStatus RunHash(const Hash& hash, const uint8_t* string, int32_t length, size_t size,
                         uint8_t* to) {
  auto* number = reinterpret_cast<uint32_t*>(to);
  return size == 1 ? hash.bytes(string, length, number)
                   : hash.units(reinterpret_cast<const uint16_t*>(string), length, number);
}

// Rows of the sweep: the hash is stored after the text's position, or wherever that lies.
template <size_t kHash, int32_t kSize>
constexpr Function kHashFunction = {
    "Hash", [](Call& c) { return RunHash(kHashes[kHash], c.text, c.length / kSize, kSize, c.to); },
    [](const Input& in) -> Output {
      Bytes to(4, 0);
      DefineHash(kHashes[kHash], in.text.data(), Size(in.text) / kSize, kSize, to.data());
      return {kNoNumber, to};
    }};
inline constexpr Function kHashFunctions[] = {kHashFunction<0, 1>, kHashFunction<1, 1>,
                                              kHashFunction<2, 1>, kHashFunction<0, 2>,
                                              kHashFunction<1, 2>, kHashFunction<2, 2>};

}  // namespace vekch::test

#endif
