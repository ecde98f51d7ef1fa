// The log file: when the environment variable CANSIMU_LOG names a file at
// the time the library is loaded, every log line is also appended there as
//
//   2025-10-14 09:31:02.517 MERIDAX: The file <C:\bench\bench.xml> is unreachable
//
// with the local time to the millisecond, in the ANSI code page (UTF-8 on
// POSIX). The file is opened once, at load, and closed at unload. Lines are
// collected in memory and written every few milliseconds while the driver
// lives (see AppendBuffer), so a host that crashes loses at most the last
// few milliseconds. A file that cannot be opened (missing folder, no
// permission) is reported once on standard error and otherwise ignored.
#pragma once

#include <ace/SString.h>

#include <cstdio>
#include <string>

class LogFile {
public:
  // At library load: opens the file CANSIMU_LOG names, if any.
  static void openFromEnvironment();
  // Opens `path` (named by the bench) unless a file is open already; a
  // file that cannot be opened is logged once per path.
  static void openBenchFile(const ACE_WString &path);
  // At library unload.
  static void close();
  // Whether a file is open.
  static bool isOpen();
  // Appends one line when a file is open; safe from any thread.
  static void append(const ACE_WCHAR_T *source, const ACE_WCHAR_T *text);

private:
  // The local time of day to the millisecond.
  struct LocalTime {
    int year, month, day, hour, minute, second, millisecond;
  };

  // What differs by system (posix/LogFile.cpp, win32/LogFile.cpp).
  // Opens the file CANSIMU_LOG names for appending text. Null when the
  // variable is unset or empty (`path` left empty) or when the file cannot
  // be opened (`path` holds the name, errno why).
  static std::FILE *openNamedFile(std::string &path);
  static LocalTime localTimeNow();
};
