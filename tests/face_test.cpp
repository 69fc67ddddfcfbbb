// SPDX-License-Identifier: MIT

// The C++ header beside naive models: what it makes of texts of every length around a piece, of the
// matches of patterns, and of faults. Built twice: as it comes, and without exceptions and with
// pieces so short that every text is longer than one.

#include "vekch/vekch.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <string_view>
#include <thread>

#include "tests/pattern_object.h"

#include "tests/guarded_buffer.h"

namespace vekch::test {
namespace {

// Texts in which everything occurs, of lengths around those of pieces.
std::vector<std::string> Texts() {
  std::vector<std::string> texts = {""};
  uint32_t state = 20261122;
  for (const size_t length : std::initializer_list<size_t>{1, 2, 31, 63, 64, 65, 127, 128, 129, 500,
                                                           8191, 8192, 8193, 20000}) {
    std::string text;
    while (text.size() < length) {
      state = state * 1103515245 + 12345;
      const uint32_t pick = state >> 16;
      text +=
          pick % 40 == 0 ? std::string(pick % 97, ' ') : std::string(1, static_cast<char>(pick));
    }
    texts.push_back(text.substr(0, length));
    texts.push_back(std::string(length, ' '));
  }
  return texts;
}

TEST(FaceTest, TextsAsTheirModels) {
  for (const std::string& text : Texts()) {
    SCOPED_TRACE(text.size());
    for (const char value : {' ', 'a', '\0', '\xFF'}) {
      ASSERT_EQ(find(text, value), text.find(value));
      ASSERT_EQ(rfind(text, value), text.rfind(value));
      std::string replaced = text;
      std::replace(replaced.begin(), replaced.end(), value, '.');
      ASSERT_EQ(replace(text, value, '.'), replaced);
      // Pieces and delimiters give the text again.
      const auto all = split(text, value, LastEmpty::kKept);
      ASSERT_EQ(all.size(), static_cast<size_t>(std::count(text.begin(), text.end(), value)) + 1);
      ASSERT_EQ(join(all, std::string(1, value)), text);
      ASSERT_EQ(split(text, value).size(), all.size() - (all.back().empty() ? 1 : 0));
    }
    for (size_t at = 0; at <= text.size(); at += text.size() / 7 + 1) {
      for (const size_t length : std::initializer_list<size_t>{1, 2, 9, 60}) {
        const std::string needle = text.substr(at, length) + (length == 9 ? "~" : "");
        ASSERT_EQ(find(text, needle), needle.empty() ? npos : text.find(needle));
        ASSERT_EQ(rfind(text, needle), needle.empty() ? npos : text.rfind(needle));
      }
      ASSERT_EQ(find_any(text.substr(at), "xyz~"), text.substr(at).find_first_of("xyz~"));
      ASSERT_EQ(rfind_any(text.substr(at), "xyz~"), text.substr(at).find_last_of("xyz~"));
      std::string other = text;
      if (at < text.size()) {
        other[at] = static_cast<char>(other[at] ^ 0x20);
      }
      ASSERT_EQ(equal(text, other), text == other);
      ASSERT_EQ(compare(text, other) < 0, text < other);
      ASSERT_GT(compare(text + "x", text), 0);
      ASSERT_EQ(equal_ignore_case(text, other), lower(text) == lower(other));
      ASSERT_EQ(compare_ignore_case(text, other) < 0, lower(text) < lower(other));
    }
    std::string low;
    for (const char c : text) {
      low += c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
    }
    std::string inPlace = text;
    lower_in_place(inPlace);
    ASSERT_EQ(lower(text), low);
    ASSERT_EQ(inPlace, low);
    ASSERT_EQ(lower(upper(text)), low);
    upper_in_place(inPlace);
    ASSERT_EQ(inPlace, upper(text));

    const size_t first = text.find_first_not_of(" ");
    const size_t last = text.find_last_not_of(" ");
    const std::string kept = first == npos ? "" : text.substr(first, last - first + 1);
    ASSERT_EQ(trim(text, " "), kept);
    ASSERT_EQ(trim("   " + text + std::string(9999, ' '), " "), kept);
    ASSERT_EQ(trim_start(text, " "), first == npos ? "" : text.substr(first));
    ASSERT_EQ(trim_end(text, " "), text.substr(0, last + 1));
    ASSERT_EQ(trim(text, ""), text);
    ASSERT_EQ(hash_sj2(text), hash_sj2(std::string(1, '\0') + text));
    ASSERT_EQ(hash("ignored" + std::string(32, 'a') + text), hash(std::string(32, 'a') + text));
  }
  // Views that hold nothing, not even a pointer.
  const std::string_view none;
  EXPECT_EQ(find(none, 'x'), npos);
  EXPECT_EQ(compare(none, ""), 0);
  EXPECT_EQ(lower(none) + std::string(trim(none)) + to_utf8({}), "");
  EXPECT_EQ(to_utf16(none).size() + split(none, ',').size(), 0u);
  EXPECT_EQ(hash_mscs("abc"), 193409669u);
  EXPECT_EQ(hash_mscs({"abc\0d", 5}), 193409669u);
}

// Characters of one to four bytes, whole and cut, meet the end of a piece at every position.
TEST(FaceTest, UtfGoesOnAfterAPiece) {
  const std::u16string units = u"a\u00E9\u20AC\U0001F600";
  for (const std::string_view cut : {"", "\x80", "\xE2\x82", "\xF0\x9F\x98", "\xFD\x80\x80"}) {
    for (size_t before = 0; before < 12; ++before) {
      std::string text(before, '.');
      std::u16string wanted(before, u'.');
      while (text.size() < 20000) {
        text += "a\u00E9\u20AC\U0001F600";
        wanted += units;
        text += std::string(cut) + "-";
        for (const char c : cut) {
          wanted += static_cast<char16_t>(static_cast<unsigned char>(c));
        }
        wanted += u'-';
      }
      ASSERT_EQ(to_utf16(text), wanted);
      std::u16string swapped = wanted;
      for (char16_t& unit : swapped) {
        unit = static_cast<char16_t>((unit << 8) | (unit >> 8));
      }
      const std::string back = to_utf8(wanted);
      ASSERT_EQ(to_utf16(back), wanted);
      ASSERT_EQ(to_utf8(swapped, true), back);
    }
  }
  for (size_t before = 0; before < 300; ++before) {
    ASSERT_EQ(to_utf16(std::string(before, '.') + "\u20AC\U0001F600"),
              std::u16string(before, u'.') + u"\u20AC\U0001F600");
  }
  EXPECT_EQ(to_utf8(std::u16string(9000, u'\xD800')).size(), 27000u);  // each without its partner
}

// ---- Patterns.

using Spans = std::vector<std::vector<std::pair<size_t, size_t>>>;

std::vector<std::pair<size_t, size_t>> SpansOf(const MatchView& match) {
  std::vector<std::pair<size_t, size_t>> spans;
  for (size_t group = 0; group < match.size(); ++group) {
    spans.emplace_back(match.position(group), match[group].size());
  }
  return spans;
}

Spans SpansOf(const Matches& matches) {
  Spans spans;
  for (const auto match : matches) {
    spans.push_back(SpansOf(match));
  }
  return spans;
}

bool BeginsCharacter(std::string_view text, size_t at) {
  return at == text.size() || (static_cast<unsigned char>(text[at]) & 0xC0) != 0x80;
}

// Asks at each position whether the pattern matches just there: after as many bytes as lie before
// it.
Spans ModelOfAll(const std::string& pattern, const std::string& text, bool bytes) {
  Spans spans;
  for (size_t at = 0; at <= text.size();) {
    Pattern here("\\A\\C{" + std::to_string(at) + "}(?:" + pattern + ")");
    here.set_bytes(bytes);
    const Match match = here.find(text);
    if (!match || !(bytes || BeginsCharacter(text, at))) {
      ++at;
      continue;
    }
    auto found = SpansOf(match);
    found[0] = {at, match[0].size() - at};
    spans.push_back(found);
    at = match.end() + (match.end() == at ? 1 : 0);
  }
  return spans;
}

TEST(FaceTest, AllMatchesInTheirContext) {
  const char* const patterns[] = {
      "a",       "b*",      "|b",    "a|",   "^|.", "\\b",      "(?<=a)b", "(a)|(b)",
      "(a*)b?",  "(?=(b))", "\\w+$", ".",    "x*?", "(?<!a).",  "$",       "|a$",
      "\\x{E9}", "[^a]",    "(a)?",  "\\Bb", "|bb", "(?=a$)a|", "(?:)",    "a(?!b)|",
  };
  for (const char* pattern : patterns) {
    for (const char* text : {"", "a", "b", "ab", "ba", "aab ba", "a\nb\n", "\u00E9", "a\u00E9b",
                             "\u20AC\u00E9 a", "aaaaabbbbbab bb"}) {
      for (const bool bytes : {false, true}) {
        SCOPED_TRACE(std::string(pattern) + " on " + text + (bytes ? " as bytes" : ""));
        Pattern all(pattern);
        all.set_bytes(bytes);
        const Spans wanted = ModelOfAll(pattern, text, bytes);
        ASSERT_EQ(SpansOf(all.find_all(text)), wanted);
        const Match first = all.find(text);
        ASSERT_EQ(first ? Spans{SpansOf(first)} : Spans(),
                  wanted.empty() ? Spans() : Spans{wanted.front()});
        ASSERT_EQ(all.found_in(text), !wanted.empty());
        const Replaced replaced = all.replace_all(text, "<$&$1>");
        std::string model;
        size_t at = 0;
        const auto part = [&](std::pair<size_t, size_t> span) {
          return std::string(text).substr(span.first, span.second);
        };
        for (const auto& match : wanted) {
          model += part({at, match[0].first - at}) + "<" + part(match[0]);
          model += (match.size() > 1 && match[1].first != npos ? part(match[1]) : "") + ">";
          at = match[0].first + match[0].second;
        }
        ASSERT_EQ(replaced.text, model + std::string(text).substr(at));
        ASSERT_EQ(replaced.count, wanted.size());
      }
    }
  }
}

// Pieces of every length on both sides of one that is copied at once, up to the text's end.
TEST(FaceTest, ReplacingPiecesOfEveryLength) {
  const test::GuardedBuffer room(200);
  for (size_t gap = 0; gap < 20; ++gap) {
    for (size_t run = 1; run < 20; ++run) {
      for (size_t literal = 0; literal < 20; ++literal) {
        const std::string dots(gap, '.');
        const std::string match = std::string(run, 'x') + "y";
        const std::string text = dots + match + dots + match;
        auto* const at = reinterpret_cast<char*>(room.AtEnd(text.size()));
        std::copy(text.begin(), text.end(), at);
        const std::string dashes(literal, '-');
        const Replaced replaced =
            Pattern("(x+)y").replace_all({at, text.size()}, dashes + "$1" + dashes + "$&");
        const std::string made = dots + dashes + std::string(run, 'x') + dashes + match;
        ASSERT_EQ(replaced.text, made + made) << gap << ' ' << run << ' ' << literal;
      }
    }
  }
}

// Results outgrow the first guess at once, late, or when all are found.
TEST(FaceTest, RoomGrowsWithTheMatches) {
  for (const size_t matches : std::initializer_list<size_t>{1, 7, 15, 16, 17, 300, 5000, 70000}) {
    for (const size_t quiet : std::initializer_list<size_t>{0, 3000, 200000}) {
      const std::string text =
          std::string(quiet, '.') + Repeat("k=v;", matches) + std::string(quiet / 3, '.') + "k=w;";
      Pattern pattern("(\\w)=(\\w)");
      const Matches all = pattern.find_all(text);
      ASSERT_EQ(all.status(), StatusNoError);
      ASSERT_EQ(all.size(), matches + 1);
      ASSERT_EQ(all[matches][2], "w");
      ASSERT_EQ(all[matches].position(), text.size() - 4);
      Pattern moved = std::move(pattern);
      const Replaced replaced = moved.replace_all(text, "$2:$1 ");
      ASSERT_EQ(replaced.count, matches + 1);
      ASSERT_EQ(replaced.text.size(), text.size() + matches + 1);
      ASSERT_EQ(moved.replace_all(text, "").text.size(), text.size() - 3 * (matches + 1));
      ASSERT_EQ(moved.replace(text, "").text.size(), text.size() - 3);
    }
  }
}

TEST(FaceTest, MatchesAndPatternsMove) {
  const std::string text = "one=1 two=2";
  Pattern pattern = Pattern("(\\w+)=(\\d)(x)?").clone();
  Match match = pattern.find(text);
  Match moved = std::move(match);
  EXPECT_FALSE(match);  // NOLINT(bugprone-use-after-move)
  EXPECT_EQ(moved[1], "one");
  EXPECT_EQ(moved.suffix(), " two=2");
  EXPECT_TRUE(moved.has(2));
  EXPECT_FALSE(moved.has(3) || moved.has(4));
  EXPECT_EQ(moved.position(3), npos);
  EXPECT_EQ(moved[4], "");
  Matches all = pattern.find_all(text);
  const Matches kept = std::move(all);
  EXPECT_EQ(kept.size(), 2u);
  EXPECT_EQ(kept[1][1], "two");
  // More groups than a match has room for inside.
  const Match many = Pattern("(t)(w)(o)(=)(2)()()()()()").find(text);
  EXPECT_EQ(many.size(), 11u);
  EXPECT_EQ(many[5], "2");
  EXPECT_EQ(pattern.replace(text, Template::literal("$1\\")).text, "$1\\ two=2");
  EXPECT_EQ(pattern.replace_all(text, [](const MatchView& m) { return upper(m[1]); }).text,
            "ONE TWO");
  EXPECT_EQ(Pattern("A", "ig").replace_all("xax", "$&$&").text, "xaax");

  std::vector<std::thread> threads;
  std::vector<size_t> counts(4);
  for (size_t i = 0; i < counts.size(); ++i) {
    threads.emplace_back([&, i, own = pattern.clone()]() mutable {
      for (int round = 0; round < 200; ++round) {
        counts[i] += own.find_all(text).size();
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(counts, std::vector<size_t>(4, 400));
}

TEST(FaceTest, WhatIsRefused) {
  Pattern none;
  EXPECT_FALSE(none);
  EXPECT_EQ(none.find("x").status(), StatusRegExpError);
  EXPECT_EQ(none.find_all("x").status(), StatusRegExpError);
  EXPECT_EQ(none.replace_all("x", "y").text, "x");
  EXPECT_EQ(Pattern({"a\0b", 3}).fault().offset, 1u);
  EXPECT_EQ(Pattern("a", {"\0", 1}).fault().status, StatusRegExpOptionError);
  EXPECT_EQ(Pattern("a", "ix").fault().status, StatusNoError);
  EXPECT_EQ(Pattern("a", "I").fault().cause, "unknown letter in the pattern options");
  EXPECT_EQ(Pattern("# (\n)", "x").fault().cause, "unmatched )");
  EXPECT_EQ(Pattern(Repeat("(", 1000) + Repeat(")", 1000)).fault().cause,
            "more than 999 groups, or groups nested deeper than 999");

  const Pattern bad("\u00E9\t(?<name>x)");
  EXPECT_FALSE(bad);
  EXPECT_EQ(bad.fault().text(), "named groups are not supported\n\u00E9\t(?<name>x)\n \t   ^");
  EXPECT_EQ(Pattern("first\nse[cond\nthird").fault().caret(), "third\n     ^");
  EXPECT_EQ(
      Pattern(std::string(100, 'a') + "(" + std::string(10, '.') + ")*+" + std::string(100, 'b'))
          .fault()
          .caret(),
      "..." + std::string(37, 'a') + "(..........)*+" + std::string(25, 'b') + "...\n" +
          std::string(53, ' ') + "^");

  const Template faulty("a$1b$&c$00");
  EXPECT_FALSE(faulty);
  EXPECT_EQ(faulty.fault().offset, 7u);
  EXPECT_EQ(Template("$&$").fault().offset, 2u);
  EXPECT_EQ(Template({"a\0", 2}).fault().offset, 1u);
  const Replaced unchanged = Pattern("x").replace_all("x", faulty);
  EXPECT_EQ(unchanged.text, "x");
  EXPECT_EQ(unchanged.status, StatusRegExpFormatError);

  Pattern nested("(?:(a)(b))+c");
  nested.set_match_limit(8);
  EXPECT_EQ(nested.find("abababababc").status(), StatusRegExpMatchLimit);
  EXPECT_EQ(nested.clone().find("abababababc").status(), StatusRegExpMatchLimit);
  EXPECT_EQ(nested.replace("abababababc", "x").status, StatusRegExpMatchLimit);
}

// The C helper where elements run short, and where the pattern asks for one match only.
TEST(FaceTest, AllMatchesInC) {
  for (const char* options : {"g", ""}) {
    for (const std::string subject : {"", "ab", "abab"}) {
      const PatternObject object("(a)(b)|$", options);
      RegExpState* const state = object.State();
      ASSERT_EQ(vekRegExpGroupCount(state), 2);
      const auto length = static_cast<int32_t>(subject.size());
      const int32_t all = *options == 'g' ? length / 2 + 1 : 1;
      for (int32_t room = 1; room < 14; ++room) {
        SCOPED_TRACE(subject + std::to_string(room) + options);
        std::vector<RegExpFindResult> found(14, RegExpFindResult{nullptr, 99});
        int32_t count = room;
        const vekStatus status =
            vekRegExpFindAll(BytesOf(subject), length, state, found.data(), &count);
        ASSERT_EQ(count, std::min(room / 3, all) * 3);
        if (count < all * 3) {
          ASSERT_EQ(status, StatusRegExpResultsTruncated);
        } else if (room >= all * 3 + 3) {
          ASSERT_EQ(status, StatusNoError);
        }
        for (int32_t i = 0; i < count; i += 3) {
          const bool isLast = i / 3 * 2 == length;
          ASSERT_EQ(found[static_cast<size_t>(i)].pointer, BytesOf(subject) + i / 3 * 2);
          ASSERT_EQ(found[static_cast<size_t>(i)].length, isLast ? 0 : 2);
          ASSERT_EQ(found[static_cast<size_t>(i) + 1].length, isLast ? -1 : 1);
        }
        ASSERT_EQ(found[static_cast<size_t>(room)].length, 99);
      }
    }
  }
  uint64_t block[6] = {};
  RegExpFindResult found;
  int32_t count = 1;
  auto* const state = reinterpret_cast<RegExpState*>(block);
  EXPECT_EQ(vekRegExpFindAll(nullptr, 0, state, &found, &count), StatusNullPointer);
  EXPECT_EQ(vekRegExpFindAll(BytesOf(""), -1, state, &found, &count), StatusLengthError);
  EXPECT_EQ(vekRegExpFindAll(BytesOf("x"), 1, state, &found, &count), StatusRegExpError);
  count = 0;
  EXPECT_EQ(vekRegExpFindAll(BytesOf("x"), 1, state, &found, &count), StatusSizeError);
}

}  // namespace
}  // namespace vekch::test
