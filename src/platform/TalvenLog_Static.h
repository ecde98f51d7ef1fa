// Stand-in for the platform's logging service. The service takes four wide
// strings (source, category, component, text); the text is plain text, never
// a format. Lines go to the system log (OutputDebugStringW on Windows, syslog
// on POSIX when the system has a syslog socket), to the file CANSIMU_LOG
// names (LogFile) and to an optional observer.
#pragma once

#include <ace/SString.h>

#include <functional>

class TalvenLog_Static {
public:
  // Logs one line. Arguments past the fourth are accepted and ignored.
  static void logInformation_static(const ACE_WCHAR_T *source, const ACE_WCHAR_T *category,
                                    const ACE_WCHAR_T *component, const ACE_WCHAR_T *text, ...);

  // Receives every line's text after the system log got it. Not exported:
  // tests and in-process tools install it to capture the lines.
  using Observer = std::function<void(const ACE_WCHAR_T *text)>;
  static void setObserver(Observer observer);

  // Whether a line logged now reaches anybody: the system log, the log file
  // or an observer. Lines that only explain (answer sources) are not even
  // written when nobody reads them.
  static bool hasReader();

private:
  static void writeToSystemLog(const ACE_WCHAR_T *source, const ACE_WCHAR_T *text);
  static bool systemLogWritten();
};
