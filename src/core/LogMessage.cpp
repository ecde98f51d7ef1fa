#include "core/LogMessage.h"

#include "core/SimuDriver.h"
#include "platform/CodePage.h"
#include "platform/TalvenLog_Static.h"

#include <cstdio>
#include <cstring>

void logMessage(const ACE_WString &text) {
  static const ACE_WCHAR_T kSource[] = L"MERIDAX";
  TalvenLog_Static::logInformation_static(kSource, kSource, kSource, text.c_str());
  if (!SimuDriver::instance()->consoleMode)
    return;
  const auto line = toAnsi(text.c_str());
  std::fwrite(line.get(), 1, std::strlen(line.get()), stdout);
  std::fputc('\n', stdout);
  std::fflush(stdout);
}
