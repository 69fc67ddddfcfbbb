// SPDX-License-Identifier: MIT
/**
 * @file
 * vekch for C++17: the library's functions over std::string_view, and patterns that own their
 * memory. Header-only; exceptions are neither thrown nor needed.
 *
 * What is safer here than in C: results are sized to fit, nothing is written beyond them, an empty
 * view may have a null pointer, texts may be longer than 2^31 - 1 bytes (patterns excepted, which
 * report StatusLengthError), and a match's length never passes the end of its text.
 *
 * Views that are returned refer to the text that was passed: keep it alive.
 */
#ifndef VEKCH_VEKCH_HPP
#define VEKCH_VEKCH_HPP

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "vekch/regexp_help.h"
#include "vekch/vekch.h"

namespace vekch {

inline constexpr std::size_t npos = std::string_view::npos;

namespace detail {

/** What one call of the library takes; texts beyond it go in pieces. */
#ifdef VEKCH_HPP_LARGEST_PIECE
inline constexpr std::size_t kLargestPiece = VEKCH_HPP_LARGEST_PIECE;
#else
inline constexpr std::size_t kLargestPiece = 0x7FFFFFFF;
#endif

/** Results are made in pieces that stay in the first-level cache, where writing twice is cheap. */
inline constexpr std::size_t kCachedPiece = 8192;

/** An empty view may have a null pointer, which the library refuses. */
inline const char* TextStart(std::string_view text) {
  return text.data() == nullptr ? "" : text.data();
}
inline const std::uint8_t* Bytes(std::string_view text) {
  return reinterpret_cast<const std::uint8_t*>(TextStart(text));
}
inline std::uint8_t* Bytes(char* text) { return reinterpret_cast<std::uint8_t*>(text); }
inline const std::uint16_t* Units(std::u16string_view text) {
  return reinterpret_cast<const std::uint16_t*>(text.data() == nullptr ? u"" : text.data());
}
/** -1 becomes npos. */
inline std::size_t Position(std::int32_t index) {
  return static_cast<std::size_t>(static_cast<std::ptrdiff_t>(index));
}
inline std::int32_t Length(std::size_t size) { return static_cast<std::int32_t>(size); }

/** The first hit of `search(piece, &index)`; pieces overlap by `overlap` bytes. */
template <typename Search>
std::size_t FindForward(std::string_view text, std::size_t overlap, Search search) {
  std::int32_t index = -1;
  if (text.size() <= kLargestPiece) {
    search(text, &index);
    return Position(index);
  }
  for (std::size_t at = 0; at + overlap < text.size(); at += kLargestPiece - overlap) {
    search(text.substr(at, kLargestPiece), &index);
    if (index >= 0) {
      return at + static_cast<std::size_t>(index);
    }
  }
  return npos;
}

template <typename Search>
std::size_t FindBackward(std::string_view text, std::size_t overlap, Search search) {
  std::int32_t index = -1;
  if (text.size() <= kLargestPiece) {
    search(text, &index);
    return Position(index);
  }
  for (std::size_t end = text.size(); end > overlap;) {
    const std::size_t start = end > kLargestPiece ? end - kLargestPiece : 0;
    search(text.substr(start, end - start), &index);
    if (index >= 0) {
      return start + static_cast<std::size_t>(index);
    }
    end = start == 0 ? 0 : start + overlap;
  }
  return npos;
}

/** A string of `size` bytes that `fill(bytes)` writes; C++23 has none written before that. */
template <typename Fill>
std::string Filled(std::size_t size, Fill fill) {
#ifdef __cpp_lib_string_resize_and_overwrite
  std::string result;
  result.resize_and_overwrite(size, [&fill, size](char* bytes, std::size_t) {
    fill(bytes);
    return size;
  });
#else
  std::string result(size, '\0');
  fill(result.data());
#endif
  return result;
}

inline constexpr std::size_t kShortPiece = 16;

/**
 * Copies a text that is short more often than not, and returns the end of the copy. Where the bytes
 * up to both ends allow it, a short one is copied with what follows it, which is written again by
 * the next one: its size decides no branch, as nobody could predict it.
 */
inline char* CopyPiece(std::string_view from, const char* readable, char* to, const char* end) {
  const char* const source = from.data();
  const std::size_t size = from.size();
  if (size > kShortPiece) {
    std::memcpy(to, source, size);
  } else if (size != 0 && readable - source >= static_cast<std::ptrdiff_t>(kShortPiece) &&
             end - to >= static_cast<std::ptrdiff_t>(kShortPiece)) {
    std::memcpy(to, source, kShortPiece);
  } else if (size >= 8) {
    std::uint64_t ends[2];
    std::memcpy(&ends[0], source, 8);
    std::memcpy(&ends[1], source + size - 8, 8);
    std::memcpy(to, &ends[0], 8);
    std::memcpy(to + size - 8, &ends[1], 8);
  } else {
    for (std::size_t i = 0; i < size; ++i) {
      to[i] = source[i];
    }
  }
  return to + size;
}

/** A copy of the text, changed by `change(source, destination, length)`. */
template <typename Change>
std::string Changed(std::string_view text, Change change) {
  return Filled(text.size(), [text, change](char* bytes) {
    for (std::size_t at = 0; at < text.size(); at += kLargestPiece) {
      change(Bytes(text) + at, Bytes(bytes + at),
             Length(std::min(kLargestPiece, text.size() - at)));
    }
  });
}

template <typename Change>
void ChangeInPlace(std::string& text, Change change) {
  for (std::size_t at = 0; at < text.size(); at += kLargestPiece) {
    change(Bytes(text.data() + at), Length(std::min(kLargestPiece, text.size() - at)));
  }
}

/** The order of what both texts have, or 0. */
template <typename Compare>
int CompareCommon(std::string_view first, std::string_view second, Compare compare) {
  const std::size_t common = std::min(first.size(), second.size());
  std::int32_t order = 0;
  for (std::size_t at = 0; at < common && order == 0; at += kLargestPiece) {
    const std::size_t length = std::min(kLargestPiece, common - at);
    compare(Bytes(first.substr(at)), Bytes(second.substr(at)), Length(length), &order);
  }
  return order;
}

/** How many bytes of the text's start, or its end, belong to the set. */
template <typename Trim>
std::size_t CountTrimmed(std::string_view text, std::string_view set, bool atStart, Trim trim) {
  constexpr std::size_t kByHand = 8;
  constexpr std::size_t kPiece = std::min<std::size_t>(2048, kLargestPiece);
  std::size_t count = 0;
  for (; count < text.size(); ++count) {
    if (set.find(atStart ? text[count] : text[text.size() - 1 - count]) == npos) {
      return count;
    }
    if (count == kByHand) {
      break;
    }
  }
  std::uint8_t kept[kPiece];
  while (count < text.size()) {
    const std::size_t length = std::min(kPiece, text.size() - count);
    const std::size_t from = atStart ? count : text.size() - count - length;
    std::int32_t keptLength = 0;
    trim(Bytes(text.substr(from)), Length(length), Bytes(set), Length(set.size()), kept,
         &keptLength);
    count += length - static_cast<std::size_t>(keptLength);
    if (keptLength != 0) {
      break;
    }
  }
  return count;
}

/** The bytes of as many whole characters as go into `most` bytes. */
inline std::size_t CharactersWithin(std::string_view text, std::size_t most) {
  if (text.size() <= most) {
    return text.size();
  }
  // A character has five bytes that continue it at most; after more than those one begins anyway.
  for (std::size_t length = most; length + 5 >= most; --length) {
    if ((static_cast<unsigned char>(text[length]) & 0xC0) != 0x80) {
      return length;
    }
  }
  return most;
}

}  // namespace detail

// ---- Searching. A position, or npos; an empty needle is found nowhere, as in C.

inline std::size_t find(std::string_view haystack, char value) {
  return detail::FindForward(haystack, 0, [value](std::string_view piece, std::int32_t* index) {
    veksFindC_8u(detail::Bytes(piece), detail::Length(piece.size()),
                 static_cast<std::uint8_t>(value), index);
  });
}

inline std::size_t find(std::string_view haystack, std::string_view needle) {
  if (haystack.size() <= detail::kLargestPiece && needle.size() <= detail::kLargestPiece) {
    std::int32_t index = -1;
    veksFind_8u(detail::Bytes(haystack), detail::Length(haystack.size()), detail::Bytes(needle),
                detail::Length(needle.size()), &index);
    return detail::Position(index);
  }
  if (needle.size() >= detail::kLargestPiece) {
    return haystack.find(needle);
  }
  return detail::FindForward(haystack, needle.empty() ? 0 : needle.size() - 1,
                             [needle](std::string_view piece, std::int32_t* index) {
                               veksFind_8u(detail::Bytes(piece), detail::Length(piece.size()),
                                           detail::Bytes(needle), detail::Length(needle.size()),
                                           index);
                             });
}

inline std::size_t rfind(std::string_view haystack, char value) {
  return detail::FindBackward(haystack, 0, [value](std::string_view piece, std::int32_t* index) {
    veksFindRevC_8u(detail::Bytes(piece), detail::Length(piece.size()),
                    static_cast<std::uint8_t>(value), index);
  });
}

inline std::size_t rfind(std::string_view haystack, std::string_view needle) {
  if (needle.size() >= detail::kLargestPiece) {
    return haystack.rfind(needle);
  }
  return detail::FindBackward(haystack, needle.empty() ? 0 : needle.size() - 1,
                              [needle](std::string_view piece, std::int32_t* index) {
                                veksFindRev_8u(detail::Bytes(piece), detail::Length(piece.size()),
                                               detail::Bytes(needle), detail::Length(needle.size()),
                                               index);
                              });
}

/** The first byte that belongs to a set. */
inline std::size_t find_any(std::string_view text, std::string_view set) {
  return detail::FindForward(text, 0, [set](std::string_view piece, std::int32_t* index) {
    veksFindCAny_8u(detail::Bytes(piece), detail::Length(piece.size()), detail::Bytes(set),
                    detail::Length(set.size()), index);
  });
}

/** The last byte that belongs to a set. */
inline std::size_t rfind_any(std::string_view text, std::string_view set) {
  return detail::FindBackward(text, 0, [set](std::string_view piece, std::int32_t* index) {
    veksFindRevCAny_8u(detail::Bytes(piece), detail::Length(piece.size()), detail::Bytes(set),
                       detail::Length(set.size()), index);
  });
}

// ---- Comparing, as unsigned bytes; of two texts that begin alike the shorter one is less.

inline int compare(std::string_view first, std::string_view second) {
  const int order = detail::CompareCommon(first, second, veksCompare_8u);
  return order != 0 ? order : (first.size() > second.size()) - (first.size() < second.size());
}

/** ASCII capitals count as the small letters. */
inline int compare_ignore_case(std::string_view first, std::string_view second) {
  const int order = detail::CompareCommon(first, second, veksCompareIgnoreCaseLatin_8u);
  return order != 0 ? order : (first.size() > second.size()) - (first.size() < second.size());
}

inline bool equal(std::string_view first, std::string_view second) {
  return first.size() == second.size() && detail::CompareCommon(first, second, veksCompare_8u) == 0;
}

inline bool equal_ignore_case(std::string_view first, std::string_view second) {
  return first.size() == second.size() &&
         detail::CompareCommon(first, second, veksCompareIgnoreCaseLatin_8u) == 0;
}

// ---- Case of the ASCII letters, and exchanging one byte value for another.

inline std::string lower(std::string_view text) {
  return detail::Changed(text, veksLowercaseLatin_8u);
}

inline std::string upper(std::string_view text) {
  return detail::Changed(text, veksUppercaseLatin_8u);
}

inline void lower_in_place(std::string& text) {
  detail::ChangeInPlace(text, veksLowercaseLatin_8u_I);
}

inline void upper_in_place(std::string& text) {
  detail::ChangeInPlace(text, veksUppercaseLatin_8u_I);
}

inline std::string replace(std::string_view text, char oldValue, char newValue) {
  return detail::Changed(
      text, [oldValue, newValue](const std::uint8_t* from, std::uint8_t* to, std::int32_t length) {
        veksReplaceC_8u(from, to, length, static_cast<std::uint8_t>(oldValue),
                        static_cast<std::uint8_t>(newValue));
      });
}

// ---- Trimming: a view of what is kept.

inline constexpr std::string_view kWhiteSpace = " \t\r\n\f\v";

inline std::string_view trim_start(std::string_view text, std::string_view set = kWhiteSpace) {
  text.remove_prefix(detail::CountTrimmed(text, set, true, veksTrimStartCAny_8u));
  return text;
}

inline std::string_view trim_end(std::string_view text, std::string_view set = kWhiteSpace) {
  text.remove_suffix(detail::CountTrimmed(text, set, false, veksTrimEndCAny_8u));
  return text;
}

inline std::string_view trim(std::string_view text, std::string_view set = kWhiteSpace) {
  return trim_end(trim_start(text, set), set);
}

// ---- Splitting and joining.

/** What becomes of the empty piece after a delimiter at the very end. */
enum class LastEmpty { kDropped, kKept };

/**
 * The pieces between delimiters, as views. Delimiters side by side, and one at the start, give
 * empty pieces; one at the very end gives none unless asked for, and an empty text no piece, as in
 * C. With LastEmpty::kKept there is always one piece more than delimiters.
 */
inline std::vector<std::string_view> split(std::string_view text, char delimiter,
                                           LastEmpty last = LastEmpty::kDropped) {
  std::vector<std::string_view> pieces;
  for (;;) {
    const std::size_t at = find(text, delimiter);
    if (at == npos) {
      break;
    }
    pieces.push_back(text.substr(0, at));
    text.remove_prefix(at + 1);
  }
  if (!text.empty() || last == LastEmpty::kKept) {
    pieces.push_back(text);
  }
  return pieces;
}

/** The texts with the delimiter between each two of them. */
template <typename Texts>
std::string join(const Texts& texts, std::string_view delimiter = {}) {
  std::size_t size = 0;
  for (const std::string_view text : texts) {
    size += text.size() + delimiter.size();
  }
  std::string result;
  result.reserve(size);
  bool first = true;
  for (const std::string_view text : texts) {
    result.append(first ? std::string_view() : delimiter).append(text);
    first = false;
  }
  return result;
}

// ---- Hashes; the C functions of the same names say which.

inline std::uint32_t hash(std::string_view text) {  // only the last 32 bytes count
  text.remove_prefix(text.size() - std::min<std::size_t>(text.size(), 32));
  std::uint32_t value = 0;
  veksHash_8u32u(detail::Bytes(text), detail::Length(text.size()), &value);
  return value;
}

/** Of the text's first 2^31 - 1 bytes. */
inline std::uint32_t hash_sj2(std::string_view text) {
  std::uint32_t value = 0;
  veksHashSJ2_8u32u(detail::Bytes(text),
                    detail::Length(std::min<std::size_t>(text.size(), 0x7FFFFFFF)), &value);
  return value;
}

/** Of the text's first 2^31 - 1 bytes, up to the first zero byte. */
inline std::uint32_t hash_mscs(std::string_view text) {
  std::uint32_t value = 0;
  veksHashMSCS_8u32u(detail::Bytes(text),
                     detail::Length(std::min<std::size_t>(text.size(), 0x7FFFFFFF)), &value);
  return value;
}

// ---- UTF. Malformed text passes through as vekch/utf.h says.

namespace detail {

inline constexpr std::size_t kShortText = std::min<std::size_t>(256, kLargestPiece);

/**
 * Of a short text, straight into the string. A function of its own, in which the size might be any:
 * where g++ knows that it is small it fills the string by an instruction that takes twice as long.
 */
#ifdef __GNUC__
__attribute__((noinline))
#endif
inline std::u16string
ShortToUtf16(std::string_view text) {
  // As many units as bytes: no pair of surrogates ever meets room for one unit.
  std::u16string units(text.size(), u'\0');
  std::int32_t source = Length(text.size());
  std::int32_t written = source;
  veksConvertUTF_8u16u(Bytes(text), &source, reinterpret_cast<std::uint16_t*>(units.data()),
                       &written, 0);
  units.resize(static_cast<std::size_t>(written));
  return units;
}

}  // namespace detail

inline std::u16string to_utf16(std::string_view text) {
  constexpr std::size_t kPiece = std::min(detail::kCachedPiece, detail::kLargestPiece);
  if (text.size() <= detail::kShortText) {
    return detail::ShortToUtf16(text);
  }
  std::u16string result;
  std::uint16_t units[kPiece + 1];  // one more than is passed: see vekch/utf.h
  while (!text.empty()) {
    std::int32_t source = detail::Length(detail::CharactersWithin(text, kPiece));
    std::int32_t written = detail::Length(kPiece);
    veksConvertUTF_8u16u(detail::Bytes(text), &source, units, &written, 0);
    if (result.empty() && static_cast<std::size_t>(source) == text.size()) {
      return {reinterpret_cast<const char16_t*>(units), static_cast<std::size_t>(written)};
    }
    if (result.empty()) {
      result.reserve(text.size());
    }
    result.append(reinterpret_cast<const char16_t*>(units), static_cast<std::size_t>(written));
    text.remove_prefix(static_cast<std::size_t>(source));
  }
  return result;
}

/** `swapped` says that the two bytes of each unit are swapped (big-endian text). */
inline std::string to_utf8(std::u16string_view text, bool swapped = false) {
  constexpr std::size_t kPiece = std::min(detail::kCachedPiece / 4, detail::kLargestPiece / 3);
  std::string result;
  std::uint8_t bytes[3 * kPiece];
  while (!text.empty()) {
    std::int32_t source = detail::Length(std::min(kPiece, text.size()));
    const char16_t last = text[static_cast<std::size_t>(source) - 1];
    const bool isHigh = ((swapped ? last & 0xFF : last >> 8) & 0xFC) == 0xD8;
    source -= isHigh && static_cast<std::size_t>(source) < text.size() ? 1 : 0;
    std::int32_t written = sizeof bytes;
    veksConvertUTF_16u8u(detail::Units(text), &source, bytes, &written, swapped ? 1 : 0);
    if (result.empty() && static_cast<std::size_t>(source) == text.size()) {
      return {reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(written)};
    }
    if (result.empty()) {
      result.reserve(text.size());
    }
    result.append(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(written));
    text.remove_prefix(static_cast<std::size_t>(source));
  }
  return result;
}

// ---- Patterns.

/** Why a pattern or a template was refused. */
struct Fault {
  vekStatus status = StatusNoError;
  std::size_t offset = 0;  // of the position in `source`
  std::string_view cause;  // "missing )"
  std::string source;

