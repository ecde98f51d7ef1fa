#include "core/HexText.h"

#include <cstdlib>
#include <cstring>
#include <memory>

namespace {

// Writes the digits into a buffer on the stack when it is short enough, so
// that the string's own allocation is the only one.
template <class Char> ACE_String_Base<Char> hexText(const unsigned char *bytes, size_t count) {
  static const char digits[] = "0123456789ABCDEF";
  if (bytes == nullptr || count == 0)
    return ACE_String_Base<Char>();
  Char small[128];
  const std::unique_ptr<Char[]> large(2 * count > 128 ? new Char[2 * count] : nullptr);
  Char *text = large ? large.get() : small;
  for (size_t i = 0; i < count; ++i) {
    text[2 * i] = static_cast<Char>(digits[bytes[i] >> 4]);
    text[2 * i + 1] = static_cast<Char>(digits[bytes[i] & 0x0F]);
  }
  return ACE_String_Base<Char>(text, 2 * count);
}

} // namespace

ACE_CString bytesToHex(const unsigned char *bytes, size_t count) {
  return hexText<char>(bytes, count);
}

ACE_WString bytesToWideHex(const unsigned char *bytes, size_t count) {
  return hexText<ACE_WCHAR_T>(bytes, count);
}

namespace {
unsigned hexValue(unsigned char c) { return c <= '9' ? c - 0x30u : c - 0x37u; }
} // namespace

unsigned char *hexToBytes(const char *text, size_t &count) {
  const size_t length = text == nullptr ? 0 : std::strlen(text);
  count = length / 2;
  auto *bytes = static_cast<unsigned char *>(std::malloc(count == 0 ? 1 : count));
  if (bytes == nullptr) {
    count = 0;
    return nullptr;
  }
  for (size_t i = 0; i < count; ++i) {
    const auto high = hexValue(static_cast<unsigned char>(text[2 * i]));
    const auto low = hexValue(static_cast<unsigned char>(text[2 * i + 1]));
    bytes[i] = static_cast<unsigned char>(((high * 16u) | low) & 0xFFu);
  }
  return bytes;
}
