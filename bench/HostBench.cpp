// What a host measures: request and frame round trips through the exports,
// how fast a blocked reader wakes, and whether memory stays flat over a
// million requests. The wake-up reference, a bare ACE auto-reset event
// between two threads, is timed the same way in the same run.
#include "BenchFiles.h"
#include "BenchOptions.h"
#include "HostSession.h"

#include <ace/Event.h>
#include <ace/Time_Value.h>
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <exception>
#include <fstream>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

// What the library writes besides its answers: nothing, the log file, or
// the bus trace and the session report. Each writing kind loads its own copy
// of the library, so that what one opens stays out of the others' figures.
enum class Outputs { None, Log, TraceAndReport };

// A copy of the library under another name, which the loader keeps apart
// from the original: its own driver, log file and trace.
std::string libraryCopy(const std::string &library, const std::string &name) {
  const std::string copy = benchFile(name);
  std::ifstream in(library, std::ios::binary);
  std::ofstream out(copy, std::ios::binary | std::ios::trunc);
  out << in.rdbuf();
  if (!out)
    throw std::runtime_error("cannot copy " + library + " to " + copy);
  return copy;
}

std::unique_ptr<HostSession> openSession(const BenchOptions &options, Outputs outputs) {
  switch (outputs) {
  case Outputs::Log:
    return std::make_unique<HostSession>(libraryCopy(options.libraryPath, "libcansimu-log.so"),
                                         "<LOGFILE>" + benchFile("bench.log") + "</LOGFILE>");
  case Outputs::TraceAndReport:
    return std::make_unique<HostSession>(libraryCopy(options.libraryPath, "libcansimu-trace.so"),
                                         "<TRACEFILE>" + benchFile("bench.candump") +
                                             "</TRACEFILE><REPORTFILE>" + benchFile("report.xml") +
                                             "</REPORTFILE>");
  case Outputs::None:
    break;
  }
  return std::make_unique<HostSession>(options.libraryPath);
}

// The session of each kind of outputs, in the order of Outputs.
std::unique_ptr<HostSession> sessions[3];

// The session of each kind of outputs, shared by the host benchmarks and
// opened by the first one; null, with the benchmark skipped, when the
// library refused it.
HostSession *sessionFor(benchmark::State &state, const BenchOptions &options, uint32_t mode,
                        Outputs outputs = Outputs::None) {
  static std::string failures[3];
  const size_t kind = static_cast<size_t>(outputs);
  std::unique_ptr<HostSession> &session = sessions[kind];
  std::string &failure = failures[kind];
  if (!session && failure.empty()) {
    try {
      session = openSession(options, outputs);
    } catch (const std::exception &error) {
      failure = error.what();
    }
  }
  if (!session) {
    state.SkipWithError(failure.c_str());
    return nullptr;
  }
  session->setMode(mode);
  return session.get();
}

// One kind of round trip, in the mode it needs, each one checked.
struct RoundTrip {
  const char *name;
  uint32_t mode;
  bool (HostSession::*run)();
  Outputs outputs;
};
const RoundTrip kRoundTrips[] = {
    {"host/diagnostic_round_trip", 1, &HostSession::diagnosticRoundTrip, Outputs::None},
    {"host/raw_frame_round_trip", 2, &HostSession::rawFrameRoundTrip, Outputs::None},
    {"host/diagnostic_round_trip_log", 1, &HostSession::diagnosticRoundTrip, Outputs::Log},
    {"host/diagnostic_round_trip_trace_report", 1, &HostSession::diagnosticRoundTrip,
     Outputs::TraceAndReport}};

void roundTrips(benchmark::State &state, const BenchOptions &options, const RoundTrip &kind) {
  HostSession *host = sessionFor(state, options, kind.mode, kind.outputs);
  if (host == nullptr)
    return;
  for (auto _ : state) {
    if (!(host->*kind.run)()) {
      state.SkipWithError("a round trip did not come back with its answer");
      break;
    }
  }
}

void busyWait(std::chrono::microseconds duration) {
  const Clock::time_point until = Clock::now() + duration;
  while (Clock::now() < until) {
  }
}

// Times wake-ups of a reader thread blocked in one of `waits`, taken in
// turn, so that every kind meets the same load of the machine: the reader
// announces that it is about to block; this thread lets it settle into the
// wait, notes the time and calls the matching `wakes`; the reader notes
// when the wait returned. Per kind, `samples` latencies in microseconds,
// sorted; none when a wait failed.
template <size_t Kinds>
std::array<std::vector<double>, Kinds>
wakeUpLatencies(int samples, const std::array<std::function<bool()>, Kinds> &waits,
                const std::array<std::function<void()>, Kinds> &wakes) {
  std::array<std::vector<double>, Kinds> latencies;
  const int rounds = samples * static_cast<int>(Kinds);
  std::atomic<int> ready{0};
  Clock::time_point sentAt;
  std::thread reader([&] {
    for (int k = 0; k < rounds; ++k) {
      ready.store(k + 1, std::memory_order_release);
      if (!waits[k % Kinds]()) {
        ready.store(-1, std::memory_order_release);
        return;
      }
      const Clock::time_point woken = Clock::now();
      latencies[k % Kinds].push_back(
          std::chrono::duration<double, std::micro>(woken - sentAt).count());
    }
  });
  for (int k = 0; k < rounds; ++k) {
    int seen = 0;
    while ((seen = ready.load(std::memory_order_acquire)) != k + 1 && seen != -1) {
    }
    if (seen == -1)
      break;
    busyWait(std::chrono::microseconds(50));
    sentAt = Clock::now();
    wakes[k % Kinds]();
  }
  reader.join();
  for (std::vector<double> &kind : latencies) {
    if (kind.size() != static_cast<size_t>(samples))
      kind.clear();
    std::sort(kind.begin(), kind.end());
  }
  return latencies;
}