  /** The line of the pattern that is at fault, or a part of a long one, and a caret under it. */
  std::string caret() const {
    constexpr std::size_t kMostBefore = 50;
    constexpr std::size_t kMostAfter = 26;
    std::size_t start = offset == 0 ? 0 : source.rfind('\n', offset - 1) + 1;  // npos: 0
    std::size_t end = std::min(source.find('\n', offset), source.size());
    const bool cutBefore = offset - start > kMostBefore;
    const bool cutAfter = end - offset > kMostAfter;
    start = cutBefore ? offset - kMostBefore : start;
    end = cutAfter ? offset + kMostAfter : end;
    while (cutBefore && start < offset && Continues(source[start])) {
      ++start;
    }
    while (cutAfter && end > offset && Continues(source[end])) {
      --end;
    }
    std::string marker = cutBefore ? "..." : "";
    std::string shown = marker + source.substr(start, end - start) + (cutAfter ? "..." : "");
    std::fill(marker.begin(), marker.end(), ' ');
    for (std::size_t i = start; i < offset; ++i) {
      if (!Continues(source[i])) {
        marker += source[i] == '\t' ? '\t' : ' ';
      }
    }
    return shown + "\n" + marker + "^";
  }

  /** Cause and caret, three lines without a newline at the end. */
  std::string text() const { return std::string(cause) + "\n" + caret(); }

