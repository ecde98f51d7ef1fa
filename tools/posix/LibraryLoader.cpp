#include "LibraryLoader.h"

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
