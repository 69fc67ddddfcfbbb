// SPDX-License-Identifier: MIT

// Strings of 2^31 - 1 bytes, the most that a length can express: sums of positions and lengths that
// pass it must not wrap.
//
// The text is untouched pages of zeros with a few bytes set, so reading it takes no memory. What is
// written goes to addresses after which the same few pages lie again and again. Around both lie
// pages that can't be touched, as far as a wrapped position leads. Where there is no such memory, a
// test says so and is skipped.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#ifdef _WIN32
#include <windows.h>
#else
#include <sys/mman.h>
#include <unistd.h>
#endif

#include "tests/pattern_object.h"

namespace vekch::test {
namespace {

constexpr int32_t kMost = INT32_MAX;
constexpr int32_t kLast = kMost - 1;       // the last position
constexpr size_t kHuge = size_t{1} << 32;  // room for kMost units, or for twice kMost bytes
constexpr size_t kFold = size_t{4} << 20;  // after so many bytes the same pages follow

using Bytes = std::basic_string<uint8_t>;

Bytes operator""_b(const char* text, size_t length) { return Bytes(text, text + length); }
int32_t Size(const Bytes& bytes) { return static_cast<int32_t>(bytes.size()); }

// ---- Memory.

// kHuge bytes, and as many on either side that can't be touched.
class HugePages {
 public:
  HugePages() : all_(Reserve(3 * kHuge)) {}
  ~HugePages() { Release(all_, 3 * kHuge); }
  HugePages(const HugePages&) = delete;
  HugePages& operator=(const HugePages&) = delete;

  bool MapZeros() { return all_ != nullptr && CommitZeros(all_ + kHuge, kHuge); }
  bool MapFolded() { return all_ != nullptr && Fold(all_ + kHuge, kHuge); }

  // The last `size` bytes; and zeros that can be put where folded pages end.
  uint8_t* AtEnd(size_t size) const { return all_ + 2 * kHuge - size; }
  bool EndWithZeros() { return MapZerosAt(AtEnd(kFold)); }

 private:
#ifdef _WIN32
  static uint8_t* Reserve(size_t size) {
    return static_cast<uint8_t*>(VirtualAlloc(nullptr, size, MEM_RESERVE, PAGE_NOACCESS));
  }
  static void Release(uint8_t* p, size_t /*size*/) { VirtualFree(p, 0, MEM_RELEASE); }
  static bool CommitZeros(uint8_t* p, size_t size) {
    return VirtualAlloc(p, size, MEM_COMMIT, PAGE_READWRITE) != nullptr;
  }
  static HANDLE NewPages() {
    return CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0,
                              static_cast<DWORD>(kFold), nullptr);
  }
  static bool MapAt(HANDLE pages, uint8_t* p) {
    return pages != nullptr && MapViewOfFileEx(pages, FILE_MAP_WRITE, 0, 0, kFold, p) == p;
  }
  static bool MapZerosAt(uint8_t* p) { return UnmapViewOfFile(p) != 0 && MapAt(NewPages(), p); }
  // Views go where nothing is reserved: what lies around them is reserved anew. They stay until the
  // program ends, as reserving at other addresses costs nothing.
  static bool Fold(uint8_t* p, size_t size) {
    const HANDLE pages = NewPages();
    Release(p - kHuge, 3 * kHuge);
    bool done = true;
    for (uint8_t* guard : {p - kHuge, p + size}) {
      done = done && VirtualAlloc(guard, kHuge, MEM_RESERVE, PAGE_NOACCESS) == guard;
    }
    for (size_t i = 0; done && i < size; i += kFold) {
      done = MapAt(pages, p + i);
    }
    return done;
  }
#else
  static uint8_t* Reserve(size_t size) {
    void* const p =
        mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    return p == MAP_FAILED ? nullptr : static_cast<uint8_t*>(p);
  }
  static void Release(uint8_t* p, size_t size) {
    if (p != nullptr) {
      munmap(p, size);
    }
  }
  static bool CommitZeros(uint8_t* p, size_t size) {
    return mprotect(p, size, PROT_READ | PROT_WRITE) == 0;
  }
  static bool MapZerosAt(uint8_t* p) {
    constexpr int kHow = MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED;
    return mmap(p, kFold, PROT_READ | PROT_WRITE, kHow, -1, 0) != MAP_FAILED;
  }
  static bool Fold(uint8_t* p, size_t size) {
    const int file = memfd_create("folded", 0);
    bool done = file >= 0 && ftruncate(file, kFold) == 0;
    for (size_t i = 0; done && i < size; i += kFold) {
      constexpr int kHow = MAP_SHARED | MAP_FIXED;
      done = mmap(p + i, kFold, PROT_READ | PROT_WRITE, kHow, file, 0) != MAP_FAILED;
    }
    close(file);
    return done;
  }
#endif