 private:
  static bool Continues(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }
};

/** A match: element 0 is the whole of it, element k what group k captured. */
class MatchView {
 public:
  MatchView() = default;
  MatchView(std::string_view text, const RegExpFindResult* slots, std::size_t count)
      : text_(detail::TextStart(text), text.size()), slots_(slots), count_(count) {}

  explicit operator bool() const { return count_ != 0; }

  /** Elements: 1 more than the pattern has groups; 0 if there is no match. */
  std::size_t size() const { return count_; }

  /** Whether there is a group of that number, and it took part. */
  bool has(std::size_t group) const { return group < count_ && slots_[group].length >= 0; }

  /** What a group captured; empty for one that took no part or does not exist. */
  std::string_view operator[](std::size_t group) const {
    if (!has(group)) {
      return {};
    }
    // A length may be reported longer than the text: see veksRegExpFind_8u.
    const auto* const start = reinterpret_cast<const char*>(slots_[group].pointer);
    const auto left = static_cast<std::size_t>(text_.data() + text_.size() - start);
    return {start, std::min(left, static_cast<std::size_t>(slots_[group].length))};
  }

  /** Where it begins in the text; npos for a group that took no part. */
  std::size_t position(std::size_t group = 0) const {
    return has(group) ? static_cast<std::size_t>(
                            reinterpret_cast<const char*>(slots_[group].pointer) - text_.data())
                      : npos;
  }

