// Windows file-system boundary: paths go to the system as they are.
#include "platform/FileSystem.h"

#include <ace/OS_NS_stdio.h>
#include <ace/OS_NS_sys_stat.h>
#include <ace/OS_NS_unistd.h>

#include <io.h>
#include <windows.h>

#include <cstring>
#include <string>
#include <vector>

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

bool isAbsolutePath(const ACE_WString &path) {
  if (path.length() > 0 && (path[0] == L'\\' || path[0] == L'/'))
    return true;
  return path.length() > 2 && path[1] == L':' && (path[2] == L'\\' || path[2] == L'/');
}

ACE_WString workingDirectory() {
  const DWORD size = ::GetCurrentDirectoryW(0, nullptr);
  if (size == 0)
    return ACE_WString();
  std::vector<wchar_t> buffer(size);
  const DWORD written = ::GetCurrentDirectoryW(size, buffer.data());
  return written == 0 ? ACE_WString() : ACE_WString(buffer.data(), written);
}

bool replaceFile(const ACE_WCHAR_T *from, const ACE_WCHAR_T *to) {
  return ::MoveFileExW(from, to, MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
}

ACE_WString environmentValue(const char *name) {
  const std::wstring wideName(name, name + std::strlen(name));
  const DWORD size = ::GetEnvironmentVariableW(wideName.c_str(), nullptr, 0);
  if (size <= 1)
    return ACE_WString();
  std::vector<wchar_t> value(size);
  const DWORD written = ::GetEnvironmentVariableW(wideName.c_str(), value.data(), size);
  return written == 0 ? ACE_WString() : ACE_WString(value.data(), written);
}
