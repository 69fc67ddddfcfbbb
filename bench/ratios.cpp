// SPDX-License-Identifier: MIT

// Timing by Google Benchmark, case by case and round by round. A round times each contender of one
// case once, for a millisecond, or for one run that takes longer; the rounds go through the
// contenders forwards and backwards in turn. Where rounds are long, there are fewer of them. Each
// round gives a ratio, of times that lie close together, and the median of the rounds' ratios is
// the case's: a machine that changes its speed between rounds does not disturb it.

#include "bench/ratios.h"

#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>

#include <algorithm>
#include <regex>

namespace vekch_bench {
namespace {

constexpr int32_t kDefaultRounds = 11;
constexpr int32_t kFewestRounds = 3;
constexpr double kRoundNanoseconds = 1e6;      // of one contender
constexpr double kMeasureNanoseconds = 1.5e9;  // what a case should not exceed by much

struct Row {
  std::string name;
  double ratio;  // the fastest peer's time over ours
  std::string fastestPeer;
};

struct Session {
  std::vector<std::function<void()>> families;
  std::regex filter;
  bool listOnly = false;
  bool peersOnly = false;
  int32_t rounds = kDefaultRounds;
  FILE* csv = nullptr;
  std::string lastFamily;
  std::vector<Row> rows;
};

Session& TheSession() {
  static Session session;
  return session;
}

// What one iteration of each contender took in a round.
class RoundReporter : public benchmark::BenchmarkReporter {
 public:
  explicit RoundReporter(size_t contenders) : nanoseconds(contenders) {}

  bool ReportContext(const Context&) override { return true; }

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      nanoseconds[std::stoul(run.run_name.function_name)] =
          run.GetAdjustedCPUTime() * 1e9 / benchmark::GetTimeUnitMultiplier(run.time_unit);
    }
  }

  std::vector<double> nanoseconds;
};

// The time of one iteration of each contender.
std::vector<double> RunRound(const std::vector<Contender>& contenders,
                             const std::vector<benchmark::IterationCount>& iterations,
                             bool backwards) {
  benchmark::ClearRegisteredBenchmarks();
  for (size_t i = 0; i < contenders.size(); ++i) {
    const size_t c = backwards ? contenders.size() - 1 - i : i;
    benchmark::RegisterBenchmark(std::to_string(c).c_str(), contenders[c].loop)
        ->Iterations(iterations[c]);
  }
  RoundReporter reporter(contenders.size());
  benchmark::RunSpecifiedBenchmarks(&reporter, "all");
  return reporter.nanoseconds;
}

// Raises the numbers of iterations of contenders whose round lasts less than half of the wanted
// time; returns whether there was one.
bool RaiseIterations(const std::vector<double>& nanoseconds,
                     std::vector<benchmark::IterationCount>& iterations) {
  bool raised = false;
  for (size_t i = 0; i < iterations.size(); ++i) {
    const double spent = nanoseconds[i] * static_cast<double>(iterations[i]);
    if (spent < kRoundNanoseconds / 2) {
      const double factor = std::min(std::max(kRoundNanoseconds / (spent + 1), 2.0), 100.0);
      iterations[i] =
          static_cast<benchmark::IterationCount>(static_cast<double>(iterations[i]) * factor);
      raised = true;
    }
  }
  return raised;
}

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const size_t count = values.size();
  return (values[(count - 1) / 2] + values[count / 2]) / 2;
}

struct Measurement {
  double nanoseconds;
  double ratio;  // the contender's time over the library's
};

std::vector<Measurement> MeasureRounds(const std::vector<Contender>& contenders, int32_t rounds,
                                       const std::vector<benchmark::IterationCount>& iterations) {
  std::vector<std::vector<double>> times(contenders.size());
  std::vector<std::vector<double>> ratios(contenders.size());
  for (int32_t round = 0; round < rounds; ++round) {
    const std::vector<double> now = RunRound(contenders, iterations, round % 2 != 0);
    for (size_t i = 0; i < contenders.size(); ++i) {
      times[i].push_back(now[i]);
      ratios[i].push_back(now[i] / now[0]);
    }
  }
  std::vector<Measurement> measurements;
  for (size_t i = 0; i < contenders.size(); ++i) {
    measurements.push_back({Median(times[i]), Median(ratios[i])});
  }
  return measurements;
}

