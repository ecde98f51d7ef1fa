#include "BenchFiles.h"

#include <filesystem>
#include <fstream>
#include <random>
#include <stdexcept>

namespace fs = std::filesystem;

namespace {

class Directory {
public:
  Directory() {
    std::random_device seed;
    path_ = fs::temp_directory_path() / ("cansimu-bench-" + std::to_string(seed()));
    fs::create_directories(path_);
  }
  ~Directory() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  const fs::path &path() const { return path_; }

private:
  fs::path path_;
};

} // namespace

std::string benchFile(const std::string &name) {
  static Directory directory;
  return (directory.path() / name).string();
}

void writeBenchFile(const std::string &path, const std::string &content) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << content;
  if (!out)
    throw std::runtime_error("cannot write " + path);
}

std::string scenarioEvent(const std::string &request, const std::string &response) {
  return "<EVENEMENT><REQUETE><TRAME>" + request + "</TRAME></REQUETE><REPONSE><TRAME>" + response +
         "</TRAME></REPONSE></EVENEMENT>\n";
}

std::string scenarioDocument(const std::string &events) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<SCENARIO>\n" + events + "</SCENARIO>\n";
}
