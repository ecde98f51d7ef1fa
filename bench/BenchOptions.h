// What one run of the benchmark program measures, and how much of it.
#pragma once

#include <cstdint>
#include <string>

struct BenchOptions {
  // Every benchmark once, with tiny counts: a check that each one runs.
  bool smoke = false;
  // The shared library the host benchmarks load.
  std::string libraryPath;
  // Round trips per repetition, for the library and for python-can alike.
  int64_t roundTrips = 200000;
  int repetitions = 5;
  // Wake-ups timed for each percentile figure.
  int wakeSamples = 5000;
  // Requests before the first and the second resident-memory reading.
  int64_t requestsBeforeFirstReading = 10000;
  int64_t requestsBeforeSecondReading = 1000000;
};

// Registers the benchmarks that drive the library through its exports.
void registerHostBenchmarks(const BenchOptions &options);
// Ends the host benchmarks' drivers; their libraries stay loaded.
void closeHostSessions();
// Registers the scenario look-up and load benchmarks.
void registerScenarioBenchmarks(const BenchOptions &options);
