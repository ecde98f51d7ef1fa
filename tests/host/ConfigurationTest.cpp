// CAN_DrvInit and the re-read of an edited configuration at CAN_DrvRxMsg.
#include "cansimu/cansimu.h"
#include "core/LogMessage.h"
#include "core/SimuDriver.h"
#include "support/LogCapture.h"
#include "support/TempDir.h"
#include "support/XmlFiles.h"

#include <gtest/gtest.h>

namespace {

class Configuration : public ::testing::Test {
protected:
  TempDir dir;
  std::string path = dir.file("bench.xml");
  LogCapture log;

  void TearDown() override { CAN_DrvEnd(); }
  bool consoleMode() const { return SimuDriver::existing()->consoleMode; }
  // A host's poll: re-reads an edited configuration, then times out.
  void poll() {
    CAN_EventDrv *event = nullptr;
    uint32_t pending = 0;
    EXPECT_EQ(CAN_DrvRxMsg(&event, &pending, 1), E_NO_EVENT);
  }
  void save(const ConfigurationFile &file, long long seconds) {
    file.writeTo(path);
    setModificationTime(path, seconds);
  }
};

const ConfigurationFile nestedConsole =
    ConfigurationFile().section("<A><B><MODECONSOLE>ignored text</MODECONSOLE></B></A>");

} // namespace

TEST_F(Configuration, ConsoleModeElementAnywhereSwitchesItOnUntilItIsRemoved) {
  save(nestedConsole, 1000000);
  ASSERT_EQ(CAN_DrvInit(path.c_str()), E_SUCCESS);
  EXPECT_TRUE(consoleMode());

  save(ConfigurationFile(), 1000000);
  poll();
  EXPECT_TRUE(consoleMode()) << "same modification time: not re-read";

  setModificationTime(path, 1000001);
  poll();
  EXPECT_FALSE(consoleMode()) << "re-read at the poll, even one that timed out";
}

TEST_F(Configuration, AnUnreachableFileIsLoggedOnceAndNeverReadLater) {
  ASSERT_EQ(CAN_DrvInit(path.c_str()), E_SUCCESS);
  EXPECT_EQ(log.count("is unreachable"), 1u);
  save(nestedConsole, 2000000000);
  poll();
  poll();
  EXPECT_FALSE(consoleMode()) << "the path was forgotten";
  EXPECT_EQ(log.count("is unreachable"), 1u);
}

TEST_F(Configuration, FilesThatAreNotXmlLeaveTheDriverAsItWas) {
  save(nestedConsole, 1000000);
  ASSERT_EQ(CAN_DrvInit(path.c_str()), E_SUCCESS);
  ASSERT_TRUE(consoleMode());
  const std::string broken[] = {"", "not xml at all", "<CONFIGURATION><MODECONSOLE/>",
                                std::string("\x7F"
                                            "ELF\x00\x01\x02\xFF",
                                            8)};
  long long time = 1000000;
  for (const auto &content : broken) {
    writeFile(path, content);
    setModificationTime(path, ++time);
    poll();
    EXPECT_TRUE(consoleMode()) << "content: " << content;
  }
  EXPECT_EQ(log.lines().size(), 0u) << "a failed parse is not logged";
  // Once fixed and saved again, it is read.
  save(ConfigurationFile(), ++time);
  poll();
  EXPECT_FALSE(consoleMode());
}

TEST_F(Configuration, InitTwiceReadsTheFileAgainWhateverItsTime) {
  save(nestedConsole, 1000000);
  ASSERT_EQ(CAN_DrvInit(path.c_str()), E_SUCCESS);
  save(ConfigurationFile(), 1000000);
  ASSERT_EQ(CAN_DrvInit(path.c_str()), E_SUCCESS);
  EXPECT_FALSE(consoleMode());
}

TEST_F(Configuration, InitEndInitReadsTheSecondFile) {
  const std::string other = dir.file("other.xml");
  ConfigurationFile().writeTo(path);
  nestedConsole.writeTo(other);
  ASSERT_EQ(CAN_DrvInit(path.c_str()), E_SUCCESS);
  EXPECT_FALSE(consoleMode());
  CAN_DrvEnd();
  EXPECT_EQ(SimuDriver::existing(), nullptr);
  ASSERT_EQ(CAN_DrvInit(other.c_str()), E_SUCCESS);
  EXPECT_TRUE(consoleMode());
}

TEST_F(Configuration, InConsoleModeEachLogLineIsAlsoPrintedWithALineFeed) {
  save(nestedConsole, 1000000);
  ASSERT_EQ(CAN_DrvInit(path.c_str()), E_SUCCESS);
  testing::internal::CaptureStdout();
  logMessage(L"100% done");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "100% done\n");
  EXPECT_EQ(log.count("100% done"), 1u);
}
