// Windows system log: one OutputDebugStringW line per message.
#include "platform/TalvenLog_Static.h"

#include <windows.h>

#include <string>

void TalvenLog_Static::writeToSystemLog(const ACE_WCHAR_T *source, const ACE_WCHAR_T *text) {
  std::wstring line(source);
  line += L": ";
  line += text;
  line += L"\n";
  ::OutputDebugStringW(line.c_str());
}

// A debugger or a viewer may be listening at any time.
bool TalvenLog_Static::systemLogWritten() { return true; }
