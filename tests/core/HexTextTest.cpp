#include "core/HexText.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>

namespace {
struct Freed {
  void operator()(unsigned char *p) const { std::free(p); }
};
using Bytes = std::unique_ptr<unsigned char, Freed>;
} // namespace

TEST(HexText, RoundTripsEveryByteValueInUpperCase) {
  unsigned char all[256];
  for (int i = 0; i < 256; ++i)
    all[i] = static_cast<unsigned char>(i);
  const ACE_CString text = bytesToHex(all, sizeof all);
  EXPECT_EQ(std::string(text.c_str()).substr(0xAB * 2, 6), "ABACAD");
  size_t count = 0;
  Bytes back(hexToBytes(text.c_str(), count));
  ASSERT_EQ(count, 256u);
  EXPECT_EQ(std::memcmp(back.get(), all, sizeof all), 0);
  EXPECT_STREQ(bytesToHex(all, 0).c_str(), "");
  // The wide form holds the same characters, short (on the stack) or long.
  for (const size_t length : {size_t{3}, sizeof all}) {
    const ACE_WString wide = bytesToWideHex(all + 256 - length, length);
    ASSERT_EQ(wide.length(), 2 * length);
    for (size_t i = 0; i < wide.length(); ++i)
      EXPECT_EQ(wide[i], static_cast<ACE_WCHAR_T>(text[512 - 2 * length + i])) << i;
  }
  EXPECT_EQ(bytesToWideHex(nullptr, 4).length(), 0u);
}

TEST(HexText, HexToBytes_DropsALastOddCharacterAndAllocatesEvenForNoBytes) {
  size_t count = 99;
  Bytes bytes(hexToBytes("22F1901", count));
  ASSERT_EQ(count, 3u);
  EXPECT_EQ(bytes.get()[2], 0x90);
  // 'a' counts 0x61 - 0x37 = 42 and 'G' 16, kept to eight bits.
  Bytes odd(hexToBytes("a0G0", count));
  ASSERT_EQ(count, 2u);
  EXPECT_EQ(odd.get()[0], static_cast<unsigned char>((42 * 16) & 0xFF));
  EXPECT_EQ(odd.get()[1], 0x00);
  for (const char *text : {"", "F", static_cast<const char *>(nullptr)}) {
    Bytes none(hexToBytes(text, count));
    EXPECT_NE(none, nullptr);
    EXPECT_EQ(count, 0u);
  }
}
