#include "output/ProgressBar.h"

#include <cstdio>

namespace {
// Fifty cells: one per progress event of a whole download.
constexpr uint32_t kCells = 50;
} // namespace

ProgressBar::ProgressBar(bool live) : live_(live) {}

std::string ProgressBar::line() const {
  const uint32_t filled = percent_ * kCells / 100;
  char percent[8];
  std::snprintf(percent, sizeof percent, "%3u %%", static_cast<unsigned>(percent_));
  return "    [" + std::string(filled, '#') + std::string(kCells - filled, '.') + "] " + percent;
}

void ProgressBar::update(uint32_t percent) {
  percent_ = percent > 100 ? 100 : percent;
  if (!live_)
    return;
  std::printf("\r%s", line().c_str());
  std::fflush(stdout);
}

void ProgressBar::finish(const std::string &tail) {
  std::printf("%s%s  %s\n", live_ ? "\r" : "", line().c_str(), tail.c_str());
  std::fflush(stdout);
}
