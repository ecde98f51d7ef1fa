// What the fuzz targets share: a scratch folder for the files an input
// becomes, and an input read as a stream of small choices.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

namespace fuzz {

// A folder of this process's own, made once and removed at exit. Memory
// backed where the system has such a folder: every input is written to a
// file, and a disk makes that the whole cost of a run.
class ScratchFolder {
public:
  ScratchFolder() {
    std::error_code none;
    const std::filesystem::path shared("/dev/shm");
    const std::filesystem::path base = std::filesystem::is_directory(shared, none)
                                           ? shared
                                           : std::filesystem::temp_directory_path();
    path_ = base / ("cansimu-fuzz-" + std::to_string(std::random_device{}()));
    std::filesystem::create_directories(path_);
  }
  ~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  const std::filesystem::path &path() const { return path_; }

private:
  std::filesystem::path path_;
};

inline const std::filesystem::path &scratchFolder() {
  static const ScratchFolder folder;
  return folder.path();
}

// Writes `size` bytes to `name` in the scratch folder; returns its path.
inline std::string writeScratch(const std::string &name, const uint8_t *data, size_t size) {
  const std::filesystem::path path = scratchFolder() / name;
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(reinterpret_cast<const char *>(data), static_cast<std::streamsize>(size));
  return path.string();
}

// Moves a file's modification time forward by a second at each call, so the
// library re-reads it at its next look.
inline void touchLater(const std::string &path) {
  static auto time = std::filesystem::file_time_type::clock::now();
  time += std::chrono::seconds(1);
  std::error_code ignored;
  std::filesystem::last_write_time(path, time, ignored);
}

// Reads an input byte by byte; past its end every choice is 0.
class Choices {
public:
  Choices(const uint8_t *data, size_t size) : data_(data), size_(size) {}
  bool more() const { return at_ < size_; }
  uint8_t byte() { return at_ < size_ ? data_[at_++] : 0; }
  // A value below `count` (count > 0).
  size_t below(size_t count) { return byte() % count; }
  uint32_t word() {
    uint32_t value = 0;
    for (int i = 0; i < 4; ++i)
      value = value << 8 | byte();
    return value;
  }

private:
  const uint8_t *data_;
  size_t size_;
  size_t at_ = 0;
};

} // namespace fuzz
