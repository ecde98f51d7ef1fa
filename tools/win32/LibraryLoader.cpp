#include "LibraryLoader.h"

#include <windows.h>

LibraryLoader::LibraryLoader(const std::string &path) {
  handle_ = reinterpret_cast<void *>(LoadLibraryA(path.c_str()));
  if (handle_ == nullptr)
    error_ = "cannot load " + path + " (error " + std::to_string(GetLastError()) + ")";
}

LibraryLoader::~LibraryLoader() {
  if (handle_ != nullptr)
    FreeLibrary(static_cast<HMODULE>(handle_));
}

void *LibraryLoader::symbol(const char *name) const {
  return handle_ != nullptr
             ? reinterpret_cast<void *>(GetProcAddress(static_cast<HMODULE>(handle_), name))
             : nullptr;
}
