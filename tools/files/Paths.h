// The one check the program makes on a path before it hands the path on.
#pragma once

#include <filesystem>
#include <fstream>

// True when the path names a regular file that can be opened for reading.
inline bool fileReadable(const std::filesystem::path &path) {
  std::error_code error;
  return std::filesystem::is_regular_file(path, error) &&
         std::ifstream(path, std::ios::binary).is_open();
}
