// What a host measures: request and frame round trips through the exports,
// how fast a blocked reader wakes, and whether memory stays flat over a
// million requests. The wake-up reference, a bare ACE auto-reset event
// between two threads, is timed the same way in the same run.
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
#include <functional>
#include <memory>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

// The session all host benchmarks share, opened by the first one; null,
// with the benchmark skipped, when the library refused it.
HostSession *sessionFor(benchmark::State &state, const BenchOptions &options, uint32_t mode) {
  static std::unique_ptr<HostSession> session;
  static std::string failure;
  if (!session && failure.empty()) {
    try {
      session = std::make_unique<HostSession>(options.libraryPath);
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
};
const RoundTrip kRoundTrips[] = {
    {"host/diagnostic_round_trip", 1, &HostSession::diagnosticRoundTrip},
    {"host/raw_frame_round_trip", 2, &HostSession::rawFrameRoundTrip}};

void roundTrips(benchmark::State &state, const BenchOptions &options, const RoundTrip &kind) {
  HostSession *host = sessionFor(state, options, kind.mode);
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

void registerHostBenchmarks(const BenchOptions &options) {
  const auto withOptions = [options](void (*body)(benchmark::State &, const BenchOptions &)) {
    return [options, body](benchmark::State &state) { body(state, options); };
  };
  for (const RoundTrip &kind : kRoundTrips) {
    benchmark::RegisterBenchmark(
        kind.name, [options, &kind](benchmark::State &state) { roundTrips(state, options, kind); })
        ->Iterations(options.roundTrips)
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
