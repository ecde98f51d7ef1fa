// The one table ./dev bench prints: each figure, what it is judged by, the
// target and whether this run met it.
#pragma once

#include <map>
#include <optional>
#include <ostream>
#include <string>

// One benchmark's result: seconds per iteration and its counters (median
// over the repetitions where there were several).
struct Measured {
  double seconds = 0;
  std::map<std::string, double> counters;
};
using Results = std::map<std::string, Measured>;

// Prints the table from the benchmarks' results and python-can's seconds
// per round trip (none when it could not be measured). Figures that were
// not measured show as such.
void printSummary(std::ostream &out, const Results &results,
                  const std::optional<double> &pythonCanSeconds);
