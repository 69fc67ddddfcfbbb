#include "bench/inputs.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

namespace vekch_bench {
namespace {

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
  Input input(length, offset);
  std::minstd_rand random(12345);
  for (int64_t i = 0; i < length; ++i) {
    input.data()[i] = static_cast<uint8_t>(alphabet[(random() >> 8) % alphabet.size()]);
  }
  return input;
}

Input RandomLetters(int64_t length, int64_t offset) {
  return RandomOf(length, "abcdefghijklmnopqrstuvwxyz", offset);
}

Input RandomBytes(int64_t length, int64_t offset) {
  Input input(length, offset);
  std::minstd_rand random(54321);
  for (int64_t i = 0; i < length; ++i) {
    input.data()[i] = static_cast<uint8_t>(random() >> 8);
  }
  return input;
}

Input English(int64_t length, int64_t offset) {
  static const std::string text = ReadEnglish();
  return Repeated(length, text, offset);
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

}  // namespace vekch_bench
