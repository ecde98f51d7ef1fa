#include "output/FrameText.h"

#include "names/DiagnosticNames.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr size_t kBytesPerRow = 16;
// A frame shows its characters once it holds this many printable ones in a
// row: enough for an identifier or a VIN, not for a stray 'P' or '2'.
constexpr size_t kTextRun = 4;

int hexValue(char c) {
  if (c >= '0' && c <= '9')
    return c - '0';
  if (c >= 'A' && c <= 'F')
    return c - 'A' + 10;
  if (c >= 'a' && c <= 'f')
    return c - 'a' + 10;
  return -1;
}

bool printable(uint8_t byte) { return byte >= 0x20 && byte < 0x7F; }

bool carriesText(const uint8_t *bytes, size_t count) {
  size_t run = 0;
  for (size_t i = 0; i < count; ++i) {
    run = printable(bytes[i]) ? run + 1 : 0;
    if (run >= kTextRun)
      return true;
  }
  return false;
}

std::string serviceText(uint8_t serviceId) {
  const char *name = serviceName(serviceId);
  return name != nullptr ? name : "service " + hexByte(serviceId);
}

// One row of a long frame: its hex, padded so that the characters line up.
std::string dumpRow(const uint8_t *bytes, size_t count, bool withText) {
  std::string row = spacedHex(bytes, count);
  if (!withText)
    return row;
  row.resize(kBytesPerRow * 3 - 1, ' ');
  row += "  ";
  for (size_t i = 0; i < count; ++i)
    row += printable(bytes[i]) ? static_cast<char>(bytes[i]) : '.';
  return row;
}

} // namespace

std::string hexByte(uint8_t byte) {
  char text[8];
  std::snprintf(text, sizeof text, "0x%02X", static_cast<unsigned>(byte));
  return text;
}

std::string canIdText(uint32_t id) {
  char text[16];
  std::snprintf(text, sizeof text, "%X", static_cast<unsigned>(id));
  return text;
}

bool parseHexBytes(const std::string &text, Bytes &bytes, std::string &why) {
  if (text.empty() || text.size() % 2 != 0) {
    why = text.empty() ? "is empty" : "has an odd number of hex digits";
    return false;
  }
  if (text.size() / 2 > kMaxRequestBytes) {
    why = "is longer than " + std::to_string(kMaxRequestBytes) + " bytes";
    return false;
  }
  Bytes read;
  for (size_t i = 0; i < text.size(); i += 2) {
    const int high = hexValue(text[i]);
    const int low = hexValue(text[i + 1]);
    if (high < 0 || low < 0) {
      why = "is not hex";
      return false;
    }
    read.push_back(static_cast<uint8_t>(high * 16 + low));
  }
  bytes.swap(read);
  return true;
}

std::vector<std::string> requestTexts(const std::vector<std::string> &words) {
  const bool spacedBytes =
      words.size() > 1 && std::all_of(words.begin(), words.end(), [](const std::string &word) {
        return word.size() == 2 && hexValue(word[0]) >= 0 && hexValue(word[1]) >= 0;
      });
  if (!spacedBytes)
    return words;
  std::string joined;
  for (const std::string &word : words)
    joined += word;
  return {joined};
}

std::string spacedHex(const uint8_t *bytes, size_t count) {
  static const char digits[] = "0123456789ABCDEF";
  std::string text;
  for (size_t i = 0; i < count; ++i) {
    if (i > 0)
      text += ' ';
    text += digits[bytes[i] >> 4];
    text += digits[bytes[i] & 0xF];
  }
  return text;
}

std::string requestMeaning(const uint8_t *bytes, size_t count) {
  const char *name = count > 0 ? serviceName(bytes[0]) : nullptr;
  return name != nullptr ? name : "";
}

std::string answerMeaning(const uint8_t *bytes, size_t count) {
  if (count >= 2 && bytes[0] == 0x7F) {
    std::string text = "negative " + serviceText(bytes[1]);
    if (count >= 3) {
      const char *code = negativeResponseName(bytes[2]);
      text +=
          std::string(": ") + (code != nullptr ? code : "code") + " (" + hexByte(bytes[2]) + ")";
    }
    return text;
  }
  const char *name = count > 0 && bytes[0] >= 0x40 ? serviceName(bytes[0] - 0x40) : nullptr;
  return name != nullptr ? std::string("positive ") + name : "";
}

std::vector<std::string> answerLines(const std::string &head, const uint8_t *bytes, size_t count,
                                     size_t width) {
  const std::string meaning = answerMeaning(bytes, count);
  const bool withText = carriesText(bytes, count);
  if (count <= kBytesPerRow && !withText) {
    const std::string line = head + ": " + (count == 0 ? "no bytes" : spacedHex(bytes, count));
    if (meaning.empty())
      return {line};
    if (line.size() + 2 + meaning.size() <= width)
      return {line + "  " + meaning};
    return {line, meaning};
  }
  std::vector<std::string> lines = {head + ", " + std::to_string(count) + " bytes" +
                                    (meaning.empty() ? "" : ": " + meaning)};
  for (size_t at = 0; at < count; at += kBytesPerRow) {
    const size_t rowLength = count - at < kBytesPerRow ? count - at : kBytesPerRow;
    lines.push_back(dumpRow(bytes + at, rowLength, withText));
  }
  return lines;
}
