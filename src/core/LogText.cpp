#include "core/LogText.h"

#include <new>
#include <string>
#include <vector>

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
  // The pieces are joined on the stack (a log line's size) and the string
  // allocated once. ACE's in-place resize writes through a null buffer when
  // memory runs out, so the line is not built inside the string.
  ACE_WCHAR_T onStack[512];
  std::vector<ACE_WCHAR_T> onHeap;
  size_t total = 0;
  for (const LinePiece &piece : pieces)
    total += piece.length;
  const size_t kept = total < capacity ? total : capacity == 0 ? 0 : capacity - 1;
  ACE_WString line;
  if (kept == 0)
    return line;
  ACE_WCHAR_T *text = onStack;
  if (kept > sizeof onStack / sizeof onStack[0]) {
    onHeap.resize(kept);
    text = onHeap.data();
  }
  size_t length = 0;
  for (const LinePiece &piece : pieces) {
    const size_t room = kept - length;
    const size_t taken = piece.length < room ? piece.length : room;
    std::char_traits<ACE_WCHAR_T>::copy(text + length, piece.text, taken);
    length += taken;
  }
  line.set(text, kept, true);
  // ACE leaves the string empty when it cannot allocate.
  if (line.length() != kept)
    throw std::bad_alloc();
  return line;
}

ACE_WString joinedLine(std::initializer_list<LinePiece> pieces) {
  return fittedLine(pieces, static_cast<size_t>(-1));
}

NumberPiece NumberPiece::decimal(unsigned long value) {
  NumberPiece number;
  number.text[kSize - 1] = L'\0';
  do {
    number.text[--number.start] = static_cast<ACE_WCHAR_T>(L'0' + value % 10);
    value /= 10;
  } while (value != 0);
  return number;
}

NumberPiece NumberPiece::hex(ACE_UINT32 value) {
  static const wchar_t digits[] = L"0123456789abcdef";
  NumberPiece number;
  number.text[kSize - 1] = L'\0';
  do {
    number.text[--number.start] = digits[value & 0xFu];
    value >>= 4;
  } while (value != 0);
  return number;
}
