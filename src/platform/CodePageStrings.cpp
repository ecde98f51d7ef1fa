// String-typed wrappers shared by both platforms' code-page conversions.
#include "platform/CodePage.h"

#include <cstring>
#include <cwchar>

ACE_CString toAnsiString(const ACE_WString &wide) {
  const auto narrow = toAnsi(wide.c_str());
  return ACE_CString(narrow.get(), std::strlen(narrow.get()));
}

ACE_WString toWideString(const char *narrow) {
  if (narrow == nullptr)
    return ACE_WString();
  const auto wide = toWide(narrow);
  return ACE_WString(wide.get(), std::wcslen(wide.get()));
}
