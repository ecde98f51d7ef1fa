// Captures the lines the library hands to the logging service while it lives.
#pragma once

#include <mutex>
#include <string>
#include <vector>

class LogCapture {
public:
  LogCapture();
  ~LogCapture();
  LogCapture(const LogCapture &) = delete;
  LogCapture &operator=(const LogCapture &) = delete;

  // The captured lines, as UTF-8.
  std::vector<std::string> lines() const;
  // How many captured lines contain `fragment`.
  size_t count(const std::string &fragment) const;

private:
  mutable std::mutex lock_;
  std::vector<std::string> lines_;
};
