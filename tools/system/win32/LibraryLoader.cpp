#include "system/LibraryLoader.h"

#include <stdlib.h>
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

std::filesystem::path programPath() {
  std::wstring path(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length = GetModuleFileNameW(nullptr, &path[0], static_cast<DWORD>(path.size()));
    if (length == 0)
      return std::filesystem::path();
    if (length < path.size())
      return std::filesystem::path(path.substr(0, length));
    path.resize(path.size() * 2);
  }
}

// Both the process's environment block (GetEnvironmentVariable) and the C
// runtime's copy (getenv), whichever the library reads.
void setEnvironment(const char *name, const std::string &value) {
  SetEnvironmentVariableA(name, value.c_str());
  _putenv_s(name, value.c_str());
}
