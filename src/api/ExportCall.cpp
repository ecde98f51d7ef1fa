#include "api/ExportCall.h"

#include "api/InjectionTable.h"
#include "core/LogMessage.h"
#include "core/NumberText.h"
#include "core/SessionReport.h"
#include "platform/CodePage.h"

#include <string>

bool ExportCall::takeArmed(ACE_UINT32 &status, ACE_UINT8 &detail) {
  if (!takeInjectedStatus(name_, status, detail))
    return false;
  noteArmedStatus(name_, status, detail);
  return true;
}

void noteArmedStatus(const char *exportName, ACE_UINT32 status, ACE_UINT8 detail) {
  if (logIsRead())
    logMessage(L"Armed status: " + toWideString(exportName) + L" answered " + decimalText(status) +
               L", detail " + decimalText(detail));
  SessionReport::armedStatus(exportName, status, detail);
}

void logEscapedException(const char *exportName, const char *what) {
  try {
    logMessage(toWideString(exportName) + ACE_WString(L"(): unexpected failure: ") +
               toWideString(what));
  } catch (...) {
    // Nothing left to report with: the status already tells the host.
  }
}
