// Loads a shared library at run time and resolves its symbols by name.
#pragma once

#include <filesystem>
#include <string>

class LibraryLoader {
public:
  explicit LibraryLoader(const std::string &path);
  ~LibraryLoader();
  LibraryLoader(const LibraryLoader &) = delete;
  LibraryLoader &operator=(const LibraryLoader &) = delete;

  bool loaded() const { return handle_ != nullptr; }
  // Why the load failed, as the system says it.
  const std::string &error() const { return error_; }
  // The address of an exported symbol, or null.
  void *symbol(const char *name) const;

private:
  void *handle_ = nullptr;
  std::string error_;
};

// The program's own file, to find the library beside it; empty when the
// system does not say.
std::filesystem::path programPath();
// Sets an environment variable of this process, before the library that
// reads it is loaded.
void setEnvironment(const char *name, const std::string &value);
