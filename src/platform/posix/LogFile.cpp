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
  // The zone's rules are applied once per second and thread: a line costs
  // a clock read. Offsets change on whole seconds, so the cache is exact.
  thread_local time_t cachedSecond = -1;
  thread_local struct tm local;
  if (now.tv_sec != cachedSecond) {
    ::localtime_r(&now.tv_sec, &local);
    cachedSecond = now.tv_sec;
  }
  return LocalTime{local.tm_year + 1900,
                   local.tm_mon + 1,
                   local.tm_mday,
                   local.tm_hour,
                   local.tm_min,
                   local.tm_sec,
                   static_cast<int>(now.tv_nsec / 1000000)};
}