  std::size_t end(std::size_t group = 0) const {
    return has(group) ? position(group) + (*this)[group].size() : npos;
  }

  std::string_view prefix() const { return *this ? text_.substr(0, position()) : text_; }
  std::string_view suffix() const { return *this ? text_.substr(end()) : std::string_view(); }

 protected:
  std::string_view text_;
  const RegExpFindResult* slots_ = nullptr;
  std::size_t count_ = 0;
};

namespace detail {

/** Elements of results: some inside the object, more on the heap. They are not initialised. */
template <std::size_t kInside>
class Slots {
 public:
  explicit Slots(std::size_t count = 0)
      : capacity_(std::max(count, kInside)),
        more_(count > kInside ? new RegExpFindResult[count] : nullptr) {}
  Slots(Slots&& other) noexcept { MoveFrom(other, 0); }
  Slots& operator=(Slots&& other) noexcept {
    MoveFrom(other, 0);
    return *this;
  }
  ~Slots() = default;

  RegExpFindResult* data() { return more_ ? more_.get() : inside_; }
  const RegExpFindResult* data() const { return more_ ? more_.get() : inside_; }
  std::size_t capacity() const { return capacity_; }

  /** Takes the array over, or the first `count` of the elements inside. */
  void MoveFrom(Slots& other, std::size_t count) {
    more_ = std::move(other.more_);
    capacity_ = other.capacity_;
    if (!more_ && count != 0) {
      std::memcpy(static_cast<void*>(inside_), other.inside_, count * sizeof *inside_);
    }
    other.capacity_ = kInside;
  }

