// SPDX-License-Identifier: MIT

// The engines that patterns are compiled and searched with, beside ours: how each is told the
// options of a pattern, and a search with each as its documentation recommends.
//
// Subjects are UTF-8 for every engine that asks, as they are for ours.

#ifndef VEKCH_BENCH_ENGINES_H
#define VEKCH_BENCH_ENGINES_H

#include <oniguruma.h>
#include <re2/re2.h>
#include <string.h>

#include <boost/regex.hpp>
#include <string>
#include <string_view>

#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>

#include "bench/patterns.h"

namespace vekch_bench {

inline bool Has(const Pattern& pattern, char option) {
  return strchr(pattern.options, option) != nullptr;
}

inline uint32_t Pcre2Options(const Pattern& pattern) {
  return PCRE2_UTF | (Has(pattern, 'i') ? PCRE2_CASELESS : 0) |
         (Has(pattern, 'm') ? PCRE2_MULTILINE : 0);
}

// Its shorthands are wider than ASCII unless told otherwise, as no other engine's are.
inline OnigOptionType OnigurumaOptions(const Pattern& pattern) {
  OnigOptionType options = ONIG_OPTION_POSIX_IS_ASCII;
  if (Has(pattern, 'i')) {
    options |= ONIG_OPTION_IGNORECASE | ONIG_OPTION_IGNORECASE_IS_ASCII;
  }
  if (Has(pattern, 'm')) {
    options |= ONIG_OPTION_NEGATE_SINGLELINE;
  }
  return options;
}

// Its "." matches a newline and its "^" at every line, unless told otherwise.
inline boost::regex::flag_type BoostFlags(const Pattern& pattern) {
  boost::regex::flag_type flags =
      boost::regex::perl | boost::regex::no_except | boost::regex::no_mod_s;
  if (Has(pattern, 'i')) {
    flags |= boost::regex::icase;
  }
  if (!Has(pattern, 'm')) {
    flags |= boost::regex::no_mod_m;
  }
  return flags;
}

inline std::string Re2Text(const Pattern& pattern) {
  return (Has(pattern, 'm') ? "(?m)" : "") + std::string(pattern.text);
}

inline RE2::Options Re2Options(const Pattern& pattern) {
  RE2::Options options(RE2::Quiet);
  options.set_case_sensitive(!Has(pattern, 'i'));
  return options;
}

// Where a match lies.
struct Span {
  size_t start;
  size_t end;
};

// Each search has Find: the first match from a position of a text on, with its groups recorded.

class Pcre2Search {
 public:
  Pcre2Search(const Pattern& pattern, bool jit) : jit_(jit) {
    int error;
    PCRE2_SIZE errorOffset;
    code_ = pcre2_compile(reinterpret_cast<PCRE2_SPTR>(pattern.text), PCRE2_ZERO_TERMINATED,
                          Pcre2Options(pattern), &error, &errorOffset, nullptr);
    match_ = pcre2_match_data_create_from_pattern(code_, nullptr);
    if (jit) {
      pcre2_jit_compile(code_, PCRE2_JIT_COMPLETE);
      context_ = pcre2_match_context_create(nullptr);
      stack_ = pcre2_jit_stack_create(32 * 1024, 1024 * 1024, nullptr);
      pcre2_jit_stack_assign(context_, nullptr, stack_);
    }
  }
  Pcre2Search(const Pcre2Search&) = delete;
  Pcre2Search& operator=(const Pcre2Search&) = delete;
  ~Pcre2Search() {
    pcre2_jit_stack_free(stack_);
    pcre2_match_context_free(context_);
    pcre2_match_data_free(match_);
    pcre2_code_free(code_);
  }

  // The status: above 0 for a match, below for none and for an error. The text is known to be
  // UTF-8: nothing checks it again.
  int Match(std::string_view text, size_t from, Span* found) const {
    const auto* subject = reinterpret_cast<PCRE2_SPTR>(text.data());
    const int status =
        jit_ ? pcre2_jit_match(code_, subject, text.size(), from, 0, match_, context_)
             : pcre2_match(code_, subject, text.size(), from, PCRE2_NO_UTF_CHECK, match_, nullptr);
    const PCRE2_SIZE* offsets = pcre2_get_ovector_pointer(match_);
    *found = {offsets[0], offsets[1]};
    return status;
  }

