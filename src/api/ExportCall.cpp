#include "api/ExportCall.h"

#include "api/InjectionTable.h"
#include "core/LogMessage.h"
#include "platform/CodePage.h"

bool ExportCall::takeArmed(ACE_UINT32 &status, ACE_UINT8 &detail) {
  return takeInjectedStatus(name_, status, detail);
}

void logEscapedException(const char *exportName, const char *what) {
  try {
    logMessage(toWideString(exportName) + ACE_WString(L"(): unexpected failure: ") +
               toWideString(what));
  } catch (...) {
    // Nothing left to report with: the status already tells the host.
  }
}
