#include "core/LogMessage.h"

#include "core/SimuDriver.h"
#include "platform/CodePage.h"
#include "platform/TalvenLog_Static.h"

#include <cstdio>
#include <cstring>

void logMessage(const ACE_WString &text) {
  static const ACE_WCHAR_T kSource[] = L"MERIDAX";
  TalvenLog_Static::logInformation_static(kSource, kSource, kSource, text.c_str());
  // A line logged while no driver exists (before the first call that makes
  // one, or while CAN_DrvEnd destroys it) goes to the logging service only.
  const SimuDriver *driver = SimuDriver::existing();
  if (driver == nullptr || !driver->consoleMode)
    return;
  const auto line = toAnsi(text.c_str());
  std::fwrite(line.get(), 1, std::strlen(line.get()), stdout);
  std::fputc('\n', stdout);
  std::fflush(stdout);
}

bool logIsRead() {
  if (TalvenLog_Static::hasReader())
    return true;
  const SimuDriver *driver = SimuDriver::existing();
  return driver != nullptr && driver->consoleMode;
}