  bool Find(std::string_view text, size_t from, Span* found) const {
    return Match(text, from, found) > 0;
  }

  // The text is searched by machine code where that has been made.
  int64_t ReplaceAll(std::string_view text, const char* replacement, uint8_t* room,
                     size_t size) const {
    PCRE2_SIZE written = size;
    const int count = pcre2_substitute(code_, reinterpret_cast<PCRE2_SPTR>(text.data()),
                                       text.size(), 0, PCRE2_SUBSTITUTE_GLOBAL | PCRE2_NO_UTF_CHECK,
                                       match_, context_, reinterpret_cast<PCRE2_SPTR>(replacement),
                                       PCRE2_ZERO_TERMINATED, room, &written);
    return count < 0 ? count : static_cast<int64_t>(written);
  }

 private:
  bool jit_;
  pcre2_code* code_;
  pcre2_match_data* match_;
  pcre2_match_context* context_ = nullptr;
  pcre2_jit_stack* stack_ = nullptr;
};

class Re2Search {
 public:
  explicit Re2Search(const Pattern& pattern)
      : compiled_(Re2Text(pattern), Re2Options(pattern)),
        groups_(1 + compiled_.NumberOfCapturingGroups()) {}

  bool Find(std::string_view text, size_t from, Span* found) const {
    re2::StringPiece groups[kMostGroups];
    const bool matched = compiled_.Match({text.data(), text.size()}, from, text.size(),
                                         RE2::UNANCHORED, groups, groups_);
    const size_t start = static_cast<size_t>(groups[0].data() - text.data());
    *found = {start, start + groups[0].size()};
    return matched;
  }

  std::string ReplaceAll(std::string_view text, const char* replacement) const {
    std::string all(text);
    RE2::GlobalReplace(&all, compiled_, replacement);
    return all;
  }

 private:
  static constexpr int kMostGroups = 10;
  RE2 compiled_;
  int groups_;
};

class OnigurumaSearch {
 public:
  explicit OnigurumaSearch(const Pattern& pattern) : region_(onig_region_new()) {
    const auto* text = reinterpret_cast<const OnigUChar*>(pattern.text);
    OnigErrorInfo error;
    onig_new(&compiled_, text, text + strlen(pattern.text), OnigurumaOptions(pattern),
             ONIG_ENCODING_UTF8, ONIG_SYNTAX_PERL_NG, &error);
  }
  OnigurumaSearch(const OnigurumaSearch&) = delete;
  OnigurumaSearch& operator=(const OnigurumaSearch&) = delete;
  ~OnigurumaSearch() {
    onig_region_free(region_, 1);
    onig_free(compiled_);
  }

  bool Find(std::string_view text, size_t from, Span* found) const {
    const auto* start = reinterpret_cast<const OnigUChar*>(text.data());
    const OnigUChar* end = start + text.size();
    const int at = onig_search(compiled_, start, end, start + from, end, region_, ONIG_OPTION_NONE);
    if (at < 0) {
      return false;
    }
    *found = {static_cast<size_t>(at), static_cast<size_t>(region_->end[0])};
    return true;
  }

 private:
  regex_t* compiled_ = nullptr;
  OnigRegion* region_;
};

class BoostSearch {
 public:
  explicit BoostSearch(const Pattern& pattern) : compiled_(pattern.text, BoostFlags(pattern)) {}

  bool Find(std::string_view text, size_t from, Span* found) {
    const char* start = text.data();
    const char* end = start + text.size();
    if (!boost::regex_search(start + from, end, match_, compiled_, boost::match_default, start)) {
      return false;
    }
    *found = {static_cast<size_t>(match_[0].first - start),
              static_cast<size_t>(match_[0].second - start)};
    return true;
  }

 private:
  boost::regex compiled_;
  boost::cmatch match_;
};

}  // namespace vekch_bench

#endif
