// Captures the lines the library hands to the logging service while it lives.
#pragma once

#include "platform/CodePage.h"
#include "platform/TalvenLog_Static.h"

#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

class LogCapture {
public:
  LogCapture() {
    TalvenLog_Static::setObserver([this](const ACE_WCHAR_T *text) {
      const auto narrow = toAnsi(text);
      std::lock_guard<std::mutex> guard(lock_);
      lines_.emplace_back(narrow.get());
    });
  }
  ~LogCapture() { TalvenLog_Static::setObserver(nullptr); }

  // The captured lines, in the ANSI code page (UTF-8 on POSIX).
  std::vector<std::string> lines() const {
    std::lock_guard<std::mutex> guard(lock_);
    return lines_;
  }
  // How many captured lines contain `fragment`.
  size_t count(const std::string &fragment) const {
    const auto all = lines();
    return static_cast<size_t>(std::count_if(all.begin(), all.end(), [&](const std::string &line) {
      return line.find(fragment) != std::string::npos;
    }));
  }

private:
  // Also makes the capture impossible to copy or move: the observer holds `this`.
  mutable std::mutex lock_;
  std::vector<std::string> lines_;
};
