// SPDX-License-Identifier: MIT

// Calls every exported function again and again and compares what it gives with its first answers:
// in eight threads at once, each on its own outputs. Built for the thread sanitizer, and run by
// valgrind in a single thread.
//
//   every_function THREADS ROUNDS           each thread has its own outputs
//   every_function THREADS ROUNDS --shared  as well, and one in which all of them write a result,
//                                           which must be found

#include "tests/every_function.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <thread>

namespace vekch::test {
namespace {

// What a function gave, as one number after the other.
struct Answers {
  Written& written;
  std::vector<int64_t> numbers = {};

  template <class... A>
  void operator()(vekStatus (*function)(A...) noexcept, const std::tuple<A...>& arguments,
                  vekStatus /*status*/, const std::vector<Numbers>& /*rows*/,
                  unsigned /*mayBeNull*/ = 0) {
    written.Prepare();
    numbers.push_back(std::apply(function, arguments));
    numbers.insert(numbers.end(), {written.number, written.length, written.count, written.hash,
                                   written.result.length});
    numbers.insert(numbers.end(), std::begin(written.bytes), std::end(written.bytes));
    numbers.insert(numbers.end(), std::begin(written.units), std::end(written.units));
  }
};

std::vector<int64_t> CallAll(Written& written, const RegExpReplaceState* replacement) {
  Answers answers = {written};
  EveryFunction(written, replacement, answers);
  answers.numbers.push_back(vekchGetLibVersion()->major);
  return answers.numbers;
}

bool AllSucceed(const std::vector<int64_t>& answers, size_t perFunction) {
  for (size_t i = 0; i < answers.size(); i += perFunction) {
    if (answers[i] < 0) {
      return false;
    }
  }
  return answers.size() > 45 * perFunction;
}

int Run(int threads, int rounds, bool shares) {
  // A template's object may be used by all of them.
  const auto first = std::make_unique<Written>();
  first->Prepare();
  const RegExpReplaceState* const replacement = first->Template();
  const auto scratch = std::make_unique<Written>();
  const std::vector<int64_t> expected = CallAll(*scratch, replacement);
  if (!AllSucceed(expected, 6 + sizeof scratch->bytes + std::size(scratch->units))) {
    std::puts("a function refused what it is to take");
    return 1;
  }
  int32_t sharedIndex = 0;
  // Rounds begin together. Nothing is ordered by the counter, or it would hide what is looked for.
  std::atomic<int> arrived = {0};
  std::vector<int> wrong(static_cast<size_t>(threads));
  std::vector<std::thread> all;
  for (int& count : wrong) {
    all.emplace_back([&, rounds] {
      const auto own = std::make_unique<Written>();
      for (int i = 1; i <= rounds; ++i) {
        arrived.fetch_add(1, std::memory_order_relaxed);
        while (arrived.load(std::memory_order_relaxed) < i * threads) {
          std::this_thread::yield();
        }
        count += CallAll(*own, replacement) != expected ? 1 : 0;
        if (shares) {
          veksFindC_8u(kText, kTextSize, 'e', &sharedIndex);
        }
      }
    });
  }
  int sum = 0;
  for (size_t i = 0; i < all.size(); ++i) {
    all[i].join();
    sum += wrong[i];
  }
  std::printf("%d threads, %zu numbers a round, %d rounds differ\n", threads, expected.size(), sum);
  return sum != 0 ? 1 : 0;
}

}  // namespace
}  // namespace vekch::test

int main(int argc, char** argv) {
  if (argc < 3) {
    return 2;
  }
  const bool shares = argc > 3 && std::strcmp(argv[3], "--shared") == 0;
  return vekch::test::Run(std::atoi(argv[1]), std::atoi(argv[2]), shares);
}
