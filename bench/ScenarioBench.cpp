// Look-up and load cost of a scenario whose patterns all share one bucket
// (every request of one service identifier does). Each look-up includes the
// file-status check that precedes it.
#include "ecu/Scenario.h"
#include "platform/CodePage.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <stdexcept>
#include <string>

namespace fs = std::filesystem;

namespace {

// The i-th pattern: "22" followed by four hex digits, so all land in the
// bucket of "22". The last one written is at the head of the bucket.
std::string patternOf(int64_t index) {
  char text[16];
  std::snprintf(text, sizeof text, "22%04X", static_cast<unsigned>(index));
  return text;
}

// Scenario files written once per size into a temporary directory that is
// removed at exit.
class ScenarioFiles {
public:
  ~ScenarioFiles() {
    std::error_code ignored;
    if (!directory_.empty())
      fs::remove_all(directory_, ignored);
  }

  const std::string &withPatterns(int64_t count) {
    auto found = paths_.find(count);
    if (found != paths_.end())
      return found->second;
    const std::string path =
        (directory() / ("scenario-" + std::to_string(count) + ".xml")).string();
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << "<SCENARIO>\n";
    for (int64_t i = 0; i < count; ++i)
      out << "<EVENEMENT><REQUETE><T>" << patternOf(i) << "</T></REQUETE><REPONSE><TRAME>62"
          << patternOf(i).substr(2) << "00</TRAME></REPONSE></EVENEMENT>\n";
    out << "</SCENARIO>\n";
    if (!out)
      throw std::runtime_error("cannot write " + path);
    return paths_[count] = path;
  }

private:
  const fs::path &directory() {
    if (directory_.empty()) {
      std::random_device seed;
      directory_ = fs::temp_directory_path() / ("cansimu-bench-" + std::to_string(seed()));
      fs::create_directories(directory_);
    }
    return directory_;
  }

  fs::path directory_;
  std::map<int64_t, std::string> paths_;
};

ScenarioFiles files;

void lookUp(benchmark::State &state, const std::string &request, bool expectHit) {
  const int64_t count = state.range(0);
  Scenario scenario(toWideString(files.withPatterns(count).c_str()));
  if (!scenario.load() || scenario.entryCount() != static_cast<size_t>(count)) {
    state.SkipWithError("scenario did not load");
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
  state.counters["patterns"] = static_cast<double>(count);
}

void BM_FindResponse_HitAtHead(benchmark::State &state) {
  lookUp(state, patternOf(state.range(0) - 1), true);
}

void BM_FindResponse_HitAtTail(benchmark::State &state) { lookUp(state, patternOf(0), true); }

// "22FFFF" follows no pattern written (they stop at 22270F), so the whole
// bucket is compared.
void BM_FindResponse_Miss(benchmark::State &state) { lookUp(state, "22FFFF", false); }

// A whole load: existence test, parse and table build (each new pattern is
// first compared with every entry of its bucket).
void BM_LoadScenario(benchmark::State &state) {
  const std::string &path = files.withPatterns(state.range(0));
  for (auto _ : state) {
    Scenario scenario(toWideString(path.c_str()));
    benchmark::DoNotOptimize(scenario.load());
  }
  state.counters["patterns"] = static_cast<double>(state.range(0));
}

} // namespace

BENCHMARK(BM_FindResponse_HitAtHead)->Arg(10)->Arg(1000)->Arg(10000);
BENCHMARK(BM_FindResponse_HitAtTail)->Arg(10)->Arg(1000)->Arg(10000);
BENCHMARK(BM_FindResponse_Miss)->Arg(10)->Arg(1000)->Arg(10000);
BENCHMARK(BM_LoadScenario)->Arg(1000)->Arg(10000)->Arg(30000)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