double percentile(const std::vector<double> &sorted, double fraction) {
  const size_t rank = static_cast<size_t>(std::ceil(fraction * sorted.size()));
  return sorted[std::min(sorted.size(), std::max<size_t>(rank, 1)) - 1];
}

// A reader blocked in CAN_ChnRxMsg woken by a request, and the same reader
// blocked on a bare ACE auto-reset event woken by its signal, in turn.
void wakeUps(benchmark::State &state, const BenchOptions &options) {
  HostSession *host = sessionFor(state, options, 1);
  if (host == nullptr)
    return;
  ACE_Event event(0 /* auto reset */, 0 /* not signalled */);
  const ACE_Time_Value timeout(5, 0);
  for (auto _ : state) {
    const auto latencies =
        wakeUpLatencies<2>(options.wakeSamples,
                           {[&] { return host->receiveAnswer(5000); },
                            [&] { return event.wait(&timeout, 0 /* relative */) == 0; }},
                           {[&] { host->sendRequest(); }, [&] { event.signal(); }});
    if (latencies[0].empty() || latencies[1].empty()) {
      state.SkipWithError("a reader was not woken");
      break;
    }
    state.counters["channel_p50_us"] = percentile(latencies[0], 0.50);
    state.counters["channel_p99_us"] = percentile(latencies[0], 0.99);
    state.counters["event_p50_us"] = percentile(latencies[1], 0.50);
    state.counters["event_p99_us"] = percentile(latencies[1], 0.99);
  }
}

double residentBytes() {
  long total = 0, resident = 0;
  std::FILE *statm = std::fopen("/proc/self/statm", "r");
  if (statm == nullptr)
    return 0;
  const bool read = std::fscanf(statm, "%ld %ld", &total, &resident) == 2;
  std::fclose(statm);
  return read ? static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE)) : 0;
}

void residentMemory(benchmark::State &state, const BenchOptions &options) {
  HostSession *host = sessionFor(state, options, 1);
  if (host == nullptr)
    return;
  const auto requests = [&](int64_t count) {
    for (int64_t i = 0; i < count; ++i)
      if (!host->diagnosticRoundTrip())
        return false;
    return true;
  };
  for (auto _ : state) {
    if (!requests(options.requestsBeforeFirstReading)) {
      state.SkipWithError("a request did not come back with its answer");
      break;
    }
    state.counters["first_bytes"] = residentBytes();
    if (!requests(options.requestsBeforeSecondReading - options.requestsBeforeFirstReading)) {
      state.SkipWithError("a request did not come back with its answer");
      break;
    }
    state.counters["second_bytes"] = residentBytes();
  }
  state.counters["first_requests"] = static_cast<double>(options.requestsBeforeFirstReading);
  state.counters["second_requests"] = static_cast<double>(options.requestsBeforeSecondReading);
}

} // namespace

void closeHostSessions() {
  // The copies of the library share ACE, and its allocator, with the
  // original and with the program: each installed its own over the one
  // before, and objects made since hold it. Every driver ends, and no
  // library is unloaded before the process ends.
  for (auto &session : sessions)
    if (session) {
      session->library.DrvEnd();
      session.release();
    }
}

void registerHostBenchmarks(const BenchOptions &options) {
  const auto withOptions = [options](void (*body)(benchmark::State &, const BenchOptions &)) {
    return [options, body](benchmark::State &state) { body(state, options); };
  };
  for (const RoundTrip &kind : kRoundTrips) {
    // A fifth of the round trips where each one writes files: enough for a
    // steady figure, without hundreds of megabytes of log.
    const int64_t count = kind.outputs == Outputs::None
                              ? options.roundTrips
                              : std::max<int64_t>(1, options.roundTrips / 5);
    benchmark::RegisterBenchmark(
        kind.name, [options, &kind](benchmark::State &state) { roundTrips(state, options, kind); })
        ->Iterations(count)
        ->Repetitions(options.repetitions)
        ->ReportAggregatesOnly(true)
        ->Unit(benchmark::kMicrosecond);
  }
  benchmark::RegisterBenchmark("host/wake_up", withOptions(wakeUps))
      ->Iterations(1)
      ->Unit(benchmark::kMillisecond);
  benchmark::RegisterBenchmark("host/resident_memory", withOptions(residentMemory))
      ->Iterations(1)
      ->Unit(benchmark::kMillisecond);
}