 private:
  std::size_t capacity_;
  std::unique_ptr<RegExpFindResult[]> more_;
  RegExpFindResult inside_[kInside];
};

}  // namespace detail

/** A match that owns its elements. */
class Match : public MatchView {
 public:
  Match() = default;
  Match(Match&& other) noexcept { *this = std::move(other); }
  Match& operator=(Match&& other) noexcept {
    storage_.MoveFrom(other.storage_, other.count_);
    MatchView::operator=(MatchView(other.text_, storage_.data(), other.count_));
    status_ = other.status_;
    other.count_ = 0;
    return *this;
  }
  ~Match() = default;

  /** Whether the search could decide: StatusRegExpMatchLimit where it could not. */
  vekStatus status() const { return status_; }

 private:
  friend class Pattern;
  Match(std::string_view text, vekStatus status, std::size_t slots)
      : MatchView(text, nullptr, 0), storage_(slots), status_(status) {}

  detail::Slots<8> storage_;
  vekStatus status_ = StatusNoError;
};

/** All matches of a search, one after the other. */
class Matches {
 public:
  class Iterator {
   public:
    using value_type = MatchView;
    using difference_type = std::ptrdiff_t;
    using reference = MatchView;
    using pointer = void;
    using iterator_category = std::input_iterator_tag;
    Iterator(const Matches* matches, std::size_t index) : matches_(matches), index_(index) {}
    MatchView operator*() const { return (*matches_)[index_]; }
    Iterator& operator++() {
      ++index_;
      return *this;
    }
    Iterator operator++(int) { return {matches_, index_++}; }
    bool operator==(const Iterator& other) const { return index_ == other.index_; }
    bool operator!=(const Iterator& other) const { return index_ != other.index_; }

   private:
    const Matches* matches_;
    std::size_t index_;
  };

  Matches() = default;
  Matches(Matches&& other) noexcept { *this = std::move(other); }
  Matches& operator=(Matches&& other) noexcept {
    storage_.MoveFrom(other.storage_, other.count_ * other.perMatch_);
    text_ = other.text_;
    count_ = other.count_;
    perMatch_ = other.perMatch_;
    status_ = other.status_;
    other.count_ = 0;
    return *this;
  }
  ~Matches() = default;

  std::size_t size() const { return count_; }
  bool empty() const { return count_ == 0; }
  MatchView operator[](std::size_t index) const {
    return {text_, storage_.data() + index * perMatch_, perMatch_};
  }
  Iterator begin() const { return {this, 0}; }
  Iterator end() const { return {this, count_}; }

  /** Whether the search came to its end; there are no matches where it did not. */
  vekStatus status() const { return status_; }