  uint8_t* all_;
};

// A byte of the text that is no zero; a position below 0 counts from the end.
struct Mark {
  int64_t at;
  uint8_t byte;
};

using Marks = std::vector<Mark>;

class SizeTest : public testing::Test {
 protected:
  void SetUp() override {
    if (!source.MapZeros()) {
      GTEST_SKIP() << "SKIPPED: 4 GiB of untouched pages aren't to be had here";
    }
    text = source.AtEnd(kMost);
    units = reinterpret_cast<uint16_t*>(source.AtEnd(2 * size_t{kMost}));
  }

  void Put(const Marks& marks) {
    for (const Mark& mark : marks) {
      text[mark.at < 0 ? mark.at + kMost : mark.at] = mark.byte;
    }
  }

  void Wipe(Marks marks) {
    for (Mark& mark : marks) {
      mark.byte = 0;
    }
    Put(marks);
  }

  HugePages source;
  HugePages room;
  uint8_t* text = nullptr;    // kMost bytes
  uint16_t* units = nullptr;  // kMost units, the text at their end
};

#define VEKCH_NEEDS_ROOM()                                                           \
  if (!room.MapFolded()) {                                                           \
    GTEST_SKIP() << "SKIPPED: pages can't be mapped at many addresses at once here"; \
  }                                                                                  \
  static_assert(true)

// ---- Finding, hashing, comparing.

struct FindCase {
  vekStatus (*find)(const uint8_t*, int32_t, const uint8_t*, int32_t, int32_t*);
  Bytes sought;
  int32_t expected;
};

const Bytes kDigits = "0123456789"_b;
const Bytes kMisleading = Bytes(64, 0) + "y"_b + Bytes(64, 0);

// In zeros between an "a" and a "z".
const FindCase kFinds[] = {
    {veksFind_8u, "\0z"_b, kLast - 1},
    {veksFind_8u, "\0\0\0z"_b, kLast - 3},
    {veksFind_8u, Bytes(40, 0) + "z"_b, kLast - 40},
    {veksFind_8u, "ea"_b, -1},
    {veksFind_8u, "q\0"_b, -1},
    {veksFind_8u, "zq\0\0"_b, -1},
    {veksFind_8u, kMisleading, -1},
    {veksFind_8u, Bytes(15, 0) + "z"_b, kLast - 15},
    {veksFind_8u, Bytes(70000, 0) + "z"_b, kLast - 70000},
    {veksFindRev_8u, "a\0"_b, 0},
    {veksFindRev_8u, "a"_b + Bytes(70000, 0), 0},
    {veksFindRev_8u, "a\0\0\0"_b, 0},
    {veksFindRev_8u, "a"_b + Bytes(40, 0), 0},
    {veksFindRev_8u, "ea"_b, -1},
    {veksFindRev_8u, "\0q"_b, -1},
    {veksFindRev_8u, "zq\0\0"_b, -1},
    {veksFindRev_8u, kMisleading, -1},
    {veksFindCAny_8u, "z"_b, kLast},
    {veksFindCAny_8u, "qz"_b, kLast},
    {veksFindCAny_8u, "pqxz"_b, kLast},
    {veksFindCAny_8u, "xyz"_b, kLast},
    {veksFindCAny_8u, "pqrstxyz"_b, kLast},
    {veksFindCAny_8u, kDigits + "bdfz"_b, kLast},
    {veksFindCAny_8u, kDigits + "bcdefghijklmnopqrstuvwxyzBCDEFGHIJKLM"_b, kLast},
    {veksFindCAny_8u, "bdfhjlnprtvxz13579"_b, kLast},
    {veksFindCAny_8u, "qx"_b, -1},
    {veksFindRevCAny_8u, "a"_b, 0},
    {veksFindRevCAny_8u, "aq"_b, 0},
    {veksFindRevCAny_8u, "abpq"_b, 0},
    {veksFindRevCAny_8u, kDigits + "aceg"_b, 0},
    {veksFindRevCAny_8u, "acegikmoqsuwy13579"_b, 0},
    {veksFindRevCAny_8u, "qx"_b, -1},
};

TEST_F(SizeTest, Find) {
  Put({{0, 'a'}, {-1, 'z'}});
  int32_t index = -7;
  for (size_t i = 0; i < std::size(kFinds); i += kShare) {
    const FindCase& test = kFinds[i];
    ASSERT_EQ(test.find(text, kMost, test.sought.data(), Size(test.sought), &index), StatusNoError);
    EXPECT_EQ(index, test.expected) << testing::PrintToString(test.sought);
  }
  veksFindC_8u(text, kMost, 'z', &index);
  EXPECT_EQ(index, kLast);
  veksFindRevC_8u(text, kMost, 'a', &index);
  EXPECT_EQ(index, 0);
}

TEST_F(SizeTest, FindInTerminated) {
  VEKCH_NEEDS_ROOM();
  ASSERT_TRUE(room.EndWithZeros());
  uint8_t* const end = room.AtEnd(kFold);
  std::fill(end - kFold, end, uint8_t{'a'});
  const uint8_t* const string = end - kMost;
  int32_t index = -7;
  veksFindC_Z_8u(string, 0, &index);
  EXPECT_EQ(index, kMost);
  veksFindC_Z_8u(string, 'z', &index);
  EXPECT_EQ(index, -1);
  const uint8_t needle[] = "aza";
  veksFind_Z_8u(string, needle, &index);
  EXPECT_EQ(index, -1);
}

uint32_t Power(uint32_t base, uint32_t exponent) {
  uint32_t power = 1;
  for (; exponent != 0; exponent >>= 1, base *= base) {
    power *= (exponent & 1) != 0 ? base : 1;
  }
  return power;
}

TEST_F(SizeTest, Hash) {
  const uint32_t expected31 = 'a' * Power(31, kMost - 1) + 'z';
  uint32_t hash = 7;
  units[0] = 'a';
  units[kLast] = 'z';
  veksHashSJ2_16u32u(units, kMost, &hash);
  EXPECT_EQ(hash, expected31);
  veksHash_16u32u(units, kMost, &hash);
  EXPECT_EQ(hash, uint32_t{'z'});
  veksHashMSCS_16u32u(units, kMost, &hash);
  EXPECT_EQ(hash, (5381U * 33) ^ 'a');
  units[kLast] = 0;
  Put({{0, 'a'}, {-1, 'z'}});
  veksHashSJ2_8u32u(text, kMost, &hash);
  EXPECT_EQ(hash, expected31);
  veksHash_8u32u(text, kMost, &hash);
  EXPECT_EQ(hash, uint32_t{'z'});
  veksHashMSCS_8u32u(text, kMost, &hash);
  EXPECT_EQ(hash, (5381U * 33) ^ 'a');
}

TEST_F(SizeTest, Compare) {
  const uint8_t* const zeros = text - kMost;
  int32_t result = -7;
  for (const auto compare : {veksCompare_8u, veksCompareIgnoreCaseLatin_8u}) {
    compare(text, zeros, kMost, &result);
    EXPECT_EQ(result, 0);
    Put({{-1, 'z'}});
    compare(text, zeros, kMost, &result);
    EXPECT_EQ(result, 'z');
    Wipe({{-1, 'z'}});
  }
  veksEqual_8u(text, zeros, kMost, &result);
  EXPECT_EQ(result, 1);
}

// ---- Trimming.

struct TrimCase {
  vekStatus (*trim)(const uint8_t*, int32_t, const uint8_t*, int32_t, uint8_t*, int32_t*);
  Marks marks;
  int32_t kept;
};

const TrimCase kTrims[] = {
    {veksTrimStartCAny_8u, {}, 0},
    {veksTrimEndCAny_8u, {{1, 'x'}, {4, 'x'}}, 5},
    {veksTrimCAny_8u, {{-30, 'x'}, {-28, 'x'}}, 3},
};

TEST_F(SizeTest, Trim) {
  const Bytes all = "\0bcdefgh"_b + kDigits;
  for (const TrimCase& test : kTrims) {
    Put(test.marks);
    uint8_t result[16];
    int32_t kept = -7;
    for (const int32_t members : {1, 2, 18}) {
      if (kShare > 1 && members != 18) {
        continue;
      }
      ASSERT_EQ(test.trim(text, kMost, all.data(), members, result, &kept), StatusNoError);
      EXPECT_EQ(kept, test.kept) << members << " members";
    }
    Wipe(test.marks);
  }
}

// ---- What writes as much. Of the result only the last bytes can be distinguished from others.

TEST_F(SizeTest, Edit) {
  VEKCH_NEEDS_ROOM();
  Put({{-1, 'Z'}});
  uint8_t* const to = room.AtEnd(kMost);
  const auto last = [to](int32_t length = kMost) { return to[length - 1]; };
  const uint8_t y[] = {'y'};
  veksReplaceC_8u(text, to, kMost, 'Z', 'q');
  EXPECT_EQ(last(), 'q');
  veksLowercaseLatin_8u(text, to, kMost);
  EXPECT_EQ(last(), 'z');
  veksUppercaseLatin_8u_I(to, kMost);
  EXPECT_EQ(last(), 'Z');
  veksConcat_8u(text, kLast, y, 1, to);
  EXPECT_EQ(last(), 'y');
  const uint8_t* const strings[] = {text, text, y};
  const int32_t lengths[] = {0, kMost - 3, 1};
  veksConcatC_8u_D2L(strings, lengths, 3, 'x', to);
  EXPECT_EQ(last(), 'y');
  veksInsert_8u(text, kLast, y, 1, to, kLast);
  EXPECT_EQ(last(), 'y');
  int32_t length = kLast;
  EXPECT_EQ(veksInsert_8u_I(y, 1, to, &length, kLast - 1), StatusNoError);
  EXPECT_EQ(length, kMost);
  EXPECT_EQ(to[kLast - 1], 'y');
  EXPECT_EQ(veksRemove_8u_I(to, &length, kLast - 1, 1), StatusNoError);
  EXPECT_EQ(length, kLast);
  EXPECT_EQ(veksRemove_8u(text, kMost, to, 1, 1), StatusNoError);
  EXPECT_EQ(last(kLast), 'Z');
  EXPECT_EQ(veksRemove_8u(text, kMost, to, kMost, 1), StatusLengthError);
  EXPECT_EQ(veksRemove_8u(text, kMost, to, 1, kMost), StatusLengthError);
  uint8_t* const pieces[] = {to, to};
  int32_t capacities[] = {kMost, kMost};
  int32_t count = 2;
  EXPECT_EQ(veksSplitC_8u_D2L(text, kMost, 'Z', pieces, capacities, &count), StatusNoError);
  EXPECT_EQ(count, 1);
  EXPECT_EQ(capacities[0], kLast);
  veksTrimC_8u(text, kMost, 'x', to, &length);
  EXPECT_EQ(length, kMost);
  EXPECT_EQ(last(), 'Z');
}

TEST_F(SizeTest, Convert) {
  VEKCH_NEEDS_ROOM();
  for (const int32_t swapped : {0, 1}) {
    // A character of three bytes, and one that does not fit.
    Put({{-3, 0xE4}, {-2, 0xB8}, {-1, 0xAD}});
    auto* const wide = reinterpret_cast<uint16_t*>(room.AtEnd(2 * size_t{kMost}));
    int32_t read = kMost;
    int32_t written = kMost;
    veksConvertUTF_8u16u(text, &read, wide, &written, swapped);
    EXPECT_EQ(read, kMost);
    EXPECT_EQ(written, kMost - 2);
    EXPECT_EQ(wide[kMost - 3], swapped != 0 ? 0x2D4E : 0x4E2D);
    Wipe({{-3, 0}, {-2, 0}, {-1, 0}});
    units[kLast] = 0xE9E9;
    read = kMost;
    written = kMost;
    veksConvertUTF_16u8u(units, &read, room.AtEnd(kMost), &written, swapped);
    EXPECT_EQ(read, kLast);
    EXPECT_EQ(written, kLast);
    units[kLast] = 0;
  }
}

// ---- Patterns.

struct SearchCase {
  const char* pattern;
  const char* options;
  Marks marks;
  const char* expected;  // "start+length" of each result
  int32_t format = 0;
};

constexpr char kAll[] = "0+2147483647";

const SearchCase kSearches[] = {
    // By literals.
    {"z", "", {{-1, 'z'}}, "2147483646+1"},
    {"ab", "", {}, ""},
    {"\\d+ab", "", {}, ""},
    {"\\d+ab", "", {{-3, '1'}, {-2, 'a'}, {-1, 'b'}}, "2147483644+3"},
    {"ab", "i", {{-2, 'A'}, {-1, 'b'}}, "2147483645+2"},
    {"q(ab)", "i", {{0, 'a'}, {1, 'b'}}, ""},
    {"(?<=xy)z", "", {{-3, 'x'}, {-2, 'y'}, {-1, 'z'}}, "2147483646+1"},
    {"abcd|efgh|xyz", "", {{-3, 'x'}, {-2, 'y'}, {-1, 'z'}}, "2147483644+3"},
    {"ab|z", "i", {{-1, 'Z'}}, "2147483646+1"},
    {"z", "g", {{0, 'z'}, {-1, 'z'}}, "0+1 2147483646+1"},
    // By the first bytes.
    {"[xyz][a-e]", "", {{-2, 'y'}, {-1, 'd'}}, "2147483645+2"},
    {"[xyz][a-e]{4}", "", {{-2, 'y'}, {-1, 'd'}}, ""},
    {"\\b[xy]", "", {{-1, 'y'}}, "2147483646+1"},
    {"^z", "m", {{-2, '\n'}, {-1, 'z'}}, "2147483646+1"},
    {".*z", "", {{-2, '\n'}, {-1, 'z'}}, "2147483646+1"},
    // As long as the text. A repetition without bound ends at 2^30 - 1.
    {"^(\\C*.*\\C*)$", "s", {}, "0+2147483647 0+2147483647"},
    {"^(\\C*)(.*).$", "s", {}, "0+2147483647 0+1073741823 1073741823+1073741823"},
    {"^\\C*(?>.*)(.+)z", "s", {{-1, 'z'}}, "0+2147483647 2147483645+1"},
    {"^(?>.*){3}$", "s", {}, kAll},
    {"^(?>.*\\C*.*)$", "s", {}, kAll},
    {"^(?:\\C*){3}$", "s", {}, kAll},
    {"^\\C*.*\\C*(?<!z)$", "sm", {{-1, '\n'}}, kAll},
    {"\\C*.*\\C*", "sg", {}, "0+2147483647 2147483647+0"},
    {"^\\C*(?>\\C*).$", "", {}, kAll, 1},
    // Code points that count more than their bytes: the sum stays at the most.
    {"^\\C*\\C*\\x{7FFFFFFF}{2}", "i", {}, kAll},
    {"^(?>\\x{7FFFFFFF}+)", "i", {{450000000, 'q'}}, kAll},
};

TEST_F(SizeTest, Search) {
  for (size_t i = 0; i < std::size(kSearches); i += kShare) {
    const SearchCase& test = kSearches[i];
    Put(test.marks);
    const PatternObject pattern(test.pattern, test.options, test.format);
    EXPECT_EQ(Show(Search(pattern.State(), text, kMost, 4), text), test.expected) << test.pattern;
    Wipe(test.marks);
  }
}

TEST_F(SizeTest, Replace) {
  VEKCH_NEEDS_ROOM();
  // The template may take as much again as what lies before the match.
  Put({{-1, 'z'}});
  const PatternObject pattern("z", "", 0);
  const uint8_t text4[] = "wxyz";
  uint64_t memory[10];
  auto* const replacement = reinterpret_cast<RegExpReplaceState*>(memory);
  ASSERT_EQ(veksRegExpReplaceInit(text4, replacement), StatusNoError);
  RegExpFindResult results[1];
  int32_t count = 1;
  int32_t read = kMost;
  int32_t written = kMost;
  EXPECT_EQ(veksRegExpReplace_8u(text, &read, room.AtEnd(size_t{kMost} + 3), &written, results,
                                 &count, pattern.State(), replacement),
            StatusNoError);
  EXPECT_EQ(count, 1);
  EXPECT_EQ(read, kMost);
  EXPECT_EQ(written, kMost);
  EXPECT_EQ(room.AtEnd(1)[0], 'z');
}

TEST_F(SizeTest, ReplaceEvery) {
  VEKCH_NEEDS_ROOM();
  Put({{0, 'z'}, {-1, 'z'}});
  const PatternObject pattern("z", "g", 0);
  struct Case {
    const char* replacement;
    int32_t read, written;  // the last byte of the room stays unused
  };
  const Case cases[] = {{"", kMost, kMost - 2}, {"$&", kLast, kLast}, {"wxyz", 1, 4}};
  for (const Case& test : cases) {
    uint64_t memory[10];
    auto* const replacement = reinterpret_cast<RegExpReplaceState*>(memory);
    veksRegExpReplaceInit(reinterpret_cast<const uint8_t*>(test.replacement), replacement);
    RegExpFindResult results[2];
    int32_t count = 2;
    int32_t read = kMost;
    int32_t written = kMost;
    EXPECT_EQ(veksRegExpReplace_8u(text, &read, room.AtEnd(kMost), &written, results, &count,
                                   pattern.State(), replacement),
              StatusNoError);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(read, test.read) << test.replacement;
    EXPECT_EQ(written, test.written) << test.replacement;
  }
}

}  // namespace
}  // namespace vekch::test
