#include "platform/Utf8Text.h"

#include <pugixml.hpp>

std::string utf8Of(const ACE_WString &text) {
  return pugi::as_utf8(std::wstring(text.c_str(), text.length()));
}

ACE_WString wideOfUtf8(const char *utf8) {
  const std::wstring wide = pugi::as_wide(utf8);
  return ACE_WString(wide.c_str(), wide.size());
}
