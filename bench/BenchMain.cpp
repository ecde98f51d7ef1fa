// ./dev bench: runs every benchmark, then python-can's reference round trip,
// and prints one table of figures, each with the ratio it is judged by.
//
//   bench_cansimu [--smoke] [--details] [--library=PATH] [--python=PATH]
//                 [--round-trips=N] [Google Benchmark flags]
//
// --smoke runs each benchmark once with tiny counts (CI: no timing judged);
// --details also prints Google Benchmark's own report on standard error;
// --round-trips sets the count of each round-trip repetition (for profiling).
// Exit status 1 when a benchmark or the reference failed to run.
#include "BenchOptions.h"
#include "Summary.h"

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <cstdio>
#include <cstring>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

namespace {

// Keeps each benchmark's result (the median when there are repetitions)
// and notes failures; with `details` it also passes every report on to
// Google Benchmark's console reporter.
class Collector : public benchmark::BenchmarkReporter {
public:
  explicit Collector(bool details) {
    if (details) {
      console_.SetOutputStream(&std::cerr);
      console_.SetErrorStream(&std::cerr);
    }
    details_ = details;
  }

  bool ReportContext(const Context &context) override {
    return !details_ || console_.ReportContext(context);
  }

  void ReportRuns(const std::vector<Run> &runs) override {
    if (details_)
      console_.ReportRuns(runs);
    for (const Run &run : runs) {
      if (run.error_occurred) {
        failures.push_back(run.benchmark_name() + ": " + run.error_message);
        continue;
      }
      const bool median = run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
      if (run.run_type == Run::RT_Aggregate && !median)
        continue;
      // The name without the iteration and repetition counts.
      const std::string name =
          run.run_name.function_name + (run.run_name.args.empty() ? "" : "/" + run.run_name.args);
      Measured &measured = results[name];
      measured.seconds = run.GetAdjustedCPUTime() / benchmark::GetTimeUnitMultiplier(run.time_unit);
      for (const auto &[name, value] : run.counters)
        measured.counters[name] = value.value;
      if (!details_)
        std::cerr << "measured " << name << "\n";
    }
  }

  void Finalize() override {
    if (details_)
      console_.Finalize();
  }

  Results results;
  std::vector<std::string> failures;

private:
  bool details_ = false;
  benchmark::ConsoleReporter console_;
};

// python-can's seconds per round trip, from the reference script; none, with
// the reason on standard error, when it could not run.
std::optional<double> pythonCanRoundTrip(const std::string &python, const BenchOptions &options) {
  const std::string command =
      "'" + python + "' '" CANSIMU_BENCH_SOURCE_DIR "/python_can_round_trip.py' " +
      std::to_string(options.roundTrips) + " " + std::to_string(options.repetitions);
  std::FILE *pipe = popen(command.c_str(), "r");
  if (pipe == nullptr)
    return std::nullopt;
  double seconds = 0;
  const bool read = std::fscanf(pipe, "%lf", &seconds) == 1;
  const int status = pclose(pipe);
  if (!read || status != 0 || seconds <= 0) {
    std::cerr << "python-can reference failed (" << command << ")\n";
    return std::nullopt;
  }
  return seconds;
}

bool takeValue(const char *argument, const char *flag, std::string &value) {
  const size_t length = std::strlen(flag);
  if (std::strncmp(argument, flag, length) != 0 || argument[length] != '=')
    return false;
  value = argument + length + 1;
  return true;
}

} // namespace

int main(int argc, char **argv) {
  BenchOptions options;
  options.libraryPath = CANSIMU_BENCH_LIBRARY;
  std::string python = "/usr/bin/python3";
  bool details = false;
  std::string roundTrips;
  std::vector<char *> passedOn = {argv[0]};
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--smoke") == 0)
      options.smoke = true;
    else if (std::strcmp(argv[i], "--details") == 0)
      details = true;
    else if (!takeValue(argv[i], "--library", options.libraryPath) &&
             !takeValue(argv[i], "--python", python) &&
             !takeValue(argv[i], "--round-trips", roundTrips))
      passedOn.push_back(argv[i]);
  }
  if (options.smoke) {
    options.roundTrips = 100;
    options.repetitions = 1;
    options.wakeSamples = 20;
    options.requestsBeforeFirstReading = 100;
    options.requestsBeforeSecondReading = 1000;
  }
  if (!roundTrips.empty())
    options.roundTrips = std::stoll(roundTrips);
  int passedCount = static_cast<int>(passedOn.size());
  benchmark::Initialize(&passedCount, passedOn.data());
  if (benchmark::ReportUnrecognizedArguments(passedCount, passedOn.data()))
    return 2;

  // glibc gives freed memory back to the kernel by thresholds that move with
  // the sizes of the blocks freed before, and getting a page back costs
  // about 20 µs on a paravirtualised machine: a scenario load would then
  // cost two to five times as much after some benchmarks as after others.
  // Pinned, every figure measures the library's own work.
  mallopt(M_MMAP_THRESHOLD, 64 << 20);
  mallopt(M_TRIM_THRESHOLD, 256 << 20);
  const std::optional<double> pythonCan = pythonCanRoundTrip(python, options);
  registerHostBenchmarks(options);
  registerScenarioBenchmarks(options);
  Collector collector(details);
  benchmark::RunSpecifiedBenchmarks(&collector);
  closeHostSessions();

  std::cout << "\n";
  printSummary(std::cout, collector.results, pythonCan);
  for (const std::string &failure : collector.failures)
    std::cerr << "failed: " << failure << "\n";
  return collector.failures.empty() && pythonCan ? 0 : 1;
}
