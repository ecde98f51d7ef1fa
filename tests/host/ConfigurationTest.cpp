// CAN_DrvInit and the re-read of an edited configuration at CAN_DrvRxMsg.
#include "core/LogMessage.h"
#include "support/BusFixture.h"

#include <algorithm>
#include <iterator>

namespace {

class Configuration : public bus_test::DriverTest {
protected:
  bool consoleMode() const { return SimuDriver::existing()->consoleMode; }
  void save(const std::string &content, long long seconds) {
    writeFile(configPath, content);
    setModificationTime(configPath, seconds);
  }
};

const std::string nestedConsole =
    ConfigurationFile().section("<A><B><MODECONSOLE>ignored text</MODECONSOLE></B></A>").xml();
const std::string noConsole = ConfigurationFile().xml();

} // namespace

// An unreachable path is forgotten: a file made there afterwards is never
// read, and the path is logged once.
TEST_F(Configuration, AnUnreachableFileIsLoggedOnceAndNeverReadAgain) {
  ASSERT_EQ(CAN_DrvInit(configPath.c_str()), E_SUCCESS);
  pollDriver();
  save(nestedConsole, 1000000);
  pollDriver();
  EXPECT_FALSE(consoleMode());
  EXPECT_EQ(log.count("is unreachable"), 1u);
}

// An edit is read at the next poll, even one that times out, when its time
// is strictly later and it parses; a file that is not XML leaves the driver
// as it was, and each re-read says which it was.
TEST_F(Configuration, ConsoleModeElementAnywhereIsReadAgainAfterAnEditThatParses) {
  save(nestedConsole, 1000000);
  ASSERT_EQ(CAN_DrvInit(configPath.c_str()), E_SUCCESS);
  EXPECT_TRUE(consoleMode());
  save(noConsole, 1000000);
  pollDriver();
  EXPECT_TRUE(consoleMode()) << "same modification time: not re-read";
  const std::string broken[] = {"", "not xml at all", "<CONFIGURATION><MODECONSOLE/>",
                                "<A><MODECONSOLE></A>", std::string("\x7F\x45LF\x00\x01\xFF", 7)};
  long long time = 1000000;
  for (const auto &content : broken) {
    save(content, ++time);
    pollDriver();
    EXPECT_TRUE(consoleMode()) << "content: " << content;
  }
  EXPECT_EQ(log.count(": kept the previous one"), std::size(broken));
  EXPECT_EQ(log.count("re-read: the file is empty: kept the previous one"), 1u);
  EXPECT_EQ(log.count("re-read: line 1: Start-end tags mismatch: kept the previous one"), 2u);
  save(noConsole, ++time);
  pollDriver();
  EXPECT_FALSE(consoleMode());
  std::string stored = configPath;
  std::replace(stored.begin(), stored.end(), '/', '\\');
  EXPECT_EQ(log.lines().back(), "Configuration <" + stored + "> re-read: applied");
}

// Tens of megabytes, 100,000 elements deep: read whole, without exhausting the stack.
TEST_F(Configuration, AHugeDeeplyNestedFileIsReadWhole) {
  std::string content = "<CONFIGURATION>";
  for (int i = 0; i < 400000; ++i)
    content += "<E a='" + std::to_string(i) + "'>some payload text of a realistic size</E>";
  for (int i = 0; i < 100000; ++i)
    content += "<D>";
  content += "<MODECONSOLE/>";
  for (int i = 0; i < 100000; ++i)
    content += "</D>";
  ASSERT_GT(content.size(), 20u * 1000 * 1000);
  save(content + "</CONFIGURATION>", 1000000);
  ASSERT_EQ(CAN_DrvInit(configPath.c_str()), E_SUCCESS);
  EXPECT_TRUE(consoleMode());
}

TEST_F(Configuration, InitTwiceReadsTheFileAgainAndInitAfterEndReadsTheNewFile) {
  save(nestedConsole, 1000000);
  ASSERT_EQ(CAN_DrvInit(configPath.c_str()), E_SUCCESS);
  save(noConsole, 1000000);
  ASSERT_EQ(CAN_DrvInit(configPath.c_str()), E_SUCCESS);
  EXPECT_FALSE(consoleMode()) << "read again whatever its time";
  CAN_DrvEnd();
  EXPECT_EQ(SimuDriver::existing(), nullptr);
  const std::string other = dir.file("other.xml");
  writeFile(other, nestedConsole);
  ASSERT_EQ(CAN_DrvInit(other.c_str()), E_SUCCESS);
  EXPECT_TRUE(consoleMode());
}

TEST_F(Configuration, InConsoleModeEachLogLineIsAlsoPrintedWithALineFeed) {
  save(nestedConsole, 1000000);
  ASSERT_EQ(CAN_DrvInit(configPath.c_str()), E_SUCCESS);
  testing::internal::CaptureStdout();
  logMessage(L"100% done");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "100% done\n");
  EXPECT_EQ(log.count("100% done"), 1u);
}
