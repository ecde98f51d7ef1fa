// A fresh temporary directory per test, removed with everything in it.
#pragma once

#include <string>

class TempDir {
public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir &) = delete;
  TempDir &operator=(const TempDir &) = delete;

  const std::string &path() const { return path_; }
  // The path of `name` inside the directory (with '/').
  std::string file(const std::string &name) const { return path_ + "/" + name; }

private:
  std::string path_;
};

// Writes `content` to `path`, replacing the file.
void writeFile(const std::string &path, const std::string &content);
// The whole content of a file, byte for byte; empty when it cannot be read.
std::string readFile(const std::string &path);

// Sets the file's access and modification times to `seconds` since the
// epoch: how a test simulates an edit without waiting for the clock.
void setModificationTime(const std::string &path, long long seconds);
