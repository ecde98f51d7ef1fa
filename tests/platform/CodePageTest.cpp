#include "platform/CodePage.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

TEST(CodePage, NullGivesNullBothWays) {
  EXPECT_EQ(toAnsi(nullptr), nullptr);
  EXPECT_EQ(toWide(nullptr), nullptr);
  EXPECT_EQ(toWideString(nullptr).length(), 0u);
}

TEST(CodePage, NonAsciiTextRoundTrips) {
  const char *ansi = "D:\\sim\\\xC3\xA9tude\\bo\xC3\xAEte.xml"; // é, î in the ANSI code page
  const auto wide = toWide(ansi);
  ASSERT_NE(wide, nullptr);
  EXPECT_EQ(std::wcslen(wide.get()), std::strlen("D:\\sim\\etude\\boite.xml"));
  EXPECT_STREQ(toAnsi(wide.get()).get(), ansi);
}

TEST(CodePage, EmptyTextGivesAnEmptyTerminatedString) {
  EXPECT_STREQ(toAnsi(L"").get(), "");
  EXPECT_EQ(toWide("")[0], 0);
}

TEST(CodePage, MalformedInputIsReplacedNotRejected) {
  // A lone continuation byte and a truncated sequence.
  const auto wide = toWide("a\x80"
                           "b\xC3");
  ASSERT_NE(wide, nullptr);
  EXPECT_EQ(wide[0], L'a');
  EXPECT_EQ(wide[1], static_cast<ACE_WCHAR_T>(0xFFFD));
  EXPECT_EQ(wide[2], L'b');
  EXPECT_EQ(wide[3], static_cast<ACE_WCHAR_T>(0xFFFD));
  EXPECT_EQ(wide[4], 0);
}
