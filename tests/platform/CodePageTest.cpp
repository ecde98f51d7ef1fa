#include "platform/CodePage.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

TEST(CodePage, NullGivesNullBothWays) {
  EXPECT_EQ(toAnsi(nullptr), nullptr);
  EXPECT_EQ(toWide(nullptr), nullptr);
  EXPECT_EQ(toWideString(nullptr).length(), 0u);
}

TEST(CodePage, AsciiTextRoundTrips) {
  const char *ansi = "D:\\sim\\bench 1\\ecu-7E0.xml";
  const auto wide = toWide(ansi);
  ASSERT_NE(wide, nullptr);
  EXPECT_EQ(std::wcslen(wide.get()), std::strlen(ansi));
  EXPECT_STREQ(toAnsi(wide.get()).get(), ansi);
}

TEST(CodePage, EmptyTextGivesAnEmptyTerminatedString) {
  EXPECT_STREQ(toAnsi(L"").get(), "");
  EXPECT_EQ(toWide("")[0], 0);
}
