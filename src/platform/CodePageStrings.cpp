// String-typed wrappers shared by both platforms' code-page conversions. A
// conversion without memory is reported as std::bad_alloc, as ACE's own
// allocations are.
#include "platform/CodePage.h"

#include <cstring>
#include <cwchar>
#include <new>

ACE_CString toAnsiString(const ACE_WString &wide) {
  const auto narrow = toAnsi(wide.c_str());
  if (!narrow)
    throw std::bad_alloc();
  return ACE_CString(narrow.get(), std::strlen(narrow.get()));
}

ACE_WString toWideString(const char *narrow) {
  if (narrow == nullptr)
    return ACE_WString();
  const auto wide = toWide(narrow);
  if (!wide)
    throw std::bad_alloc();
  return ACE_WString(wide.get(), std::wcslen(wide.get()));
}
