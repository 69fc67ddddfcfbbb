// SPDX-License-Identifier: MIT

// Measures one task as the library and its peers do it, side by side, and prints the ratios.
//
// A Case is one task on one input. Its contenders are lambdas that do the task once and return its
// answer as an integer; they are called once each before anything is timed, and a difference
// between their answers ends the run. Then Google Benchmark times them in many short rounds, and
// the median of the rounds' ratios is taken.
//
//   Case("find_byte", "absent", bytes)
//       .Ours([=] { return Result<veksFindC_8u>(text, length, 'x'); })
//       .Peer("memchr", [=] { return Position(memchr(text, 'x', size), text); })
//       .Run();
//
// The timing loop is compiled into each contender: an iteration costs the call and no more. Peers
// are called by their symbols, as the library is: the benchmarks are compiled with -fno-builtin.
//
// A family is a function that builds its inputs and runs its cases; one static object for it in its
// own source file makes it part of the program:
//
//   const Family kFamily([] { ... });

#ifndef VEKCH_BENCH_RATIOS_H
#define VEKCH_BENCH_RATIOS_H

#include <benchmark/benchmark.h>
#include <stdint.h>

#include <functional>
#include <string>
#include <vector>

namespace vekch_bench {

struct Contender {
  std::string name;
  std::function<int64_t()> answer;
  std::function<void(benchmark::State&)> loop;
};

class Case {
 public:
  // `bytes` is what one run of a contender goes through, for the table and the throughput. Cases
  // are selected by --benchmark_filter, a regular expression on "family/name/bytes".
  Case(std::string family, std::string name, int64_t bytes);

  // How many calls a contender makes in one run; times are given for one call.
  Case& Calls(int64_t calls) {
    calls_ = calls;
    return *this;
  }

  template <class Function>
  Case& Ours(Function function) {
    return Add("vekch", function, function);
  }

  // Where the answer is what was written, `answer` is asked for it after one run of `function`, and
  // the result of `function` itself does not matter.
  template <class Function, class Answer>
  Case& Ours(Function function, Answer answer) {
    return Add("vekch", function, AnswerAfter(function, answer));
  }

  template <class Function>
  Case& Peer(std::string name, Function function) {
    return Add(std::move(name), function, function);
  }

  template <class Function, class Answer>
  Case& Peer(std::string name, Function function, Answer answer) {
    return Add(std::move(name), function, AnswerAfter(function, answer));
  }

  // Compares the answers, measures and prints the row. Ends the program if answers differ.
  void Run();

 private:
  template <class Function, class Answer>
  static auto AnswerAfter(Function function, Answer answer) {
    return [=] {
      benchmark::DoNotOptimize(function());
      return answer();
    };
  }

  template <class Function>
  __attribute__((noinline, aligned(64))) static void Loop(benchmark::State& state,
                                                          Function function) {
    for (auto _ : state) {
      benchmark::DoNotOptimize(static_cast<int64_t>(function()));
      benchmark::ClobberMemory();
    }
  }

  template <class Function, class Answer>
  Case& Add(std::string name, Function function, Answer answer) {
    contenders_.push_back({std::move(name), [=] { return static_cast<int64_t>(answer()); },
                           [=](benchmark::State& state) { Loop(state, function); }});
    return *this;
  }

  void CompareAnswers() const;

  std::string family_;
  std::string name_;
  int64_t bytes_;
  int64_t calls_ = 1;
  std::vector<Contender> contenders_;  // the library's first
};

class Family {
 public:
  explicit Family(std::function<void()> run);
};

// A number that stands for bytes that were written.
int64_t Digest(const void* bytes, int64_t length);

// Answers in one form. Ours is what the function wrote through its last argument.
template <auto kFunction, class... Arguments>
inline int64_t Result(Arguments... arguments) {
  int32_t result;
  kFunction(arguments..., &result);
  return result;
}

// The sign of a three-way comparison's result, since peers agree in no more than that.
inline int64_t Sign(int64_t difference) { return (difference > 0) - (difference < 0); }

// The position of what a peer's search returned; -1 for a null pointer, and for npos.
inline int64_t Position(const void* found, const void* start) {
  return found == nullptr ? -1 : static_cast<const char*>(found) - static_cast<const char*>(start);
}
inline int64_t Position(size_t found) { return static_cast<int64_t>(found); }

// How often a search finds something when it goes on after, or before, every position it found.
// `find(from, length)` gives a position relative to `from`, or -1.
template <class Find>
inline int64_t CountForward(Find find, int32_t length) {
  int64_t count = 0;
  for (int32_t from = 0; from < length; ++count) {
    const int64_t at = find(from, length - from);
    if (at < 0) {
      break;
    }
    from += static_cast<int32_t>(at) + 1;
  }
  return count;
}
template <class Find>
inline int64_t CountBackward(Find find, int32_t length) {
  int64_t count = 0;
  for (int64_t at = length; at > 0; ++count) {
    at = find(0, static_cast<int32_t>(at));
    if (at < 0) {
      break;
    }
  }
  return count;
}

// Runs every family's cases and prints the table and what it shows; the program's exit code.
int RunAllFamilies(int argc, char** argv);

}  // namespace vekch_bench

#endif
