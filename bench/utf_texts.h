// SPDX-License-Identifier: MIT

// Texts for the conversions, with the spaces, digits and punctuation of real ones.

#ifndef VEKCH_BENCH_UTF_TEXTS_H
#define VEKCH_BENCH_UTF_TEXTS_H

#include <stdint.h>

#include <string>

namespace vekch_bench {

constexpr const char* kTextNames[] = {"ascii", "latin", "cyrillic", "cjk", "emoji"};

// The text of that name in UTF-8, its sentences in random order, over and over; cut at the first
// end of a character at or after `bytes`. The same for the same arguments in every run.
std::string MakeText(const std::string& name, int64_t bytes);

}  // namespace vekch_bench

#endif
