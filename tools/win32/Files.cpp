#include "Files.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <direct.h>
#include <windows.h>

namespace {
bool isSeparator(char c) { return c == '\\' || c == '/'; }
} // namespace

bool fileReadable(const std::string &path) {
  const DWORD attributes = GetFileAttributesA(path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
    return false;
  FILE *file = std::fopen(path.c_str(), "rb");
  if (file == nullptr)
    return false;
  std::fclose(file);
  return true;
}

std::string absolutePath(const std::string &path) {
  char full[MAX_PATH];
  const DWORD length = GetFullPathNameA(path.c_str(), MAX_PATH, full, nullptr);
  return length == 0 || length >= MAX_PATH ? path : std::string(full, length);
}

std::string parentFolder(const std::string &path) {
  size_t end = path.size();
  while (end > 0 && !isSeparator(path[end - 1]))
    --end;
  if (end == 0)
    return ".";
  return end == 1 ? path.substr(0, 1) : path.substr(0, end - 1);
}

bool changeDirectory(const std::string &path) { return _chdir(path.c_str()) == 0; }

bool makeDirectory(const std::string &path) {
  if (CreateDirectoryA(path.c_str(), nullptr))
    return true;
  const DWORD attributes = GetFileAttributesA(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

std::string makeTemporaryDirectory() {
  char base[MAX_PATH];
  const DWORD length = GetTempPathA(MAX_PATH, base);
  if (length == 0 || length >= MAX_PATH)
    return std::string();
  // A name made of the process id and a counter; CreateDirectory refuses
  // one that exists, so the next counter value is tried.
  for (unsigned attempt = 0; attempt < 100; ++attempt) {
    const std::string candidate = std::string(base) + "cansimu-bench-" +
                                  std::to_string(GetCurrentProcessId()) + "-" +
                                  std::to_string(attempt);
    if (CreateDirectoryA(candidate.c_str(), nullptr))
      return candidate;
  }
  return std::string();
}

bool removeDirectory(const std::string &path) { return RemoveDirectoryA(path.c_str()) != 0; }

bool removeFile(const std::string &path) { return std::remove(path.c_str()) == 0; }

bool isDirectory(const std::string &path) {
  const DWORD attributes = GetFileAttributesA(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

std::vector<std::string> filesIn(const std::string &folder) {
  std::vector<std::string> names;
  WIN32_FIND_DATAA found;
  const HANDLE search = FindFirstFileA((folder + "\\*").c_str(), &found);
  if (search == INVALID_HANDLE_VALUE)
    return names;
  do {
    if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
      names.push_back(found.cFileName);
  } while (FindNextFileA(search, &found));
  FindClose(search);
  std::sort(names.begin(), names.end());
  return names;
}

bool isAbsolutePath(const std::string &path) {
  if (!path.empty() && isSeparator(path[0]))
    return true;
  return path.size() > 1 && std::isalpha(static_cast<unsigned char>(path[0])) && path[1] == ':';
}
