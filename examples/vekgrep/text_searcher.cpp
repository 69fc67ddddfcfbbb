// Texts are searched for in one of two ways.
//
//   kEach      one by one, each from chunk start to chunk end: for every text the next occurrence
//              is kept, and searched for anew only when the search has passed it
//   kTogether  the bytes that are rare in what is searched, one of each text, are searched for as
//              a set; where one is, the texts that have it are compared
//
// The second wins where a set of rare bytes exists, that is, with many texts unless they are short
// and full of common letters. Which is taken is estimated from the bytes of the first chunk.
//
// Ignoring case, text and patterns are turned into small letters, which leaves every byte at its
// place. Looking for the rarest letter in both cases and comparing there was tried: it wins by a
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

// The costs are those of the library's searches on an ordinary machine: a pass costs so much for
// each byte, a hit in the set as much as some hundred bytes of a pass.
void TextSearcher::ChooseWay() {
  constexpr size_t kFewTexts = 3;
  constexpr int64_t kHitsPerPass = 100;
  way = Way::kEach;
  if (texts.size() <= kFewTexts) {
    return;
  }
  const int32_t sampled = std::min(length, kSample);
  std::array<int64_t, 256> counts = {};
  for (int32_t i = 0; i < sampled; ++i) {
    ++counts[text[i]];
  }
  int64_t hits = 0;
  for (size_t i = 0; i < texts.size(); ++i) {
    const std::string& bytes = texts[i].bytes;
    const auto count = [&](char byte) {  // a byte that is in the set costs no more
      const auto value = static_cast<uint8_t>(byte);
      return byRarest[value].empty() ? counts[value] : -1;
    };
    const auto rarest = std::min_element(bytes.begin(), bytes.end(),
                                         [&](char a, char b) { return count(a) < count(b); });
    const auto value = static_cast<uint8_t>(*rarest);
    if (byRarest[value].empty()) {
      rareBytes.push_back(value);
      hits += counts[value];
    }
    const auto offset = static_cast<int32_t>(rarest - bytes.begin());
    byRarest[value].push_back({i, offset});
    deepest = std::max(deepest, offset);
  }
  if (hits * kHitsPerPass <= static_cast<int64_t>(texts.size()) * sampled) {
    way = Way::kTogether;
  }
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

// A hit may belong to a text that starts further in front than that of a hit before, so the search
// goes on as far as the deepest offset reaches.
void TextSearcher::NextTogether(int32_t from, Range* match) const {
  for (int32_t at = from; at < length;) {
    const bool found = match->begin != kNowhere;
    const int32_t end =
        found && deepest < length - match->begin ? match->begin + deepest + 1 : length;
    int32_t index = -1;
    if (at < end) {
      veksFindCAny_8u(text + at, end - at, rareBytes.data(), static_cast<int32_t>(rareBytes.size()),
                      &index);
    }
    if (index < 0) {
      return;
    }
    Check(at + index, from, match);
    at += index + 1;
  }
}

void TextSearcher::Check(int32_t place, int32_t from, Range* best) const {
  for (const Entry& entry : byRarest[text[place]]) {
    const Text& one = texts[entry.text];
    const int32_t begin = place - entry.offset;
    if (begin < from || begin > best->begin || length - begin < Size(one) ||
        text[begin] != static_cast<uint8_t>(one.bytes[0])) {
      continue;
    }
    const Range found = {begin, begin + Size(one)};
    int32_t equal = 0;
    veksEqual_8u(text + begin, Bytes(one.bytes), Size(one), &equal);
    if (equal != 0 && (begin < best->begin || found.end > best->end) && HasBounds(found)) {
      *best = found;
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
