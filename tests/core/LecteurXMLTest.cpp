#include "core/LecteurXML.h"
#include "platform/CodePage.h"
#include "support/LogCapture.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <utility>

namespace {

// Records the order in which the reader drives its subclass.
class RecordingReader : public LecteurXML {
public:
  explicit RecordingReader(const std::string &path) : LecteurXML(toWideString(path.c_str())) {}
  std::string calls;
  bool parseSucceeds = true;

protected:
  bool parse(const ACE_WString &) override {
    calls += "parse;";
    return parseSucceeds;
  }
  void initContent() override { calls += "init;"; }
  void clearContent() override { calls += "clear;"; }
};

class LecteurXMLTest : public ::testing::Test {
protected:
  TempDir dir;
  std::string file = dir.file("config.xml");
  RecordingReader reader{file};
  void SetUp() override {
    writeFile(file, "<A/>");
    setModificationTime(file, 1000000);
  }
  // The calls made since the last look, then forgets them.
  std::string takeCalls() { return std::exchange(reader.calls, ""); }
};

} // namespace

TEST_F(LecteurXMLTest, ReloadIfChanged_OnlyAfterTheFirstLoadAndOnAStrictlyLaterTime) {
  setModificationTime(file, 2000000000);
  EXPECT_FALSE(reader.reloadIfChanged()) << "never before the first load";
  EXPECT_EQ(takeCalls(), "");
  setModificationTime(file, 1000000);
  ASSERT_TRUE(reader.load());
  takeCalls();

  EXPECT_FALSE(reader.reloadIfChanged()) << "same second";
  setModificationTime(file, 999990);
  EXPECT_FALSE(reader.reloadIfChanged()) << "time set back";
  EXPECT_EQ(takeCalls(), "");

  setModificationTime(file, 1000001);
  EXPECT_TRUE(reader.reloadIfChanged());
  EXPECT_EQ(takeCalls(), "clear;init;parse;");
  EXPECT_FALSE(reader.reloadIfChanged()) << "the new time was recorded";
}

TEST_F(LecteurXMLTest, ReloadIfChanged_DoesNotRetryAFailedParseUntilTheFileChangesAgain) {
  reader.parseSucceeds = false;
  EXPECT_FALSE(reader.load());
  takeCalls();
  EXPECT_FALSE(reader.reloadIfChanged());
  EXPECT_EQ(takeCalls(), "");

  reader.parseSucceeds = true;
  setModificationTime(file, 1000010);
  EXPECT_TRUE(reader.reloadIfChanged());
  EXPECT_EQ(takeCalls(), "clear;init;parse;");
}

// A file gone for a while (deleted, or replaced by a save) is no change and
// no reason to forget the path.
TEST_F(LecteurXMLTest, ReloadIfChanged_ReportsNoChangeWhileTheFileIsGone) {
  LogCapture log;
  ASSERT_TRUE(reader.load());
  takeCalls();
  std::remove(file.c_str());
  EXPECT_FALSE(reader.reloadIfChanged());
  EXPECT_EQ(takeCalls(), "");
  EXPECT_TRUE(log.lines().empty());
  writeFile(file, "<A/>");
  setModificationTime(file, 1000005);
  EXPECT_TRUE(reader.reloadIfChanged());
}