 private:
  friend class Pattern;
  std::string_view text_;
  detail::Slots<16> storage_;
  std::size_t count_ = 0;
  std::size_t perMatch_ = 1;
  vekStatus status_ = StatusNoError;
};

/**
 * What matches are replaced by. "$&" is the match, "$1" to "$9" are groups; "$10" is group 11, and
 * a backslash vanishes, as vekch/regexp_replace.h says. Template::literal takes a text as it is.
 */
class Template {
 public:
  explicit Template(std::string_view text) : text_(Padded(text)) {
    const std::size_t zero = text.find('\0');
    if (zero != npos || text.size() > kLongest) {
      Refuse(text, zero != npos ? StatusRegExpFormatError : StatusLengthError,
             std::min(zero, kLongest), zero != npos ? "a zero byte" : "too long");
      return;
    }
    std::int32_t size = 0;
    veksRegExpReplaceGetSize(detail::Bytes(*text_), &size);
    const std::unique_ptr<std::uint64_t[]> block(
        new std::uint64_t[static_cast<std::size_t>(size) / 8]);
    auto* const state = reinterpret_cast<RegExpReplaceState*>(block.get());
    const vekStatus status = veksRegExpReplaceInit(detail::Bytes(*text_), state);
    if (status != StatusNoError) {
      Refuse(text, status, FaultyDollar(text), "\"$\" needs a group's number or \"&\" after it");
      return;
    }
    // The object: an unused word, the number of items, their address, and the items of 16 bytes.
    std::uint32_t count = 0;
    std::memcpy(&count, reinterpret_cast<const std::uint32_t*>(block.get()) + 1, sizeof count);
    items_.resize(count);
    if (count != 0) {
      std::memcpy(static_cast<void*>(items_.data()), block.get() + 2, count * sizeof(Item));
    }
  }

  static Template literal(std::string_view text) {
    Template made;
    made.text_ = Padded(text);
    if (!text.empty() && text.size() <= kLongest) {
      made.items_.push_back(
          {kLiteral, static_cast<std::uint32_t>(text.size()), detail::Bytes(*made.text_)});
    }
    return made;
  }

  bool ok() const { return fault_.status == StatusNoError; }
  explicit operator bool() const { return ok(); }
  const Fault& fault() const { return fault_; }

 private:
  friend class Pattern;
  struct Item {
    std::uint32_t kind;
    std::uint32_t value;
    const std::uint8_t* pointer;
  };
  static constexpr std::uint32_t kLiteral = 0x10000001;
  static constexpr std::size_t kLongest = 134217726;

  Template() = default;
  void Refuse(std::string_view text, vekStatus status, std::size_t offset, std::string_view cause) {
    fault_ = {status, offset, cause, std::string(text)};
  }
  static std::unique_ptr<std::string> Padded(std::string_view text) {
    std::unique_ptr<std::string> padded(new std::string(text));
    padded->append(detail::kShortPiece, '\0');
    return padded;
  }
  static std::size_t FaultyDollar(std::string_view text) {
    std::size_t at = text.find('$');
    while (at != npos) {
      std::size_t next = at + 1;
      while (next < text.size() && text[next] == '0') {
        ++next;
      }
      const bool isGroup = next < text.size() && text[next] >= '1' && text[next] <= '9';
      if (!isGroup && (next != at + 1 || next == text.size() || text[next] != '&')) {
        return at;
      }
      at = text.find('$', next);
    }
    return 0;
  }

  /** `take(piece, readable)` for each piece and the end of the bytes that may be read with it. */
  template <typename Take>
  void Expand(const MatchView& match, const char* textEnd, Take take) const {
    for (const Item& item : items_) {
      if (item.kind == kLiteral) {
        const auto* const start = reinterpret_cast<const char*>(item.pointer);
        take({start, item.value}, start + item.value + detail::kShortPiece);
      } else {
        take(match[item.value], textEnd);
      }
    }
  }

  std::unique_ptr<std::string> text_;  // stays where it is when the template is moved; padded
  std::vector<Item> items_;
  Fault fault_;
};

/** The result of replacing. Where the search failed the text is the source, and the count 0. */
struct Replaced {
  std::string text;
  std::size_t count = 0;
  vekStatus status = StatusNoError;
};

/**
 * A compiled pattern. It owns its memory and can be moved; searches use that memory, so each thread
 * needs a pattern of its own: see clone.
 *
 *     vekch::Pattern pattern("(\\w+)@(\\w+)", "i");
 *     if (!pattern) std::cerr << pattern.fault().text() << '\n';
 *     for (const auto match : pattern.find_all(text)) std::cout << match[1] << '\n';
 */
class Pattern {
 public:
  Pattern() = default;

  /** `options` are the letters of veksRegExpInit; "g" is allowed and means nothing here. */
  explicit Pattern(std::string_view pattern, std::string_view options = {})
      : source_(pattern), letters_(options), fault_() {
    letters_.erase(std::remove(letters_.begin(), letters_.end(), 'g'), letters_.end());
    const std::size_t zero = source_.find('\0');
    if (zero != npos) {
      fault_ = {StatusRegExpSyntaxError, zero, "a zero byte: write \\x00", source_};
    } else if (letters_.find('\0') != npos) {
      fault_ = {StatusRegExpOptionError, 0, vekStatusText(StatusRegExpOptionError), source_};
    } else if (source_.size() > kLongestPattern) {
      fault_ = {StatusLengthError, 0, "a pattern that is too long", {}};
    } else {
      first_ = Compile(letters_, &fault_);
      slots_ = groups() + 1;
    }
  }

