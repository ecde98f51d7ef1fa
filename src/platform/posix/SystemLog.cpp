// POSIX system log: syslog (LOG_USER | LOG_INFO), but only when the system has
// a syslog socket. Without one glibc retries its connection at every line,
// which costs more than a whole simulated diagnostic request.
#include "platform/CodePage.h"
#include "platform/TalvenLog_Static.h"

#include <sys/stat.h>
#include <syslog.h>

namespace {
bool hasSyslogSocket() {
  struct stat status;
  return ::stat("/dev/log", &status) == 0 && S_ISSOCK(status.st_mode);
}
// Checked once, when the library is loaded.
const bool syslogAvailable = hasSyslogSocket();
} // namespace

void TalvenLog_Static::writeToSystemLog(const ACE_WCHAR_T *source, const ACE_WCHAR_T *text) {
  if (!syslogAvailable)
    return;
  const auto narrowSource = toAnsi(source);
  const auto narrowText = toAnsi(text);
  ::syslog(LOG_USER | LOG_INFO, "%s: %s", narrowSource.get(), narrowText.get());
}

bool TalvenLog_Static::systemLogWritten() { return syslogAvailable; }
