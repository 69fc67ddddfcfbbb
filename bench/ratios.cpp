// Timing by Google Benchmark, case by case: the contenders of one case are registered alone, run in
// random order, and their medians collected, before the next case is looked at.

#include "bench/ratios.h"

#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>

#include <algorithm>
#include <regex>

namespace vekch_bench {
namespace {

// Seven repetitions of some milliseconds each: a whole run stays within minutes. Options given on
// the command line come later and win.
constexpr const char* kDefaultOptions[] = {
    "--benchmark_enable_random_interleaving=true",
    "--benchmark_min_time=0.003",
    "--benchmark_repetitions=7",
};

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
  FILE* csv = nullptr;
  std::string lastFamily;
  std::vector<Row> rows;
};

Session& TheSession() {
  static Session session;
  return session;
}

// Keeps the CPU times, in nanoseconds, of every repetition of every contender.
class Collector : public benchmark::BenchmarkReporter {
 public:
  explicit Collector(size_t contenders) : times_(contenders) {}

  bool ReportContext(const Context&) override { return true; }

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.run_type == Run::RT_Iteration) {
        times_[std::stoul(run.run_name.function_name)].push_back(
            run.GetAdjustedCPUTime() * 1e9 / benchmark::GetTimeUnitMultiplier(run.time_unit));
      }
    }
  }

  double Median(size_t contender) const {
    std::vector<double> sorted = times_[contender];
    std::sort(sorted.begin(), sorted.end());
    const size_t count = sorted.size();
    return (sorted[(count - 1) / 2] + sorted[count / 2]) / 2;
  }

 private:
  std::vector<std::vector<double>> times_;
};

std::vector<double> MedianTimes(const std::vector<Contender>& contenders) {
  benchmark::ClearRegisteredBenchmarks();
  for (size_t i = 0; i < contenders.size(); ++i) {
    benchmark::RegisterBenchmark(std::to_string(i).c_str(), contenders[i].loop);
  }
  Collector collector(contenders.size());
  benchmark::RunSpecifiedBenchmarks(&collector, "all");
  std::vector<double> medians;
  for (size_t i = 0; i < contenders.size(); ++i) {
    medians.push_back(collector.Median(i));
  }
  return medians;
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
// picked one lies in the library's file tells which it is.
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
      "  --benchmark_min_time=SECONDS --benchmark_repetitions=N   longer or shorter measurements\n"
      "  --csv=FILE                   also writes family,case,bytes,calls,contender,nanoseconds\n"
      "  --list                       names the cases and measures nothing\n"
      "  --peers                      tells where the C library's functions stand in its file\n");
}

// Takes Google Benchmark's options and ours; returns false for anything else.
bool TakeOptions(int argc, char** argv, Session& session) {
  std::vector<char*> arguments = {argv[0]};
  for (const char* option : kDefaultOptions) {
    arguments.push_back(const_cast<char*>(option));
  }
  arguments.insert(arguments.end(), argv + 1, argv + argc);
  int count = static_cast<int>(arguments.size());
  arguments.push_back(nullptr);
  benchmark::Initialize(&count, arguments.data(), PrintHelp);
  session.filter = std::regex(benchmark::GetBenchmarkFilter());
  for (int i = 1; i < count; ++i) {
    const std::string argument = arguments[static_cast<size_t>(i)];
    if (argument == "--peers") {
      session.peersOnly = true;
    } else if (argument == "--list") {
      session.listOnly = true;
    } else if (argument.rfind("--csv=", 0) == 0) {
      session.csv = fopen(argument.c_str() + 6, "w");
      if (session.csv == nullptr) {
        fprintf(stderr, "%s can't be written\n", argument.c_str() + 6);
        return false;
      }
      fprintf(session.csv, "family,case,bytes,calls,contender,nanoseconds\n");
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
  const std::vector<double> medians = MedianTimes(contenders_);
  const double ours = medians[0] / static_cast<double>(calls_);

  if (session.lastFamily != family_) {
    session.lastFamily = family_;
    printf("\n%-28s %9s %10s %10s  %5s   peers: time (over ours)\n", family_.c_str(), "bytes",
           "vekch", "GB/s", "ratio");
  }
  Row row = {fullName, 0, ""};
  std::string peers;
  for (size_t i = 0; i < contenders_.size(); ++i) {
    const double time = medians[i] / static_cast<double>(calls_);
    if (session.csv != nullptr) {
      fprintf(session.csv, "%s,\"%s\",%lld,%lld,%s,%.3f\n", family_.c_str(), name_.c_str(),
              static_cast<long long>(bytes_), static_cast<long long>(calls_),
              contenders_[i].name.c_str(), time);
    }
    if (i == 0) {
      continue;
    }
    peers += "  " + contenders_[i].name + " " + FormatTime(time) + Format(" (%.2f)", time / ours);
    if (row.fastestPeer.empty() || time / ours < row.ratio) {
      row.ratio = time / ours;
      row.fastestPeer = contenders_[i].name;
    }
  }
  printf("%-28s %9s %10s %10.2f", name_.c_str(), FormatBytes(bytes_).c_str(),
         FormatTime(ours).c_str(), static_cast<double>(bytes_) / medians[0]);
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
