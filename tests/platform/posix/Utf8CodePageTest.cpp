// On POSIX the ANSI code page is UTF-8.
#include "platform/CodePage.h"

#include <gtest/gtest.h>

#include <cstring>

TEST(Utf8CodePage, NonAsciiTextRoundTrips) {
  const char *ansi = "D:\\sim\\\xC3\xA9tude\\bo\xC3\xAEte.xml"; // é, î
  const auto wide = toWide(ansi);
  ASSERT_NE(wide, nullptr);
  EXPECT_EQ(std::wcslen(wide.get()), std::strlen("D:\\sim\\etude\\boite.xml"));
  EXPECT_EQ(wide[7], static_cast<ACE_WCHAR_T>(0xE9));
  EXPECT_STREQ(toAnsi(wide.get()).get(), ansi);
}

TEST(Utf8CodePage, MalformedInputIsReplacedNotRejected) {
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
