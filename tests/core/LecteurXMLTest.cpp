#include "core/LecteurXML.h"
#include "platform/CodePage.h"
#include "support/LogCapture.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <string>

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

std::string narrow(const ACE_WString &text) { return toAnsi(text.c_str()).get(); }

class LecteurXMLTest : public ::testing::Test {
protected:
  TempDir dir;
  std::string file = dir.file("config.xml");
  void SetUp() override {
    writeFile(file, "<A/>");
    setModificationTime(file, 1000000);
  }
};

} // namespace

TEST_F(LecteurXMLTest, Construction_StoresForwardSlashesAsBackslashesAndReadsThroughThem) {
  RecordingReader reader(file);
  const std::string stored = narrow(reader.path());
  EXPECT_EQ(stored.find('/'), std::string::npos);
  EXPECT_NE(stored.find('\\'), std::string::npos);
  EXPECT_TRUE(reader.load()) << "the backslashed path still names the file";
}

TEST_F(LecteurXMLTest, Load_OfAnUnreachableFileLogsOnceWithBackslashesAndForgetsThePath) {
  LogCapture log;
  const std::string missing = dir.file("missing.xml");
  RecordingReader reader(missing);
  EXPECT_FALSE(reader.load());
  std::string expected = "The file <" + missing + "> is unreachable";
  for (auto &c : expected)
    if (c == '/')
      c = '\\';
  ASSERT_EQ(log.lines().size(), 1u);
  EXPECT_EQ(log.lines()[0], expected);
  EXPECT_EQ(reader.calls, "") << "no content is touched for an unreachable file";
  EXPECT_EQ(reader.path().length(), 0u);

  // The path is forgotten for good, even once the file exists.
  writeFile(missing, "<A/>");
  EXPECT_FALSE(reader.load());
  EXPECT_FALSE(reader.reloadIfChanged());
  EXPECT_EQ(reader.calls, "");
  EXPECT_EQ(log.lines().size(), 1u);
}

TEST_F(LecteurXMLTest, ReloadIfChanged_NeverReadsBeforeTheFirstLoad) {
  RecordingReader reader(file);
  setModificationTime(file, 2000000000);
  EXPECT_FALSE(reader.reloadIfChanged());
  EXPECT_EQ(reader.calls, "");
}

TEST_F(LecteurXMLTest, ReloadIfChanged_ReloadsOnlyWhenTheTimeIsStrictlyLater) {
  RecordingReader reader(file);
  ASSERT_TRUE(reader.load());
  EXPECT_EQ(reader.calls, "clear;init;parse;");
  reader.calls.clear();

  EXPECT_FALSE(reader.reloadIfChanged()) << "same second";
  setModificationTime(file, 999990);
  EXPECT_FALSE(reader.reloadIfChanged()) << "time set back";
  EXPECT_EQ(reader.calls, "");

  setModificationTime(file, 1000001);
  EXPECT_TRUE(reader.reloadIfChanged());
  EXPECT_EQ(reader.calls, "clear;init;parse;");
  EXPECT_FALSE(reader.reloadIfChanged()) << "the new time was recorded";
}

TEST_F(LecteurXMLTest, ReloadIfChanged_DoesNotRetryAFailedParseUntilTheFileChangesAgain) {
  RecordingReader reader(file);
  reader.parseSucceeds = false;
  EXPECT_FALSE(reader.load());
  reader.calls.clear();
  EXPECT_FALSE(reader.reloadIfChanged());
  EXPECT_EQ(reader.calls, "");

  reader.parseSucceeds = true;
  touchForward(file);
  EXPECT_TRUE(reader.reloadIfChanged());
  EXPECT_EQ(reader.calls, "clear;init;parse;");
}

TEST_F(LecteurXMLTest, ReloadIfChanged_ReportsNoChangeWhenTheFileIsGone) {
  LogCapture log;
  RecordingReader reader(file);
  ASSERT_TRUE(reader.load());
  reader.calls.clear();
  std::remove(file.c_str());
  EXPECT_FALSE(reader.reloadIfChanged());
  EXPECT_EQ(reader.calls, "");
  EXPECT_EQ(log.lines().size(), 0u);

  // Back again with a later time: it is read again.
  writeFile(file, "<A/>");
  setModificationTime(file, 1000005);
  EXPECT_TRUE(reader.reloadIfChanged());
}

TEST_F(LecteurXMLTest, EmptyPath_IsQuietlyNothing) {
  LogCapture log;
  RecordingReader reader("");
  EXPECT_FALSE(reader.load());
  EXPECT_FALSE(reader.reloadIfChanged());
  EXPECT_TRUE(log.lines().empty());
}
