// A download's progress as a bar: redrawn in place on a terminal, printed
// once when it ends everywhere else (logs and pipes get one line).
#pragma once

#include <cstdint>
#include <string>

class ProgressBar {
public:
  explicit ProgressBar(bool live);

  // Takes a new percentage (0 to 100) and, when live, redraws the bar.
  void update(uint32_t percent);
  // Ends the bar's line with `tail` after the percentage.
  void finish(const std::string &tail);

  uint32_t percent() const { return percent_; }

private:
  std::string line() const;

  bool live_;
  uint32_t percent_ = 0;
};
