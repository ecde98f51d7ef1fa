// Windows file-system boundary: paths go to the system as they are.
#include "platform/FileSystem.h"

#include <ace/OS_NS_stdio.h>
#include <ace/OS_NS_sys_stat.h>
#include <ace/OS_NS_unistd.h>

#include <io.h>

ACE_CString systemPath(const char *path) { return ACE_CString(path == nullptr ? "" : path); }

bool ansiFileExists(const char *path) {
  if (path == nullptr || *path == '\0')
    return false;
  return ACE_OS::access(path, 0) == 0;
}

bool wideFileExists(const ACE_WCHAR_T *path) {
  if (path == nullptr || *path == 0)
    return false;
  return ::_waccess(path, 0) == 0;
}

bool ansiModificationTime(const char *path, time_t &seconds) {
  if (path == nullptr || *path == '\0')
    return false;
  ACE_stat status;
  if (ACE_OS::stat(path, &status) != 0)
    return false;
  seconds = status.st_mtime;
  return true;
}

FILE *ansiOpenFile(const char *path, const char *mode) {
  if (path == nullptr || *path == '\0')
    return nullptr;
  return ACE_OS::fopen(path, mode);
}

FILE *wideOpenFile(const ACE_WCHAR_T *path, const char *mode) {
  if (path == nullptr || *path == 0)
    return nullptr;
  wchar_t wideMode[8] = {0};
  for (size_t i = 0; i < 7 && mode[i] != '\0'; ++i)
    wideMode[i] = static_cast<wchar_t>(mode[i]);
  return ::_wfopen(path, wideMode);
}
