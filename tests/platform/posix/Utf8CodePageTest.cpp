// On POSIX the ANSI code page is UTF-8.
#include "platform/CodePage.h"

#include <gtest/gtest.h>

#include <cstring>

TEST(Utf8CodePage, NonAsciiTextRoundTripsAndMalformedInputIsReplacedNotRejected) {
  const char *ansi = "D:\\sim\\\xC3\xA9tude\\bo\xC3\xAEte.xml"; // é, î
  const auto wide = toWide(ansi);
  ASSERT_NE(wide, nullptr);
  EXPECT_EQ(std::wcslen(wide.get()), std::strlen("D:\\sim\\etude\\boite.xml"));
  EXPECT_EQ(wide[7], static_cast<ACE_WCHAR_T>(0xE9));
  EXPECT_STREQ(toAnsi(wide.get()).get(), ansi);

  // A lone continuation byte and a truncated sequence.
  const auto replaced = toWide("a\x80"
                               "b\xC3");
  const ACE_WCHAR_T expected[] = {L'a', 0xFFFD, L'b', 0xFFFD, 0};
  for (size_t i = 0; i < 5; ++i)
    EXPECT_EQ(replaced[i], expected[i]) << i;
}