  bool ok() const { return first_ != nullptr; }
  explicit operator bool() const { return ok(); }
  const Fault& fault() const { return fault_; }
  const std::string& pattern() const { return source_; }

  /** The number of capturing groups. */
  std::size_t groups() const {
    return ok() ? static_cast<std::size_t>(vekRegExpGroupCount(State(first_))) : 0;
  }

  /** As veksRegExpSetMatchLimit; a negative limit counts as 0. */
  void set_match_limit(std::int32_t limit) {
    matchLimit_ = std::max(limit, 0);
    Adjust(first_);
    Adjust(all_);
  }

  /** Every byte of later texts is a character, rather than of UTF-8. */
  void set_bytes(bool bytes) {
    format_ = bytes ? 0 : 1;
    Adjust(first_);
    Adjust(all_);
  }

  /** The same pattern and settings, compiled again, for another thread. */
  Pattern clone() const {
    Pattern copy(source_, letters_);
    copy.matchLimit_ = matchLimit_;
    copy.format_ = format_;
    copy.Adjust(copy.first_);
    return copy;
  }

  /** The first match. The text must outlive the match. */
  Match find(std::string_view text) {
    Match match(text, Refusal(text), slots_);
    if (match.status_ == StatusNoError) {
      RegExpFindResult* const data = match.storage_.data();
      auto count = detail::Length(slots_);
      match.status_ = veksRegExpFind_8u(detail::Bytes(text), detail::Length(text.size()),
                                        State(first_), data, &count);
      if (match.status_ >= 0 && count > 0) {
        match.slots_ = data;
        match.count_ = slots_;
        // Groups that compiling has dropped have no element.
        for (auto missing = static_cast<std::size_t>(count); missing < slots_; ++missing) {
          data[missing] = {nullptr, -1};
        }
      }
    }
    return match;
  }

  /** Whether the text holds a match. False too where the match limit ran out. */
  bool found_in(std::string_view text) {
    RegExpFindResult found;
    std::int32_t count = 1;
    return Refusal(text) == StatusNoError &&
           veksRegExpFind_8u(detail::Bytes(text), detail::Length(text.size()), State(first_),
                             &found, &count) >= 0 &&
           count > 0;
  }

  /**
   * All matches with their groups: each begins where the one before ends, or after an empty one at
   * the next character. The text must outlive the matches.
   */
  Matches find_all(std::string_view text) {
    Matches result;
    result.text_ = text;
    result.perMatch_ = slots_;
    std::size_t count = 0;
    result.status_ = Collect(text, &count);
    result.count_ = count / result.perMatch_;
    if (count <= result.storage_.capacity()) {
      if (count != 0) {
        std::memcpy(static_cast<void*>(result.storage_.data()), found_.data(),
                    count * sizeof(RegExpFindResult));
      }
    } else {
      const std::size_t capacity = found_.capacity();
      result.storage_.MoveFrom(found_, capacity);
    }
    return result;
  }

  /** The text with its first match replaced. A template that was refused replaces nothing. */
  Replaced replace(std::string_view text, const Template& replacement) {
    const Match match = find(text);
    if (!match || !replacement) {
      return Unchanged(text, match.status(), replacement);
    }
    return Built(text, match.slots_, match.size(), replacement);
  }
  Replaced replace(std::string_view text, std::string_view replacement) {
    return replace(text, Template(replacement));
  }

  /** The text with all its matches replaced, the matches of find_all. */
  Replaced replace_all(std::string_view text, const Template& replacement) {
    std::size_t count = 0;
    const vekStatus status = Collect(text, &count);
    if (count == 0 || !replacement) {
      return Unchanged(text, status, replacement);
    }
    return Built(text, found_.data(), count, replacement);
  }
  Replaced replace_all(std::string_view text, std::string_view replacement) {
    return replace_all(text, Template(replacement));
  }

  /** The text with each match replaced by what `expand(match)` returns: text without templates. */
  template <typename Expand, typename = std::enable_if_t<std::is_convertible_v<
                                 std::invoke_result_t<Expand, const MatchView&>, std::string_view>>>
  Replaced replace_all(std::string_view text, Expand expand) {
    std::size_t count = 0;
    Replaced result;
    result.status = Collect(text, &count);
    result.count = count / slots_;
    result.text.reserve(text.size());
    Walk(text, found_.data(), count, [&](std::string_view gap, const MatchView& match) {
      result.text.append(gap);
      if (match) {
        result.text.append(std::string_view(expand(match)));
      }
    });
    return result;
  }

 private:
  using Block = std::unique_ptr<std::uint64_t[]>;
  static constexpr std::size_t kLongestPattern = 89476482;
  static constexpr std::size_t kLargestGuess = 1 << 20;  // elements

  static RegExpState* State(const Block& block) {
    return reinterpret_cast<RegExpState*>(block.get());
  }

