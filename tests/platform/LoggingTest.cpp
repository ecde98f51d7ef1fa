#include "core/LogMessage.h"
#include "platform/CodePage.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

// The observer gets every line as plain text: a '%' is never read as a
// format. Without console mode nothing goes to standard output.
TEST(Logging, LogMessageHandsEachLineToTheServiceAsPlainTextAndNothingToStandardOutput) {
  LogCapture log;
  testing::internal::CaptureStdout();
  logMessage(L"100% of %s at %n");
  logMessage(L"second line \xE9");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(log.lines(),
            (std::vector<std::string>{"100% of %s at %n", toAnsi(L"second line \xE9").get()}));
}

// An observer may log itself (a test's capture that reports what it saw).
TEST(Logging, AnObserverThatLogsDoesNotDeadlock) {
  std::vector<std::string> seen;
  TalvenLog_Static::setObserver([&](const ACE_WCHAR_T *text) {
    seen.emplace_back(toAnsi(text).get());
    if (seen.size() == 1)
      logMessage(L"seen by the observer");
  });
  logMessage(L"first");
  TalvenLog_Static::setObserver(nullptr);
  EXPECT_EQ(seen, (std::vector<std::string>{"first", "seen by the observer"}));
}
