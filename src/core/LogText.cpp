#include "core/LogText.h"

ACE_WString identifierText(ACE_UINT32 id) {
  static const wchar_t digits[] = L"0123456789abcdef";
  wchar_t text[9];
  size_t start = sizeof text / sizeof text[0] - 1;
  text[start] = L'\0';
  do {
    text[--start] = digits[id & 0xFu];
    id >>= 4;
  } while (id != 0);
  return ACE_WString(text + start);
}

ACE_WString fittedLine(const ACE_WString &line, size_t capacity) {
  if (capacity == 0)
    return ACE_WString();
  return line.length() < capacity ? line : line.substring(0, capacity - 1);
}
