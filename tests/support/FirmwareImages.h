// Firmware image files laid out as the box's download expects: at a fixed
// offset a four-character identifier, a 4-byte checksum, then the version
// (10 hex digits) and the date (18 hex digits) as hex text; filler elsewhere.
#pragma once

#include <cstddef>
#include <string>

namespace firmware {

// Each byte of `text` as two upper-case hex digits ("V1" gives "5631"), cut
// or padded with '0' to `length`.
inline std::string hexField(const std::string &text, size_t length) {
  std::string hex;
  for (unsigned char c : text)
    hex += {"0123456789ABCDEF"[c >> 4], "0123456789ABCDEF"[c & 0x0F]};
  hex.resize(length, '0');
  return hex;
}

// An image of `size` bytes (cut short when smaller than its fields).
inline std::string imageAt(size_t offset, const char *identifier, std::string checkSum,
                           const std::string &version, const std::string &date, size_t size) {
  checkSum.resize(4, '\0');
  std::string image = std::string(offset, '\xA5') + identifier + checkSum + hexField(version, 10) +
                      hexField(date, 18);
  image.resize(size, '\xA5');
  return image;
}

inline std::string applicationImage(const std::string &checkSum, const std::string &version,
                                    const std::string &date, size_t size = 82) {
  return imageAt(46, "0622", checkSum, version, date, size);
}

inline std::string bootImage(const std::string &checkSum, const std::string &version,
                             const std::string &date, size_t size = 790) {
  return imageAt(754, "0268", checkSum, version, date, size);
}

} // namespace firmware
