// The example bench (configuration, scenarios, firmware images) that the
// demo runs on when no configuration is given.
#pragma once

#include <string>
#include <vector>

class ExampleBench {
public:
  // The source tree's examples/ when this build still sees it (so a tester's
  // edits there count); otherwise the bench embedded in the program, written
  // to a temporary folder for this run. Throws SetupError.
  ExampleBench();
  // Removes the temporary copy, if one was written.
  ~ExampleBench();
  ExampleBench(const ExampleBench &) = delete;
  ExampleBench &operator=(const ExampleBench &) = delete;

  // The path of one of the bench's files ("bench.xml", "application.bin").
  std::string file(const std::string &name) const;
  bool embedded() const { return temporary_; }

private:
  std::string folder_;
  bool temporary_ = false;
};

// Writes the embedded bench into `folder` (created if needed) and returns
// the names of the files written. Throws SetupError.
std::vector<std::string> writeEmbeddedBench(const std::string &folder);
// The files of the embedded bench that `folder` already holds with another
// content (a tester's edits, or another bench): a write would replace them.
std::vector<std::string> differingBenchFiles(const std::string &folder);
