// SPDX-License-Identifier: MIT

// rewrite PATTERN TEMPLATE FOLDER: replaces all matches in the files of a folder and of those in
// it, by threads that take the files in turn, each with a pattern of its own. A file is changed
// only if something matched, and only when the new one is written whole.

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "vekch/vekch.hpp"

namespace {

namespace fs = std::filesystem;

struct Counts {
  std::atomic<size_t> files{0};
  std::atomic<size_t> matches{0};
  std::atomic<size_t> faults{0};
};

bool WriteWhole(const fs::path& path, const std::string& text) {
  const fs::path fresh = path.string() + ".rewrite~";
  std::ofstream out(fresh, std::ios::binary);
  out.write(text.data(), static_cast<std::streamsize>(text.size()));
  out.close();
  std::error_code error;
  if (out) {
    fs::permissions(fresh, fs::status(path, error).permissions(), error);
    fs::rename(fresh, path, error);
  }
  if (!out || error) {
    fs::remove(fresh, error);
    return false;
  }
  return true;
}

void Rewrite(const fs::path& path, vekch::Pattern& pattern, const vekch::Template& replacement,
             Counts& counts) {
  std::ifstream in(path, std::ios::binary);
  const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  const vekch::Replaced replaced = pattern.replace_all(text, replacement);
  if (!in || replaced.status < 0 || (replaced.count != 0 && !WriteWhole(path, replaced.text))) {
    ++counts.faults;
    return;
  }
  counts.files += replaced.count != 0 ? 1 : 0;
  counts.matches += replaced.count;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::cerr << "usage: rewrite PATTERN TEMPLATE FOLDER\n";
    return 2;
  }
  const vekch::Pattern pattern(argv[1], "m");
  const vekch::Template replacement(argv[2]);
  if (!pattern || !replacement) {
    std::cerr << (pattern ? replacement.fault() : pattern.fault()).text() << '\n';
    return 2;
  }
  std::vector<fs::path> paths;
  std::error_code error;
  for (const auto& entry : fs::recursive_directory_iterator(argv[3], error)) {
    if (entry.is_regular_file() && !entry.is_symlink()) {
      paths.push_back(entry.path());
    }
  }
  if (error) {
    std::cerr << argv[3] << ": " << error.message() << '\n';
    return 2;
  }
  Counts counts;
  std::atomic<size_t> next{0};
  std::vector<std::thread> pool;
  const size_t threads = std::min<size_t>(std::max(1U, std::thread::hardware_concurrency()), 8);
  for (size_t i = 0; i < threads; ++i) {
    pool.emplace_back([&, own = pattern.clone()]() mutable {
      for (size_t at = next++; at < paths.size(); at = next++) {
        Rewrite(paths[at], own, replacement, counts);
      }
    });
  }
  for (std::thread& thread : pool) {
    thread.join();
  }
  std::cout << counts.matches << " matches replaced in " << counts.files << " of " << paths.size()
            << " files\n";
  if (counts.faults != 0) {
    std::cerr << counts.faults << " files could not be rewritten\n";
  }
  return counts.faults != 0 ? 1 : 0;
}
