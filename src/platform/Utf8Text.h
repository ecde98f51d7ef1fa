// Wide text to and from UTF-8, whatever the ANSI code page: what XML files
// are read in and JSON files are written in. pugixml does the conversion.
#pragma once

#include <ace/SString.h>

#include <string>

// The wide text as UTF-8 (UTF-16 surrogate pairs joined on Windows).
std::string utf8Of(const ACE_WString &text);

// Zero-terminated UTF-8 text as wide text.
ACE_WString wideOfUtf8(const char *utf8);
