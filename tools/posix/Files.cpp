#include "Files.h"

#include <cstdio>
#include <cstdlib>
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
