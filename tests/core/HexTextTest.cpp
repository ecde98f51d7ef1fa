#include "core/HexText.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>

namespace {
struct Freed {
  void operator()(unsigned char *p) const { std::free(p); }
};
using Bytes = std::unique_ptr<unsigned char, Freed>;
} // namespace

TEST(HexText, BytesToHex_WritesTwoUpperCaseDigitsPerByte) {
  const unsigned char bytes[] = {0x00, 0x7F, 0xAB, 0xFF, 0x0A};
  EXPECT_STREQ(bytesToHex(bytes, sizeof bytes).c_str(), "007FABFF0A");
  EXPECT_STREQ(bytesToHex(bytes, 0).c_str(), "");
}

TEST(HexText, HexToBytes_ConvertsPairsAndDropsALastOddCharacter) {
  size_t count = 99;
  Bytes bytes(hexToBytes("22F1901", count));
  ASSERT_NE(bytes, nullptr);
  ASSERT_EQ(count, 3u);
  EXPECT_EQ(bytes.get()[0], 0x22);
  EXPECT_EQ(bytes.get()[1], 0xF1);
  EXPECT_EQ(bytes.get()[2], 0x90);
}

TEST(HexText, HexToBytes_ConvertsOtherCharactersByTheSameFormulaWithoutError) {
  size_t count = 0;
  // 'a' counts 0x61 - 0x37 = 42, 'G' counts 16: both kept to eight bits.
  Bytes bytes(hexToBytes("a0G0", count));
  ASSERT_EQ(count, 2u);
  EXPECT_EQ(bytes.get()[0], static_cast<unsigned char>((42 * 16) & 0xFF));
  EXPECT_EQ(bytes.get()[1], static_cast<unsigned char>(16 * 16 & 0xFF));
}

TEST(HexText, HexToBytes_AllocatesEvenWhenThereAreNoBytes) {
  size_t count = 5;
  Bytes fromEmpty(hexToBytes("", count));
  EXPECT_NE(fromEmpty, nullptr);
  EXPECT_EQ(count, 0u);
  Bytes fromOneChar(hexToBytes("F", count));
  EXPECT_NE(fromOneChar, nullptr);
  EXPECT_EQ(count, 0u);
  Bytes fromNull(hexToBytes(nullptr, count));
  EXPECT_NE(fromNull, nullptr);
  EXPECT_EQ(count, 0u);
}

TEST(HexText, RoundTripsEveryByteValue) {
  unsigned char all[256];
  for (int i = 0; i < 256; ++i)
    all[i] = static_cast<unsigned char>(i);
  size_t count = 0;
  Bytes back(hexToBytes(bytesToHex(all, sizeof all).c_str(), count));
  ASSERT_EQ(count, 256u);
  for (int i = 0; i < 256; ++i)
    EXPECT_EQ(back.get()[i], all[i]);
}