  Block Compile(const std::string& letters, Fault* fault) const {
    std::int32_t size = 0;
    std::int32_t offset = 0;
    veksRegExpGetSize(detail::Bytes(source_), &size);
    Block block(new std::uint64_t[static_cast<std::size_t>(size) / 8]);
    const vekStatus status =
        veksRegExpInit(detail::Bytes(source_), detail::Bytes(letters), State(block), &offset);
    if (status != StatusNoError) {
      *fault = {status, static_cast<std::size_t>(offset),
                vekRegExpFaultText(detail::Bytes(source_), detail::Bytes(letters), status, offset),
                source_};
      block.reset();
    }
    return block;
  }

  void Adjust(const Block& block) const {
    if (block != nullptr) {
      veksRegExpSetMatchLimit(matchLimit_, State(block));
      veksRegExpSetFormat(format_, State(block));
    }
  }

  vekStatus Refusal(std::string_view text) const {
    return !ok() ? StatusRegExpError : text.size() > 0x7FFFFFFF ? StatusLengthError : StatusNoError;
  }

  /** Fills found_ with all matches; `count` elements are in use. */
  vekStatus Collect(std::string_view text, std::size_t* count) {
    *count = 0;
    const vekStatus refusal = Refusal(text);
    if (refusal != StatusNoError) {
      return refusal;
    }
    if (all_ == nullptr) {
      all_ = Compile(letters_ + "g", &fault_);
      Adjust(all_);
    }
    // The library looks for two matches at each position at most, and asks for one more at the end.
    const std::size_t most = std::min<std::size_t>((2 * text.size() + 2) * slots_, 0x7FFFFFFF);
    // A first guess costs memory that is never touched; where that would be much, a search that
    // ends after some matches shows how many there will be.
    const std::size_t guess = slots_ * (text.size() / 4 + 15);
    Reserve(std::min(most, guess < kLargestGuess ? guess : 4096 * slots_));
    for (;;) {
      auto filled = detail::Length(std::min(found_.capacity(), most));
      const vekStatus status = vekRegExpFindAll(detail::Bytes(text), detail::Length(text.size()),
                                                State(all_), found_.data(), &filled);
      *count = static_cast<std::size_t>(filled);
      if (status != StatusRegExpResultsTruncated || found_.capacity() >= most) {
        return status == StatusRegExpResultsTruncated && most < 0x7FFFFFFF ? StatusNoError : status;
      }
      Reserve(std::min(most, Wanted(text, *count)));
    }
  }

  /** More room than there is, for as many matches in the rest of the text as in what was seen. */
  std::size_t Wanted(std::string_view text, std::size_t count) const {
    const std::size_t capacity = found_.capacity();
    const std::size_t seen =
        count < slots_ ? 0 : MatchView(text, found_.data() + count - slots_, slots_).end();
    const double share =
        seen == 0 ? 0.0 : static_cast<double>(text.size()) / static_cast<double>(seen);
    const double estimate = 1.2 * share * static_cast<double>(capacity);
    return std::max(2 * capacity + slots_, static_cast<std::size_t>(std::min(
                                               estimate, 64.0 * static_cast<double>(capacity))));
  }

  void Reserve(std::size_t capacity) {
    if (found_.capacity() < capacity) {
      found_ = detail::Slots<16>(capacity);
    }
  }

  static Replaced Unchanged(std::string_view text, vekStatus status, const Template& replacement) {
    return {std::string(text), 0, replacement.ok() ? status : replacement.fault().status};
  }

  /** `visit(gap, match)` for each match and the text before it, then the rest with no match. */
  template <typename Visit>
  void Walk(std::string_view text, const RegExpFindResult* found, std::size_t count,
            Visit visit) const {
    std::size_t at = 0;
    for (std::size_t i = 0; i < count; i += slots_) {
      const MatchView match(text, found + i, slots_);
      // A match that is reported longer than it is may reach into the next one.
      const std::size_t start = std::max(match.position(), at);
      visit(text.substr(at, start - at), match);
      at = std::max(start, match.end());
    }
    visit(text.substr(at), MatchView());
  }

  Replaced Built(std::string_view text, const RegExpFindResult* found, std::size_t count,
                 const Template& replacement) const {
    const char* const textEnd = text.data() + text.size();
    std::size_t size = 0;
    Walk(text, found, count, [&](std::string_view gap, const MatchView& match) {
      size += gap.size();
      if (match) {
        replacement.Expand(
            match, textEnd,
            [&size](std::string_view piece, const char* /*readable*/) { size += piece.size(); });
      }
    });
    std::string result = detail::Filled(size, [&](char* to) {
      const char* const end = to + size;
      const auto copy = [&to, end](std::string_view piece, const char* readable) {
        to = detail::CopyPiece(piece, readable, to, end);
      };
      Walk(text, found, count, [&](std::string_view gap, const MatchView& match) {
        copy(gap, textEnd);
        if (match) {
          replacement.Expand(match, textEnd, copy);
        }
      });
    });
    return {std::move(result), count / slots_, StatusNoError};
  }

  std::string source_;
  std::string letters_;
  Fault fault_ = {StatusRegExpError, 0, vekStatusText(StatusRegExpError), {}};
  std::size_t slots_ = 1;  // elements of a match
  std::int32_t matchLimit_ = 10000;
  std::int32_t format_ = 1;
  Block first_;  // finds the first match
  Block all_;    // finds all of them; compiled when that is asked for
  detail::Slots<16> found_;
};

}  // namespace vekch

#endif
