// SPDX-License-Identifier: MIT

// Texts are searched for in one of two ways.
//
//   kEach      one by one, each from chunk start to chunk end: for every text the next occurrence
//              is kept, and searched for anew only when the search has passed it
//   kTogether  in one pass, which looks at two bytes at a time and skips as many as no text could
//              begin with: S. Wu and U. Manber, A fast algorithm for multi-pattern searching, 1994.
//              The library has no search for many texts; it compares those that may be there
//
// The second wins with many texts, the sooner the longer the shortest of them is. Which is taken is
// estimated from the first chunk.
//
// Ignoring case, text and patterns are turned into small letters, which leaves every byte at its
// position. Looking for the rarest letter in both cases and comparing there was tried: it wins by a
// fifth where that letter never occurs, and takes up to three times as long where it is common.

#include "text_searcher.h"

#include <algorithm>

namespace examples::vekgrep {
namespace {

constexpr int32_t kSample = 16 << 10;  // bytes that are counted for the choice

std::string Folded(const std::string& text) {
  std::string folded(text);
  veksLowercaseLatin_8u(Bytes(text), reinterpret_cast<uint8_t*>(folded.data()),
                        static_cast<int32_t>(text.size()));
  return folded;
}

uint16_t Pair(uint8_t first, uint8_t second) { return static_cast<uint16_t>(first << 8 | second); }

bool IsWordByte(uint8_t byte) {
  return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
         (byte >= '0' && byte <= '9') || byte == '_';
}

}  // namespace

TextSearcher::TextSearcher(const std::vector<std::string>& given, bool ignoreCase,
                           Bounds textBounds, uint8_t endOfLine)
    : bounds(textBounds), lineEnd(endOfLine), foldsCase(ignoreCase) {
  std::vector<std::string> all = given;
  if (ignoreCase) {
    std::transform(all.begin(), all.end(), all.begin(), Folded);
  }
  std::sort(all.begin(), all.end());
  all.erase(std::unique(all.begin(), all.end()), all.end());
  for (const std::string& bytes : all) {
    if (bytes.empty()) {
      matchesEveryLine = true;
    } else {
      texts.push_back({bytes, -1});
      longest = std::max(longest, Size(texts.back()));
    }
  }
}

void TextSearcher::Begin(const uint8_t* newText, int32_t newLength) {
  text = newText;
  length = newLength;
  if (foldsCase) {
    folded.resize(std::max(folded.size(), static_cast<size_t>(length)));
    veksLowercaseLatin_8u(newText, folded.data(), length);
    text = folded.data();
  }
  if (way == Way::kUnknown) {
    ChooseWay();
  }
  for (Text& one : texts) {
    one.next = -1;
  }
}

// A step of the one way takes as long as some bytes of a pass of the other.
void TextSearcher::ChooseWay() {
  constexpr size_t kFewTexts = 3;
  constexpr int64_t kBytesPerStep = 12;
  way = Way::kEach;
  if (texts.size() <= kFewTexts) {
    return;
  }
  const auto size = [this](const Text& a, const Text& b) { return Size(a) < Size(b); };
  shortest = Size(*std::min_element(texts.begin(), texts.end(), size));
  if (shortest < 2) {
    return;
  }
  FillShifts();
  const int32_t sampled = std::min(length, kSample);
  if (StepsTogether(sampled) * kBytesPerStep < static_cast<int64_t>(texts.size()) * sampled) {
    way = Way::kTogether;
  }
}

void TextSearcher::FillShifts() {
  constexpr int32_t kPairs = 1 << 16;
  constexpr int32_t kFarthest = 255;
  shifts.assign(kPairs, static_cast<uint8_t>(std::min(shortest - 1, kFarthest)));
  for (size_t i = 0; i < texts.size(); ++i) {
    const uint8_t* bytes = Bytes(texts[i].bytes);
    for (int32_t last = 1; last < shortest; ++last) {
      uint8_t& shift = shifts[Pair(bytes[last - 1], bytes[last])];
      shift = static_cast<uint8_t>(std::min<int32_t>(shift, shortest - 1 - last));
    }
    byPair[Pair(bytes[shortest - 2], bytes[shortest - 1])].push_back(i);
  }
}

// A position where something has to be compared counts for some.
int64_t TextSearcher::StepsTogether(int32_t sampled) const {
  constexpr int64_t kComparing = 10;
  int64_t steps = 0;
  for (int32_t last = shortest - 1; last < sampled; ++steps) {
    const uint8_t shift = shifts[Pair(text[last - 1], text[last])];
    steps += shift == 0 ? kComparing : 0;
    last += std::max<int32_t>(shift, 1);
  }
  return steps;
}

Outcome TextSearcher::Next(int32_t from, Range* match) {
  *match = {kNowhere, kNowhere};
  if (way == Way::kTogether) {
    NextTogether(from, match);
  } else {
    NextOfEach(from, match);
  }
  return match->begin != kNowhere ? Outcome::kMatch : Outcome::kNothing;
}

void TextSearcher::NextOfEach(int32_t from, Range* match) {
  for (Text& one : texts) {
    if (one.next < from) {
      one.next = Find(one, from);
    }
    if (one.next == kNowhere) {
      continue;
    }
    const Range found = {one.next, one.next + Size(one)};
    if (found.begin < match->begin || (found.begin == match->begin && found.end > match->end)) {
      *match = found;
    }
  }
}

void TextSearcher::NextTogether(int32_t from, Range* match) const {
  const uint8_t* shiftOf = shifts.data();
  for (int64_t last = int64_t{from} + shortest - 1; last < length;) {
    const uint16_t pair = Pair(text[last - 1], text[last]);
    const uint8_t shift = shiftOf[pair];
    if (shift == 0) {
      Check(static_cast<int32_t>(last) - shortest + 1, pair, match);
      if (match->begin != kNowhere) {
        return;
      }
    }
    last += shift == 0 ? 1 : shift;
  }
}

// The longest text at a position.
void TextSearcher::Check(int32_t begin, uint16_t pair, Range* match) const {
  for (const size_t i : byPair.at(pair)) {
    const Text& one = texts[i];
    if (length - begin < Size(one) || text[begin] != static_cast<uint8_t>(one.bytes[0])) {
      continue;
    }
    const Range found = {begin, begin + Size(one)};
    int32_t equal = 0;
    veksEqual_8u(text + begin, Bytes(one.bytes), Size(one), &equal);
    if (equal != 0 && (match->begin == kNowhere || found.end > match->end) && HasBounds(found)) {
      *match = found;
    }
  }
}

void TextSearcher::BeginLine(Range line) { unmarked = line; }

Outcome TextSearcher::NextMark(Mark* mark) {
  *mark = {};
  if (Next(unmarked.begin, &mark->range) == Outcome::kNothing ||
      mark->range.begin >= unmarked.end) {
    return Outcome::kNothing;
  }
  unmarked.begin = mark->range.end;
  return Outcome::kMatch;
}

int32_t TextSearcher::Find(const Text& one, int32_t from) const {
  for (;;) {
    int32_t index = -1;
    veksFind_8u(text + from, length - from, Bytes(one.bytes), Size(one), &index);
    if (index < 0) {
      return kNowhere;
    }
    from += index;
    if (HasBounds({from, from + Size(one)})) {
      return from;
    }
    ++from;
  }
}

bool TextSearcher::HasBounds(Range found) const {
  const bool atStart = found.begin == 0;
  const bool atEnd = found.end == length;
  if (bounds == Bounds::kWord) {
    return (atStart || !IsWordByte(text[found.begin - 1])) &&
           (atEnd || !IsWordByte(text[found.end]));
  }
  return bounds == Bounds::kNone ||
         ((atStart || text[found.begin - 1] == lineEnd) && (atEnd || text[found.end] == lineEnd));
}

}  // namespace examples::vekgrep