// The rounds that are asked for, or as many as time allows.
int32_t Rounds(int32_t asked, const std::vector<double>& nanoseconds,
               const std::vector<benchmark::IterationCount>& iterations) {
  double round = 0;
  for (size_t i = 0; i < iterations.size(); ++i) {
    round += nanoseconds[i] * static_cast<double>(iterations[i]);
  }
  const double affordable = std::max(kMeasureNanoseconds / round, double{kFewestRounds});
  return affordable < asked ? static_cast<int32_t>(affordable) : asked;
}

std::vector<Measurement> Measure(const std::vector<Contender>& contenders, int32_t asked) {
  std::vector<benchmark::IterationCount> iterations(contenders.size(), 1);
  std::vector<double> trial;
  do {
    trial = RunRound(contenders, iterations, false);
  } while (RaiseIterations(trial, iterations));
  const int32_t rounds = Rounds(asked, trial, iterations);
  // A slow moment in the last trial leaves a contender with few iterations, and the timer's own
  // cost in its figure: the measured times show it, and all is measured again.
  for (;;) {
    const std::vector<Measurement> measured = MeasureRounds(contenders, rounds, iterations);
    std::vector<double> times;
    for (const Measurement& one : measured) {
      times.push_back(one.nanoseconds);
    }
    if (!RaiseIterations(times, iterations)) {
      return measured;
    }
  }
}

std::string Format(const char* format, double value) {
  char text[64];
  snprintf(text, sizeof text, format, value);
  return text;
}

std::string FormatTime(double nanoseconds) {
  return nanoseconds < 1e3   ? Format("%.2f ns", nanoseconds)
         : nanoseconds < 1e6 ? Format("%.2f us", nanoseconds / 1e3)
                             : Format("%.2f ms", nanoseconds / 1e6);
}

std::string FormatBytes(int64_t bytes) {
  const double value = static_cast<double>(bytes);
  return bytes >= 1 << 20 && bytes % (1 << 20) == 0   ? Format("%.0f MiB", value / (1 << 20))
         : bytes >= 1 << 10 && bytes % (1 << 10) == 0 ? Format("%.0f KiB", value / (1 << 10))
                                                      : Format("%.0f", value);
}

void PrintSummary(std::vector<Row> rows) {
  std::sort(rows.begin(), rows.end(), [](const Row& a, const Row& b) { return a.ratio < b.ratio; });
  const auto firstAhead =
      std::find_if(rows.begin(), rows.end(), [](const Row& row) { return row.ratio >= 1; });
  printf("\n%zu cases, %zu of them behind the fastest peer%s\n", rows.size(),
         static_cast<size_t>(firstAhead - rows.begin()),
         firstAhead == rows.begin() ? "." : ", the worst first:");
  for (auto row = rows.begin(); row != firstAhead; ++row) {
    printf("  %5.2f  %s  (%s)\n", row->ratio, row->name.c_str(), row->fastestPeer.c_str());
  }
}

// The C library picks a variant of each of its functions when the program is loaded. Where the
// picked one lies in the library's file says which it is.
void PrintPeers() {
  for (const char* name : {"memcmp", "strncasecmp", "memchr", "memrchr", "strchr", "strlen",
                           "strcspn", "strspn", "strstr", "memmem", "memcpy", "memmove"}) {
    Dl_info where;
    if (const void* function = dlsym(RTLD_DEFAULT, name);
        function != nullptr && dladdr(function, &where) != 0) {
      const ptrdiff_t offset =
          static_cast<const char*>(function) - static_cast<const char*>(where.dli_fbase);
      printf("%s %s 0x%llx\n", name, where.dli_fname, static_cast<long long>(offset));
    }
  }
}

void PrintHelp() {
  printf(
      "Measures vekch beside its peers. A ratio is a peer's time over ours: above 1 we are faster."
      "\n\n"
      "  --benchmark_filter=REGEX     only the cases whose family/name/bytes it matches\n"
      "  --rounds=N                   how many rounds\n"
      "  --csv=FILE                   also writes "
      "family,case,bytes,calls,contender,nanoseconds,ratio\n"
      "  --list                       names the cases and measures nothing\n"
      "  --peers                      shows where the C library's functions are in its file\n");
}

