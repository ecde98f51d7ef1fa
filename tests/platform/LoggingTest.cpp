#include "core/LogMessage.h"
#include "platform/CodePage.h"
#include "platform/TalvenLog_Static.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

TEST(Logging, TheTextIsPlainTextNeverAFormat) {
  LogCapture log;
  TalvenLog_Static::logInformation_static(L"S", L"C", L"M", L"100% of %s at %n");
  ASSERT_EQ(log.lines().size(), 1u);
  EXPECT_EQ(log.lines()[0], "100% of %s at %n");
}

TEST(Logging, LogMessageHandsEveryLineToTheService) {
  LogCapture log;
  logMessage(L"first");
  logMessage(L"second line \xE9");
  const auto lines = log.lines();
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0], "first");
  EXPECT_EQ(lines[1], std::string(toAnsi(L"second line \xE9").get()));
}

TEST(Logging, WithoutConsoleModeNothingGoesToStandardOutput) {
  testing::internal::CaptureStdout();
  logMessage(L"quiet");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}
