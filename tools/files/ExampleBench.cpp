#include "files/ExampleBench.h"

#include "EmbeddedExamples.h"
#include "Errors.h"
#include "files/Paths.h"
#include "library/LibraryLookup.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <random>

namespace fs = std::filesystem;

namespace {
// A fresh folder of this user's under the system's temporary folder; empty
// when none can be made.
fs::path makeTemporaryFolder() {
  std::error_code error;
  const fs::path base = fs::temp_directory_path(error);
  if (error)
    return fs::path();
  std::random_device random;
  for (int attempt = 0; attempt < 100; ++attempt) {
    const fs::path candidate = base / ("cansimu-bench-" + std::to_string(random()));
    if (fs::create_directory(candidate, error)) {
      fs::permissions(candidate, fs::perms::owner_all, error);
      return candidate;
    }
  }
  return fs::path();
}
} // namespace

ExampleBench::ExampleBench() {
  // A program run from its build folder uses the source tree's examples, so
  // that edits there count; any other uses the copy it carries.
  if (runningFromBuildTree() && fileReadable(fs::path(CANSIMU_EXAMPLES_DIR) / "bench.xml")) {
    folder_ = CANSIMU_EXAMPLES_DIR;
    return;
  }
  folder_ = makeTemporaryFolder().string();
  if (folder_.empty())
    throw SetupError("cannot create a temporary folder for the example bench");
  temporary_ = true;
  writeEmbeddedBench(folder_);
}

ExampleBench::~ExampleBench() {
  std::error_code error;
  if (temporary_)
    fs::remove_all(folder_, error);
}

std::string ExampleBench::file(const std::string &name) const { return folder_ + "/" + name; }

std::vector<std::string> writeEmbeddedBench(const std::string &folder) {
  std::error_code error;
  fs::create_directories(folder, error);
  if (!fs::is_directory(folder, error))
    throw SetupError("cannot create the folder " + folder);
  std::vector<std::string> written;
  for (size_t i = 0; i < kEmbeddedExampleCount; ++i) {
    const EmbeddedFile &embedded = kEmbeddedExamples[i];
    const std::string path = folder + "/" + embedded.name;
    FILE *out = std::fopen(path.c_str(), "wb");
    const bool complete =
        out != nullptr && std::fwrite(embedded.data, 1, embedded.size, out) == embedded.size;
    if (out != nullptr && std::fclose(out) != 0)
      throw SetupError("cannot write " + path);
    if (!complete)
      throw SetupError("cannot write " + path);
    written.push_back(embedded.name);
  }
  return written;
}

std::vector<std::string> differingBenchFiles(const std::string &folder) {
  std::vector<std::string> differing;
  for (size_t i = 0; i < kEmbeddedExampleCount; ++i) {
    const EmbeddedFile &embedded = kEmbeddedExamples[i];
    const std::string path = folder + "/" + embedded.name;
    std::error_code error;
    if (!fs::exists(path, error))
      continue;
    std::vector<unsigned char> held(embedded.size + 1);
    FILE *in = std::fopen(path.c_str(), "rb");
    // One byte more than the example's size tells a longer file apart.
    const size_t read = in != nullptr ? std::fread(held.data(), 1, held.size(), in) : 0;
    if (in != nullptr)
      std::fclose(in);
    if (in == nullptr || read != embedded.size ||
        !std::equal(held.begin(), held.begin() + embedded.size, embedded.data))
      differing.push_back(embedded.name);
  }
  return differing;
}
