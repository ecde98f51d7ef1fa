#include "support/TempDir.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <random>
#include <stdexcept>
#include <sys/stat.h>
#include <utime.h>

namespace fs = std::filesystem;

TempDir::TempDir() {
  std::random_device seed;
  std::mt19937_64 random(seed() ^ static_cast<unsigned long long>(
                                      std::chrono::steady_clock::now().time_since_epoch().count()));
  for (int attempt = 0; attempt < 100; ++attempt) {
    const fs::path candidate =
        fs::temp_directory_path() / ("cansimu-test-" + std::to_string(random()));
    if (fs::create_directory(candidate)) {
      path_ = candidate.generic_string();
      return;
    }
  }
  throw std::runtime_error("cannot create a temporary directory");
}

TempDir::~TempDir() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

std::string TempDir::file(const std::string &name) const { return path_ + "/" + name; }

void writeFile(const std::string &path, const std::string &content) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << content;
  if (!out)
    throw std::runtime_error("cannot write " + path);
}

void setModificationTime(const std::string &path, long long seconds) {
  struct utimbuf times;
  times.actime = static_cast<time_t>(seconds);
  times.modtime = static_cast<time_t>(seconds);
  if (::utime(path.c_str(), &times) != 0)
    throw std::runtime_error("cannot set the time of " + path);
}

long long modificationTime(const std::string &path) {
  struct stat status;
  if (::stat(path.c_str(), &status) != 0)
    throw std::runtime_error("cannot read the time of " + path);
  return static_cast<long long>(status.st_mtime);
}

void touchForward(const std::string &path, long long seconds) {
  setModificationTime(path, modificationTime(path) + seconds);
}
