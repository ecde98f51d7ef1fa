#include "Files.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

bool fileReadable(const std::string &path) {
  struct stat info {};
  if (stat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode))
    return false;
  return access(path.c_str(), R_OK) == 0;
}

std::string absolutePath(const std::string &path) {
  if (!path.empty() && path[0] == '/')
    return path;
  char current[PATH_MAX];
  if (getcwd(current, sizeof current) == nullptr)
    return path;
  return std::string(current) + "/" + path;
}

std::string parentFolder(const std::string &path) {
  const size_t slash = path.find_last_of('/');
  if (slash == std::string::npos)
    return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

bool changeDirectory(const std::string &path) { return chdir(path.c_str()) == 0; }

bool makeDirectory(const std::string &path) {
  struct stat info {};
  return mkdir(path.c_str(), 0755) == 0 ||
         (stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode));
}

std::string makeTemporaryDirectory() {
  const char *base = std::getenv("TMPDIR");
  std::string pattern =
      std::string(base != nullptr && *base != '\0' ? base : "/tmp") + "/cansimu-bench-XXXXXX";
  return mkdtemp(&pattern[0]) != nullptr ? pattern : std::string();
}

bool removeDirectory(const std::string &path) { return rmdir(path.c_str()) == 0; }

bool removeFile(const std::string &path) { return std::remove(path.c_str()) == 0; }

bool isDirectory(const std::string &path) {
  struct stat info {};
  return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

std::vector<std::string> filesIn(const std::string &folder) {
  std::vector<std::string> names;
  DIR *directory = opendir(folder.c_str());
  if (directory == nullptr)
    return names;
  while (const dirent *entry = readdir(directory))
    if (fileReadable(folder + "/" + entry->d_name))
      names.push_back(entry->d_name);
  closedir(directory);
  std::sort(names.begin(), names.end());
  return names;
}

bool isAbsolutePath(const std::string &path) { return !path.empty() && path[0] == '/'; }
