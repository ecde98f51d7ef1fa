// String-typed wrappers shared by both platforms' code-page conversions.
// ACE strings that cannot get memory are left without any text (a null
// c_str()); these wrappers report that as std::bad_alloc instead of handing
// such a string on.
#include "platform/CodePage.h"

#include <cstring>
#include <cwchar>
#include <new>

ACE_CString toAnsiString(const ACE_WString &wide) {
  static const ACE_WCHAR_T empty[] = {0};
  const auto narrow = toAnsi(wide.c_str() != nullptr ? wide.c_str() : empty);
  if (!narrow)
    throw std::bad_alloc();
  ACE_CString result(narrow.get(), std::strlen(narrow.get()));
  if (result.c_str() == nullptr)
    throw std::bad_alloc();
  return result;
}

ACE_WString toWideString(const char *narrow) {
  if (narrow == nullptr)
    return ACE_WString();
  const auto wide = toWide(narrow);
  if (!wide)
    throw std::bad_alloc();
  ACE_WString result(wide.get(), std::wcslen(wide.get()));
  if (result.c_str() == nullptr)
    throw std::bad_alloc();
  return result;
}
