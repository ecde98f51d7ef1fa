#include "core/LogText.h"

#include <string>

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

LinePiece::LinePiece(const ACE_WCHAR_T *literal)
    : text(literal), length(std::char_traits<ACE_WCHAR_T>::length(literal)) {}

ACE_WString fittedLine(std::initializer_list<LinePiece> pieces, size_t capacity) {
  // One string, built in place and returned as it is.
  ACE_WString line;
  size_t total = 0;
  for (const LinePiece &piece : pieces)
    total += piece.length;
  const size_t kept = total < capacity ? total : capacity == 0 ? 0 : capacity - 1;
  if (kept == 0)
    return line;
  line.fast_resize(kept);
  for (const LinePiece &piece : pieces) {
    const size_t room = kept - line.length();
    line.append(piece.text, piece.length < room ? piece.length : room);
  }
  return line;
}
