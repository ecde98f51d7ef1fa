#include "platform/CodePage.h"

#include <gtest/gtest.h>

#include <cstring>

TEST(CodePage, NullGivesNullAndAsciiAndEmptyTextsRoundTrip) {
  EXPECT_EQ(toAnsi(nullptr), nullptr);
  EXPECT_EQ(toWide(nullptr), nullptr);
  EXPECT_EQ(toWideString(nullptr).length(), 0u);
  for (const char *ansi : {"D:\\sim\\bench 1\\ecu-7E0.xml", ""}) {
    const auto wide = toWide(ansi);
    ASSERT_NE(wide, nullptr);
    EXPECT_EQ(std::wcslen(wide.get()), std::strlen(ansi));
    EXPECT_STREQ(toAnsi(wide.get()).get(), ansi);
  }
}
