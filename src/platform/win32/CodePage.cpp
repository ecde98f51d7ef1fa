// ANSI code page conversions through the Windows API, with the system's
// active code page (GetACP).
#include "platform/CodePage.h"

#include <windows.h>

std::unique_ptr<char[]> toAnsi(const ACE_WCHAR_T *wide) {
  if (wide == nullptr)
    return nullptr;
  const UINT codePage = GetACP();
  const int size = WideCharToMultiByte(codePage, 0, wide, -1, nullptr, 0, nullptr, nullptr);
  std::unique_ptr<char[]> out(new char[size > 0 ? size : 1]);
  if (size <= 0 ||
      WideCharToMultiByte(codePage, 0, wide, -1, out.get(), size, nullptr, nullptr) <= 0)
    out[0] = '\0';
  return out;
}

std::unique_ptr<ACE_WCHAR_T[]> toWide(const char *narrow) {
  if (narrow == nullptr)
    return nullptr;
  const UINT codePage = GetACP();
  const int size = MultiByteToWideChar(codePage, 0, narrow, -1, nullptr, 0);
  std::unique_ptr<ACE_WCHAR_T[]> out(new ACE_WCHAR_T[size > 0 ? size : 1]);
  if (size <= 0 || MultiByteToWideChar(codePage, 0, narrow, -1, out.get(), size) <= 0)
    out[0] = 0;
  return out;
}
