#include "support/LogCapture.h"

#include "platform/CodePage.h"
#include "platform/TalvenLog_Static.h"

LogCapture::LogCapture() {
  TalvenLog_Static::setObserver([this](const ACE_WCHAR_T *text) {
    const auto narrow = toAnsi(text);
    std::lock_guard<std::mutex> guard(lock_);
    lines_.emplace_back(narrow.get());
  });
}

LogCapture::~LogCapture() { TalvenLog_Static::setObserver(nullptr); }

std::vector<std::string> LogCapture::lines() const {
  std::lock_guard<std::mutex> guard(lock_);
  return lines_;
}

size_t LogCapture::count(const std::string &fragment) const {
  std::lock_guard<std::mutex> guard(lock_);
  size_t found = 0;
  for (const auto &line : lines_)
    if (line.find(fragment) != std::string::npos)
      ++found;
  return found;
}
