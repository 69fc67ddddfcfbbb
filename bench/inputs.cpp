// SPDX-License-Identifier: MIT
#include "bench/inputs.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <numeric>
#include <random>
#include <string>

namespace vekch_bench {
namespace {

constexpr int64_t kRandomUnit = 999'983;
constexpr const char* kEnglishFolder = "/usr/share/common-licenses";

std::string ReadEnglish() {
  namespace fs = std::filesystem;
  std::vector<fs::path> files;
  std::error_code ignored;
  for (const fs::directory_entry& entry : fs::directory_iterator(kEnglishFolder, ignored)) {
    if (entry.is_regular_file() && !entry.is_symlink()) {
      files.push_back(entry.path());
    }
  }
  std::sort(files.begin(), files.end());
  std::string text;
  for (const fs::path& file : files) {
    std::ifstream stream(file, std::ios::binary);
    text.append(std::istreambuf_iterator<char>(stream), {});
  }
  text.erase(std::remove(text.begin(), text.end(), '\0'), text.end());
  if (text.empty()) {
    fprintf(stderr, "no English text in %s\n", kEnglishFolder);
    exit(1);
  }
  return text;
}

}  // namespace

void Input::Put(int64_t position, std::string_view bytes) {
  memcpy(data_ + (position < 0 ? length_ + position : position), bytes.data(), bytes.size());
}

Input Filled(int64_t length, uint8_t value, int64_t offset) {
  Input input(length, offset);
  memset(input.data(), value, input.size());
  return input;
}

Input Repeated(int64_t length, std::string_view unit, int64_t offset) {
  Input input(length, offset);
  for (size_t at = 0; at < input.size(); at += unit.size()) {
    memcpy(input.data() + at, unit.data(), std::min(unit.size(), input.size() - at));
  }
  return input;
}

Input RandomOf(int64_t length, std::string_view alphabet, int64_t offset) {
  // Large inputs repeat what would take seconds to make anew.
  std::string unit(static_cast<size_t>(std::min(length, kRandomUnit)), '\0');
  std::minstd_rand random(12345);
  for (char& c : unit) {
    c = alphabet[(random() >> 8) % alphabet.size()];
  }
  return Repeated(length, unit, offset);
}

Input RandomLetters(int64_t length, int64_t offset) {
  return RandomOf(length, "abcdefghijklmnopqrstuvwxyz", offset);
}

Input RandomBytes(int64_t length, int64_t offset) {
  std::string alphabet;
  for (int32_t value = 0; value < 256; ++value) {
    alphabet.push_back(static_cast<char>(value));
  }
  return RandomOf(length, alphabet, offset);
}

Input English(int64_t length, int64_t offset) {
  static const std::string text = ReadEnglish();
  return Repeated(length, text, offset);
}

int64_t Count(const Input& input, std::string_view set) {
  const std::string_view view = input.view();
  return std::count_if(view.begin(), view.end(),
                       [=](char c) { return set.find(c) != std::string_view::npos; });
}

std::vector<int32_t> RandomLengths(size_t count, int32_t lowest, int32_t highest) {
  std::minstd_rand random(2021);
  std::vector<int32_t> lengths(count);
  for (int32_t& length : lengths) {
    length = lowest +
             static_cast<int32_t>((random() >> 8) % static_cast<uint32_t>(highest - lowest + 1));
  }
  return lengths;
}

int64_t Sum(const std::vector<int32_t>& lengths) {
  return std::accumulate(lengths.begin(), lengths.end(), int64_t{0});
}

}  // namespace vekch_bench
