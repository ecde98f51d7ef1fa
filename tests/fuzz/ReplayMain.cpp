// Feeds every file of the folders named on the command line to the fuzz
// target linked beside it, once each, in name order. A fault shows as the
// sanitizers and the target's own checks report it; 0 when all ran.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

int main(int argc, char **argv) {
  std::vector<std::filesystem::path> inputs;
  for (int i = 1; i < argc; ++i) {
    std::error_code missing;
    for (const auto &entry : std::filesystem::directory_iterator(argv[i], missing))
      if (entry.is_regular_file())
        inputs.push_back(entry.path());
  }
  std::sort(inputs.begin(), inputs.end());
  for (const auto &path : inputs) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes((std::istreambuf_iterator<char>(file)),
                                  std::istreambuf_iterator<char>());
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size());
  }
  std::printf("%zu inputs replayed\n", inputs.size());
  return inputs.empty() ? 1 : 0;
}
