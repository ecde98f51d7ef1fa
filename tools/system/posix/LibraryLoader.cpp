#include "system/LibraryLoader.h"

#include <cstdlib>
#include <dlfcn.h>

LibraryLoader::LibraryLoader(const std::string &path) {
  handle_ = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle_ == nullptr) {
    const char *why = dlerror();
    error_ = why != nullptr ? why : "cannot load " + path;
  }
}

LibraryLoader::~LibraryLoader() {
  if (handle_ != nullptr)
    dlclose(handle_);
}

void *LibraryLoader::symbol(const char *name) const {
  return handle_ != nullptr ? dlsym(handle_, name) : nullptr;
}

std::filesystem::path programPath() {
  std::error_code error;
  const std::filesystem::path path = std::filesystem::read_symlink("/proc/self/exe", error);
  return error ? std::filesystem::path() : path;
}

void setEnvironment(const char *name, const std::string &value) { setenv(name, value.c_str(), 1); }
