#include "core/LogMessage.h"

#include "platform/CodePage.h"
#include "platform/TalvenLog_Static.h"

#include <atomic>
#include <cstdio>
#include <cstring>

namespace {
std::atomic<bool> consoleEcho{false};
} // namespace

void echoLogToConsole(bool on) { consoleEcho.store(on); }

void logMessage(const ACE_WString &text) {
  static const ACE_WCHAR_T kSource[] = L"MERIDAX";
  TalvenLog_Static::logInformation_static(kSource, kSource, kSource, text.c_str());
  // A line logged while no driver exists (before the first call that makes
  // one, or while CAN_DrvEnd destroys it) goes to the logging service only.
  if (!consoleEcho.load())
    return;
  const auto line = toAnsi(text.c_str());
  std::fwrite(line.get(), 1, std::strlen(line.get()), stdout);
  std::fputc('\n', stdout);
  std::fflush(stdout);
}

bool logIsRead() {
  if (TalvenLog_Static::hasReader())
    return true;
  return consoleEcho.load();
}
