// Look-up and load cost of a scenario whose patterns all share one bucket,
// as every request of one service identifier does. Each look-up includes
// the check for edits that precedes it. And `cansimu check` on such files.
#include "BenchFiles.h"
#include "BenchOptions.h"
#include "ecu/Scenario.h"
#include "platform/CodePage.h"

#include <benchmark/benchmark.h>

#include <sys/wait.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

namespace {

// The i-th pattern: "22" followed by four hex digits, so that all of them
// land in the bucket of "22".
std::string patternOf(int64_t index) {
  char text[16];
  std::snprintf(text, sizeof text, "22%04X", static_cast<unsigned>(index));
  return text;
}

// The scenario file with `count` patterns, written once per count.
const std::string &scenarioWith(int64_t count) {
  static std::map<int64_t, std::string> paths;
  auto found = paths.find(count);
  if (found != paths.end())
    return found->second;
  std::string events;
  for (int64_t i = 0; i < count; ++i)
    events += scenarioEvent(patternOf(i), "62" + patternOf(i).substr(2) + "00");
  const std::string path = benchFile("scenario-" + std::to_string(count) + ".xml");
  writeBenchFile(path, scenarioDocument(events));
  return paths[count] = path;
}

void lookUp(benchmark::State &state, const std::string &request, bool expectHit) {
  const int64_t count = state.range(0);
  Scenario scenario(toWideString(scenarioWith(count).c_str()));
  if (!scenario.load() || scenario.entryCount() != static_cast<size_t>(count)) {
    state.SkipWithError("the scenario did not load whole");
    return;
  }
  const ACE_WString asked = toWideString(request.c_str());
  ACE_WString response;
  if ((scenario.findResponse(asked, response) == 0) != expectHit) {
    state.SkipWithError("unexpected look-up result");
    return;
  }
  for (auto _ : state)
    benchmark::DoNotOptimize(scenario.findResponse(asked, response));
}

// The first pattern of the file, the last one, and "22FFFF", which follows
// every pattern written (they stop at 22752F) and matches none.
void firstPattern(benchmark::State &state) { lookUp(state, patternOf(0), true); }
void lastPattern(benchmark::State &state) { lookUp(state, patternOf(state.range(0) - 1), true); }
void noPattern(benchmark::State &state) { lookUp(state, "22FFFF", false); }

// A whole load: existence test, parse and table build.
void load(benchmark::State &state) {
  const std::string &path = scenarioWith(state.range(0));
  for (auto _ : state) {
    Scenario scenario(toWideString(path.c_str()));
    benchmark::DoNotOptimize(scenario.load());
  }
}

// `cansimu check` on a scenario file, as a tester runs it: the whole
// program, timed from its start to its end.
void check(benchmark::State &state) {
  const std::string command =
      "'" CANSIMU_BENCH_TOOL "' check '" + scenarioWith(state.range(0)) + "' >/dev/null 2>&1";
  for (auto _ : state) {
    const auto start = std::chrono::steady_clock::now();
    const int status = std::system(command.c_str());
    state.counters["seconds"] =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    if (status == -1 || !WIFEXITED(status)) {
      state.SkipWithError("cansimu check did not run");
      break;
    }
  }
}

} // namespace

void registerScenarioBenchmarks(const BenchOptions &options) {
  const auto sized = [&](benchmark::internal::Benchmark *benchmark) {
    if (options.smoke)
      benchmark->Iterations(1);
    return benchmark;
  };
  for (const auto &[name, body] :
       {std::pair{"lookup/first_in_file", firstPattern},
        std::pair{"lookup/last_in_file", lastPattern}, std::pair{"lookup/no_match", noPattern}})
    sized(benchmark::RegisterBenchmark(name, body))->Arg(10)->Arg(1000)->Arg(10000);
  sized(benchmark::RegisterBenchmark("load", load))
      ->Arg(1000)
      ->Arg(10000)
      ->Arg(30000)
      ->Unit(benchmark::kMillisecond);
  benchmark::RegisterBenchmark("check", check)->Arg(2000)->Arg(20000)->Iterations(1);
}
