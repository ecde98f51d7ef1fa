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

std::string withBackslashes(std::string path) {
  std::replace(path.begin(), path.end(), '/', '\\');
  return path;
}

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

// Paths are kept, and logged, with backslashes. An unreachable path is
// forgotten: the reader is then as one made with an empty path, and nothing
// is read or logged again.
TEST_F(LecteurXMLTest, Load_KeepsPathsWithBackslashesAndForgetsAnUnreachableOneAfterOneLine) {
  EXPECT_EQ(toAnsi(reader.path().c_str()).get(), withBackslashes(file));
  EXPECT_TRUE(reader.load()) << "the backslashed path still names the file";
  EXPECT_EQ(takeCalls(), "clear;init;parse;");

  LogCapture log;
  const std::string missing = dir.file("missing.xml");
  RecordingReader unreachable(missing);
  EXPECT_FALSE(unreachable.load());
  const std::string expected = "The file <" + withBackslashes(missing) + "> is unreachable";
  EXPECT_EQ(log.lines(), std::vector<std::string>{expected});
  EXPECT_EQ(unreachable.path().length(), 0u);
  writeFile(missing, "<A/>");
  EXPECT_FALSE(unreachable.load());
  EXPECT_FALSE(unreachable.reloadIfChanged());
  EXPECT_EQ(unreachable.calls, "") << "no content is touched";
  EXPECT_EQ(log.lines().size(), 1u);
}

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
