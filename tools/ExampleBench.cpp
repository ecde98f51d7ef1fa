#include "ExampleBench.h"

#include "EmbeddedExamples.h"
#include "Errors.h"
#include "Files.h"

#include <cstdio>

ExampleBench::ExampleBench() : folder_(CANSIMU_EXAMPLES_DIR) {
  if (fileReadable(file("bench.xml")))
    return;
  folder_ = makeTemporaryDirectory();
  if (folder_.empty())
    throw SetupError("cannot create a temporary folder for the example bench");
  temporary_ = true;
  writeEmbeddedBench(folder_);
}

ExampleBench::~ExampleBench() {
  if (!temporary_)
    return;
  for (size_t i = 0; i < kEmbeddedExampleCount; ++i)
    removeFile(file(kEmbeddedExamples[i].name));
  removeDirectory(folder_);
}

std::string ExampleBench::file(const std::string &name) const { return folder_ + "/" + name; }

std::vector<std::string> writeEmbeddedBench(const std::string &folder) {
  if (!makeDirectory(folder))
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