// Takes Google Benchmark's options and ours; returns false for anything else.
bool TakeOptions(int argc, char** argv, Session& session) {
  benchmark::Initialize(&argc, argv, PrintHelp);
  session.filter = std::regex(benchmark::GetBenchmarkFilter());
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    if (argument == "--peers") {
      session.peersOnly = true;
    } else if (argument == "--list") {
      session.listOnly = true;
    } else if (argument.rfind("--rounds=", 0) == 0) {
      session.rounds = std::max(1, atoi(argument.c_str() + 9));
    } else if (argument.rfind("--csv=", 0) == 0) {
      session.csv = fopen(argument.c_str() + 6, "w");
      if (session.csv == nullptr) {
        fprintf(stderr, "%s can't be written\n", argument.c_str() + 6);
        return false;
      }
      fprintf(session.csv, "family,case,bytes,calls,contender,nanoseconds,ratio\n");
    } else {
      fprintf(stderr, "unknown option: %s\n", argument.c_str());
      return false;
    }
  }
  return true;
}

}  // namespace

Family::Family(std::function<void()> run) { TheSession().families.push_back(std::move(run)); }

Case::Case(std::string family, std::string name, int64_t bytes)
    : family_(std::move(family)), name_(std::move(name)), bytes_(bytes) {}

void Case::CompareAnswers() const {
  const int64_t ours = contenders_.front().answer();
  for (const Contender& contender : contenders_) {
    const int64_t theirs = contender.answer();
    if (theirs != ours) {
      fflush(stdout);
      fprintf(stderr, "%s/%s/%lld: answers differ: vekch %lld, %s %lld\n", family_.c_str(),
              name_.c_str(), static_cast<long long>(bytes_), static_cast<long long>(ours),
              contender.name.c_str(), static_cast<long long>(theirs));
      exit(1);
    }
  }
}

void Case::Run() {
  Session& session = TheSession();
  const std::string fullName = family_ + "/" + name_ + "/" + std::to_string(bytes_);
  if (!std::regex_search(fullName, session.filter)) {
    return;
  }
  if (session.listOnly) {
    printf("%s\n", fullName.c_str());
    return;
  }
  CompareAnswers();
  const std::vector<Measurement> measured = Measure(contenders_, session.rounds);
  const double calls = static_cast<double>(calls_);
  Row row = {fullName, 0, ""};
  std::string peers;
  for (size_t i = 0; i < contenders_.size(); ++i) {
    const std::string& contender = contenders_[i].name;
    const double time = measured[i].nanoseconds / calls;
    const double ratio = measured[i].ratio;
    if (session.csv != nullptr) {
      fprintf(session.csv, "%s,\"%s\",%lld,%lld,%s,%.3f,%.4f\n", family_.c_str(), name_.c_str(),
              static_cast<long long>(bytes_), static_cast<long long>(calls_), contender.c_str(),
              time, ratio);
    }
    if (i != 0) {
      peers += "  " + contender + " " + FormatTime(time) + Format(" (%.2f)", ratio);
      if (row.fastestPeer.empty() || ratio < row.ratio) {
        row.ratio = ratio;
        row.fastestPeer = contender;
      }
    }
  }
  if (session.lastFamily != family_) {
    session.lastFamily = family_;
    printf("\n%-36s %9s %10s %10s  %5s   peers: time (over ours)\n", family_.c_str(), "bytes",
           "vekch", "GB/s", "ratio");
  }
  printf("%-36s %9s %10s %10.2f", name_.c_str(), FormatBytes(bytes_).c_str(),
         FormatTime(measured[0].nanoseconds / calls).c_str(),
         static_cast<double>(bytes_) / measured[0].nanoseconds);
  if (row.fastestPeer.empty()) {
    printf("\n");
  } else {
    printf("  %5.2f %c %s\n", row.ratio, row.ratio < 1 ? '<' : ' ', peers.c_str());
    session.rows.push_back(row);
  }
  fflush(stdout);
}

int64_t Digest(const void* bytes, int64_t length) {
  uint64_t digest = 0xCBF29CE484222325U;
  const uint8_t* p = static_cast<const uint8_t*>(bytes);
  for (int64_t i = 0; i < length; ++i) {
    digest = (digest ^ p[i]) * 0x100000001B3U;
  }
  return static_cast<int64_t>(digest);
}

int RunAllFamilies(int argc, char** argv) {
  Session& session = TheSession();
  if (!TakeOptions(argc, argv, session)) {
    return 2;
  }
  if (session.peersOnly) {
    PrintPeers();
    return 0;
  }
  for (const std::function<void()>& run : session.families) {
    run();
  }
  if (!session.listOnly) {
    PrintSummary(session.rows);
  }
  if (session.csv != nullptr && fclose(session.csv) != 0) {
    fprintf(stderr, "the CSV file could not be written\n");
    return 1;
  }
  benchmark::Shutdown();
  return 0;
}

}  // namespace vekch_bench
