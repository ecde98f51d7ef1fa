// POSIX parts of the log file: the path as the environment gives it, the
// time from the real-time clock in the process's time zone.
#include "platform/LogFile.h"

#include <cstdlib>
#include <ctime>

std::FILE *LogFile::openNamedFile(std::string &path) {
  const char *named = std::getenv("CANSIMU_LOG");
  if (named == nullptr || *named == '\0')
    return nullptr;
  path = named;
  return std::fopen(named, "a");
}

LogFile::LocalTime LogFile::localTimeNow() {
  struct timespec now;
  ::clock_gettime(CLOCK_REALTIME, &now);
  struct tm local;
  ::localtime_r(&now.tv_sec, &local);
  return LocalTime{local.tm_year + 1900,
                   local.tm_mon + 1,
                   local.tm_mday,
                   local.tm_hour,
                   local.tm_min,
                   local.tm_sec,
                   static_cast<int>(now.tv_nsec / 1000000)};
}
