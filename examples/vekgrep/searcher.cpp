// Several patterns are searched for one by one, each from chunk start to chunk end: for every
// pattern the next occurrence is kept, and searched for anew only when the search has passed it.
//
// Ignoring case, the rarest byte of the pattern is looked for in both of its cases, and where it
// stands the pattern is compared.

#include "searcher.h"

#include <algorithm>
#include <cstring>

namespace vekgrep {
namespace {

uint8_t LowerCase(uint8_t byte) {
  return byte >= 'A' && byte <= 'Z' ? static_cast<uint8_t>(byte - 'A' + 'a') : byte;
}

uint8_t UpperCase(uint8_t byte) {
  return byte >= 'a' && byte <= 'z' ? static_cast<uint8_t>(byte - 'a' + 'A') : byte;
}

bool IsLetter(char c) {
  const auto byte = static_cast<uint8_t>(c);
  return LowerCase(byte) != UpperCase(byte);
}

// How common a byte is in text, both cases taken together; 0 for what is not listed.
int32_t Commonness(uint8_t byte) {
  constexpr char kFromRareToCommon[] = "z]}[{q9j86754_x*'32=10\"k;:/()v-bwyg,.pfmucdhlrsinoate ";
  const char* found = std::strchr(kFromRareToCommon, LowerCase(byte));
  return byte == 0 || found == nullptr ? 0 : static_cast<int32_t>(found - kFromRareToCommon) + 1;
}

}  // namespace

Searcher::Searcher(const std::vector<std::string>& patternTexts, bool ignoreCase) {
  for (const std::string& bytes : patternTexts) {
    const bool known = std::any_of(patterns.begin(), patterns.end(),
                                   [&](const Pattern& other) { return other.bytes == bytes; });
    if (bytes.empty()) {
      matchesEveryLine = true;
    } else if (!known) {
      AddPattern(bytes, ignoreCase);
    }
  }
}

void Searcher::AddPattern(const std::string& bytes, bool ignoreCase) {
  Pattern pattern;
  pattern.bytes = bytes;
  pattern.anyCase = ignoreCase && std::any_of(bytes.begin(), bytes.end(), IsLetter);
  const auto byteAt = [&](int32_t i) {
    return static_cast<uint8_t>(bytes[static_cast<size_t>(i)]);
  };
  const auto size = static_cast<int32_t>(bytes.size());
  const auto rarestBut = [&](int32_t excluded) {
    int32_t rarest = excluded == 0 ? size - 1 : 0;
    for (int32_t i = 0; i < size; ++i) {
      if (i != excluded && Commonness(byteAt(i)) < Commonness(byteAt(rarest))) {
        rarest = i;
      }
    }
    return rarest;
  };
  pattern.place = rarestBut(-1);
  pattern.secondPlace = rarestBut(pattern.place);
  const auto setCases = [&](int32_t place, uint8_t* cases) {
    cases[0] = LowerCase(byteAt(place));
    cases[1] = UpperCase(byteAt(place));
  };
  setCases(pattern.place, pattern.cases);
  setCases(pattern.secondPlace, pattern.secondCases);
  longestPattern = std::max(longestPattern, size);
  patterns.push_back(pattern);
}

void Searcher::Begin(const uint8_t* newText, int32_t newLength) {
  text = newText;
  length = newLength;
  for (Pattern& pattern : patterns) {
    pattern.next = -1;
  }
}

bool Searcher::Next(int32_t from, Range* match) {
  *match = {kNowhere, kNowhere};
  for (Pattern& pattern : patterns) {
    if (pattern.next < from) {
      pattern.next = pattern.anyCase ? FindAnyCase(pattern, from) : Find(pattern, from);
    }
    if (pattern.next == kNowhere) {
      continue;
    }
    const Range found = {pattern.next, pattern.next + static_cast<int32_t>(pattern.bytes.size())};
    if (found.begin < match->begin || (found.begin == match->begin && found.end > match->end)) {
      *match = found;
    }
  }
  return match->begin != kNowhere;
}

int32_t Searcher::Find(const Pattern& pattern, int32_t from) const {
  int32_t index = -1;
  veksFind_8u(text + from, length - from, reinterpret_cast<const uint8_t*>(pattern.bytes.data()),
              static_cast<int32_t>(pattern.bytes.size()), &index);
  return index < 0 ? kNowhere : from + index;
}

int32_t Searcher::FindAnyCase(const Pattern& pattern, int32_t from) const {
  const auto* bytes = reinterpret_cast<const uint8_t*>(pattern.bytes.data());
  const auto size = static_cast<int32_t>(pattern.bytes.size());
  const int32_t setSize = pattern.cases[0] == pattern.cases[1] ? 1 : 2;
  while (length - from >= size) {
    int32_t index = -1;
    veksFindCAny_8u(text + from + pattern.place, length - from - (size - 1), pattern.cases, setSize,
                    &index);
    if (index < 0) {
      return kNowhere;
    }
    from += index;
    // Most places are refused by a second byte, without a call.
    const uint8_t second = text[from + pattern.secondPlace];
    if (second == pattern.secondCases[0] || second == pattern.secondCases[1]) {
      int32_t difference = -1;
      veksCompareIgnoreCaseLatin_8u(text + from, bytes, size, &difference);
      if (difference == 0) {
        return from;
      }
    }
    ++from;
  }
  return kNowhere;
}

}  // namespace vekgrep
