#include "support/TempDir.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>
#include <utime.h>

namespace fs = std::filesystem;

TempDir::TempDir() {
  // The clock keeps names apart where random_device is deterministic.
  std::mt19937_64 random{
      std::random_device{}() ^
      static_cast<unsigned long long>(std::chrono::steady_clock::now().time_since_epoch().count())};
  const fs::path made = fs::temp_directory_path() / ("cansimu-test-" + std::to_string(random()));
  if (!fs::create_directory(made))
    throw std::runtime_error("cannot create " + made.string());
  path_ = made.generic_string();
}

TempDir::~TempDir() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

void writeFile(const std::string &path, const std::string &content) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << content;
  if (!out)
    throw std::runtime_error("cannot write " + path);
}

std::string readFile(const std::string &path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void setModificationTime(const std::string &path, long long seconds) {
  struct utimbuf times;
  times.actime = times.modtime = static_cast<time_t>(seconds);
  if (::utime(path.c_str(), &times) != 0)
    throw std::runtime_error("cannot set the time of " + path);
}
