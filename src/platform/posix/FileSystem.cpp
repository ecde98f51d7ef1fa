// POSIX file-system boundary: paths are UTF-8, '\' separators become '/'.
#include "platform/FileSystem.h"

#include "platform/CodePage.h"

#include <ace/OS_NS_stdio.h>
#include <ace/OS_NS_sys_stat.h>
#include <ace/OS_NS_unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <unistd.h>

ACE_CString systemPath(const char *path) {
  ACE_CString mapped(path == nullptr ? "" : path);
  for (size_t i = 0; i < mapped.length(); ++i)
    if (mapped[i] == '\\')
      mapped[i] = '/';
  return mapped;
}

bool ansiFileExists(const char *path) {
  if (path == nullptr || *path == '\0')
    return false;
  return ACE_OS::access(systemPath(path).c_str(), F_OK) == 0;
}

bool wideFileExists(const ACE_WCHAR_T *path) { return ansiFileExists(toAnsi(path).get()); }

bool ansiModificationTime(const char *path, time_t &seconds) {
  if (path == nullptr || *path == '\0')
    return false;
  // Mapped on the stack when it fits: this check precedes every scenario
  // look-up.
  char mapped[512];
  const size_t length = std::strlen(path);
  if (length < sizeof mapped)
    for (size_t i = 0; i <= length; ++i)
      mapped[i] = path[i] == '\\' ? '/' : path[i];
  ACE_stat status;
  if (ACE_OS::stat(length < sizeof mapped ? mapped : systemPath(path).c_str(), &status) != 0)
    return false;
  seconds = status.st_mtime;
  return true;
}

FILE *ansiOpenFile(const char *path, const char *mode) {
  if (path == nullptr || *path == '\0')
    return nullptr;
  return ACE_OS::fopen(systemPath(path).c_str(), mode);
}

FILE *wideOpenFile(const ACE_WCHAR_T *path, const char *mode) {
  return ansiOpenFile(toAnsi(path).get(), mode);
}

bool isAbsolutePath(const ACE_WString &path) {
  return path.length() > 0 && (path[0] == L'/' || path[0] == L'\\');
}

ACE_WString workingDirectory() {
  char buffer[4096];
  if (::getcwd(buffer, sizeof buffer) == nullptr)
    return ACE_WString();
  return toWideString(buffer);
}

bool replaceFile(const ACE_WCHAR_T *from, const ACE_WCHAR_T *to) {
  return std::rename(systemPath(toAnsi(from).get()).c_str(),
                     systemPath(toAnsi(to).get()).c_str()) == 0;
}

ACE_WString environmentValue(const char *name) {
  const char *value = std::getenv(name);
  return value == nullptr ? ACE_WString() : toWideString(value);
}
