// Builders of firmware image files laid out as the box's download expects:
// a four-character identifier, then a 4-character checksum and the version
// (10 hex digits) and date (18 hex digits) as hex text. Every other byte is
// filler. Header-only so that any test program can use it.
#pragma once

#include <cstddef>
#include <string>

namespace firmware {

constexpr size_t kApplicationOffset = 46;
constexpr size_t kApplicationSize = 82;
constexpr size_t kBootOffset = 754;
constexpr size_t kBootSize = 790;

// Each byte of `text` as two upper-case hex digits: "V1" gives "5631".
inline std::string hexText(const std::string &text) {
  static const char digits[] = "0123456789ABCDEF";
  std::string hex;
  for (unsigned char c : text) {
    hex += digits[c >> 4];
    hex += digits[c & 0x0F];
  }
  return hex;
}

// `text` cut or padded with `pad` to exactly `length` characters.
inline std::string fitted(const std::string &text, size_t length, char pad) {
  std::string field = text.substr(0, length);
  field.resize(length, pad);
  return field;
}

// Writes the identifier and the three fields at `offset` of `image`, which
// grows to hold them; the fields are given as plain text (hex-encoded here,
// padded with zero bytes).
inline void placeFields(std::string &image, size_t offset, const std::string &identifier,
                        const std::string &checkSum, const std::string &version,
                        const std::string &date) {
  const std::string fields = fitted(identifier, 4, ' ') + fitted(checkSum, 4, '\0') +
                             fitted(hexText(version), 10, '0') + fitted(hexText(date), 18, '0');
  if (image.size() < offset + fields.size())
    image.resize(offset + fields.size(), '\xA5');
  image.replace(offset, fields.size(), fields);
}

// An application image of `size` bytes (cut short when smaller than 82).
inline std::string applicationImage(const std::string &checkSum, const std::string &version,
                                    const std::string &date, size_t size = kApplicationSize) {
  std::string image(kApplicationOffset, '\xA5');
  placeFields(image, kApplicationOffset, "0622", checkSum, version, date);
  image.resize(size, '\xA5');
  return image;
}

// A boot image of `size` bytes (cut short when smaller than 790).
inline std::string bootImage(const std::string &checkSum, const std::string &version,
                             const std::string &date, size_t size = kBootSize) {
  std::string image(kBootOffset, '\xA5');
  placeFields(image, kBootOffset, "0268", checkSum, version, date);
  image.resize(size, '\xA5');
  return image;
}

} // namespace firmware
