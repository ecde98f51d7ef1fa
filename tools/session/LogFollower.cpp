#include "session/LogFollower.h"

#include "system/LibraryLoader.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>

LogFollower::LogFollower(std::string path) : path_(std::move(path)) { skipToEnd(); }

void LogFollower::skipToEnd() {
  std::error_code error;
  const auto size = path_.empty() ? 0 : std::filesystem::file_size(path_, error);
  offset_ = error ? 0 : static_cast<long long>(size);
}

std::vector<std::string> LogFollower::newLines(const std::string &marker) {
  return newLines(std::vector<std::string>{marker}).front();
}

std::vector<std::vector<std::string>>
LogFollower::newLines(const std::vector<std::string> &markers) {
  std::vector<std::vector<std::string>> found(markers.size());
  if (path_.empty())
    return found;
  std::ifstream file(path_, std::ios::binary);
  if (!file)
    return found;
  file.seekg(offset_);
  std::string line;
  // Only whole lines count: a line still being written is read next time.
  while (std::getline(file, line) && !file.eof()) {
    offset_ += static_cast<long long>(line.size()) + 1;
    if (!line.empty() && line.back() == '\r')
      line.pop_back();
    for (size_t i = 0; i < markers.size(); ++i) {
      const size_t at = line.find(markers[i]);
      if (at != std::string::npos) {
        found[i].push_back(line.substr(at + markers[i].size()));
        break;
      }
    }
  }
  return found;
}

ProgramLog::ProgramLog() {
  const char *named = std::getenv("CANSIMU_LOG");
  if (named != nullptr && *named != '\0') {
    path_ = named;
    return;
  }
  std::random_device random;
  const auto name = "cansimu-" + std::to_string(random()) + "-" +
                    std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()) +
                    ".log";
  std::error_code error;
  const auto folder = std::filesystem::temp_directory_path(error);
  if (error)
    return;
  path_ = (folder / name).string();
  temporary_ = true;
  setEnvironment("CANSIMU_LOG", path_);
}

ProgramLog::~ProgramLog() {
  if (!temporary_)
    return;
  std::error_code error;
  std::filesystem::remove(path_, error);
}

std::string programLogPath() {
  const char *named = std::getenv("CANSIMU_LOG");
  return named != nullptr ? named : "";
}

std::string shownSource(const std::string &line) {
  const size_t request = line.find("request ");
  const size_t colon = line.find(": ", request == std::string::npos ? 0 : request);
  const std::string text = colon == std::string::npos ? line : line.substr(colon + 2);
  std::string shown;
  for (size_t at = 0; at < text.size();) {
    const size_t open = text.find('<', at);
    const size_t close = open == std::string::npos ? open : text.find('>', open);
    if (close == std::string::npos) {
      shown += text.substr(at);
      break;
    }
    const std::string path = text.substr(open + 1, close - open - 1);
    const size_t slash = path.find_last_of("/\\");
    shown +=
        text.substr(at, open - at) + (slash == std::string::npos ? path : path.substr(slash + 1));
    at = close + 1;
  }
  return shown;
}

std::string sourceEcu(const std::string &line) {
  const size_t start = line.find("ECU ");
  if (start == std::string::npos)
    return "";
  const size_t end = line.find_first_of(",:", start);
  return line.substr(start + 4, end == std::string::npos ? std::string::npos : end - start - 4);
}

std::string shownState(const std::string &line) {
  // "ECU 7e0/7e8: session 03; ..." -> "session 03; ..."
  const size_t at = line.find(": ");
  return at == std::string::npos ? line : line.substr(at + 2);
}
