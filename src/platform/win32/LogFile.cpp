// Windows parts of the log file: the path read as wide text from the process
// environment, opened in text mode (lines end with CR LF), and the system's
// local time.
#include "platform/LogFile.h"

#include "platform/CodePage.h"

#include <windows.h>

#include <vector>

std::FILE *LogFile::openNamedFile(std::string &path) {
  const DWORD size = GetEnvironmentVariableW(L"CANSIMU_LOG", nullptr, 0);
  if (size <= 1)
    return nullptr;
  std::vector<wchar_t> named(size);
  if (GetEnvironmentVariableW(L"CANSIMU_LOG", named.data(), size) == 0)
    return nullptr;
  path = toAnsi(named.data()).get();
  return _wfopen(named.data(), L"at");
}

LogFile::LocalTime LogFile::localTimeNow() {
  SYSTEMTIME now;
  GetLocalTime(&now);
  return LocalTime{now.wYear,   now.wMonth,  now.wDay,         now.wHour,
                   now.wMinute, now.wSecond, now.wMilliseconds};
}
