// UTF-8 <-> UTF-32 conversion: on POSIX the ANSI code page is UTF-8 and wide
// characters are 32-bit code points. Malformed input turns into U+FFFD (wide)
// or its UTF-8 form, never into an error, as a code-page conversion would.
#include "platform/CodePage.h"

#include <cstring>
#include <string>

namespace {

constexpr char32_t kReplacement = 0xFFFD;

void appendUtf8(std::string &out, char32_t cp) {
  if (cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF))
    cp = kReplacement;
  if (cp < 0x80) {
    out += static_cast<char>(cp);
  } else if (cp < 0x800) {
    out += static_cast<char>(0xC0 | (cp >> 6));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  } else if (cp < 0x10000) {
    out += static_cast<char>(0xE0 | (cp >> 12));
    out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (cp >> 18));
    out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  }
}

// Decodes one UTF-8 sequence starting at text[i]; advances i past it.
char32_t decodeUtf8(const unsigned char *text, size_t length, size_t &i) {
  const unsigned char lead = text[i++];
  if (lead < 0x80)
    return lead;
  int extra = 0;
  char32_t cp = 0;
  char32_t minimum = 0;
  if ((lead & 0xE0) == 0xC0) {
    extra = 1, cp = lead & 0x1F, minimum = 0x80;
  } else if ((lead & 0xF0) == 0xE0) {
    extra = 2, cp = lead & 0x0F, minimum = 0x800;
  } else if ((lead & 0xF8) == 0xF0) {
    extra = 3, cp = lead & 0x07, minimum = 0x10000;
  } else {
    return kReplacement;
  }
  for (int k = 0; k < extra; ++k) {
    if (i >= length || (text[i] & 0xC0) != 0x80)
      return kReplacement;
    cp = (cp << 6) | (text[i++] & 0x3F);
  }
  if (cp < minimum || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF))
    return kReplacement;
  return cp;
}

} // namespace

std::unique_ptr<char[]> toAnsi(const ACE_WCHAR_T *wide) {
  if (wide == nullptr)
    return nullptr;
  // ASCII, what frames and paths nearly always are, is copied as it is.
  size_t ascii = 0;
  while (wide[ascii] != 0 && static_cast<char32_t>(wide[ascii]) < 0x80)
    ++ascii;
  if (wide[ascii] == 0) {
    std::unique_ptr<char[]> out(new char[ascii + 1]);
    for (size_t i = 0; i <= ascii; ++i)
      out[i] = static_cast<char>(wide[i]);
    return out;
  }
  std::string utf8;
  for (const ACE_WCHAR_T *p = wide; *p != 0; ++p)
    appendUtf8(utf8, static_cast<char32_t>(*p));
  std::unique_ptr<char[]> out(new char[utf8.size() + 1]);
  std::memcpy(out.get(), utf8.c_str(), utf8.size() + 1);
  return out;
}

std::unique_ptr<ACE_WCHAR_T[]> toWide(const char *narrow) {
  if (narrow == nullptr)
    return nullptr;
  const size_t length = std::strlen(narrow);
  const auto *bytes = reinterpret_cast<const unsigned char *>(narrow);
  std::unique_ptr<ACE_WCHAR_T[]> out(new ACE_WCHAR_T[length + 1]);
  size_t written = 0;
  for (size_t i = 0; i < length;)
    out[written++] = static_cast<ACE_WCHAR_T>(decodeUtf8(bytes, length, i));
  out[written] = 0;
  return out;
}
