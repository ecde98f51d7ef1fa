// Conversions between wide text and the process's ANSI code page.
//
// Windows uses the system's ANSI code page (GetACP); POSIX takes UTF-8 as
// the ANSI code page and converts without touching the process locale.
#pragma once

#include <ace/SString.h>

#include <memory>

// Converts zero-terminated wide text to newly allocated narrow text in the
// ANSI code page, terminator included. Null gives null.
std::unique_ptr<char[]> toAnsi(const ACE_WCHAR_T *wide);

// Converts zero-terminated narrow text in the ANSI code page to newly
// allocated wide text, terminator included. Null gives null.
std::unique_ptr<ACE_WCHAR_T[]> toWide(const char *narrow);

// String-typed conveniences over the two conversions above.
ACE_CString toAnsiString(const ACE_WString &wide);
ACE_WString toWideString(const char *narrow);
