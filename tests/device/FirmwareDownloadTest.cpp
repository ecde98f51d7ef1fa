// The firmware image reader on good and broken files, and whole downloads
// through CAN_DevBoardTeleFirm, which take 2 to 2.5 s each.
#include "device/FirmwareDownload.h"
#include "DeviceFixture.h"
#include "support/FirmwareImages.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <vector>

using namespace device_test;
using namespace firmware;

namespace {

class FirmwareReader : public ::testing::Test {
protected:
  TempDir dir;
  FirmwareVersions read;

  bool readImage(const std::string &content, bool boot) {
    const std::string path = dir.file("image.bin");
    writeFile(path, content);
    return readFirmwareFile(boot ? path.c_str() : nullptr, boot ? nullptr : path.c_str(), read);
  }
};

using FirmwareDownload = DeviceTest;

// The progress values 2, 4, ... up to `last`.
std::vector<uintptr_t> steps(uintptr_t last) {
  std::vector<uintptr_t> values;
  for (uintptr_t value = 2; value <= last; value += 2)
    values.push_back(value);
  return values;
}

// The progress values queued for the host, read until the queue is empty.
std::vector<uintptr_t> progressQueued(CAN_DEV_HANDLE device) {
  std::vector<uintptr_t> values;
  CAN_EventDev *event = nullptr;
  uint32_t pending = 0;
  while (CAN_DevRxMsg(device, &event, &pending, 1) == E_SUCCESS) {
    EXPECT_EQ(event->type, DEV_TYPE_PROGRESS);
    values.push_back(reinterpret_cast<uintptr_t>(event->data));
    CAN_DevFreeRxMsg(event);
  }
  return values;
}

const std::string kVersions = "<CAN_FIRMWAREVERSION BootVersion='B0.01' BootCheckSum='BOOT' "
                              "AppVersion='A0.01' AppCheckSum='APPL'/>";

} // namespace

TEST_F(FirmwareReader, EachImageKindIsReadAtItsOwnOffsetsAndMustHoldEveryByte) {
  read.BootVersion = "stale";
  ASSERT_TRUE(readImage(applicationImage("C0DE", "V1.00", "12/03/2024"), false));
  EXPECT_STREQ(read.AppDate.c_str(), "12/03/202") << "nine characters fit the field";
  EXPECT_TRUE(read.BootVersion.empty()) << "every text is emptied first";
  const struct {
    const char *what;
    std::string content;
    bool boot, accepted;
  } images[] = {
      {"82-byte application", applicationImage("C", "V", "D", 82), false, true},
      {"81-byte application", applicationImage("C", "V", "D", 81), false, false},
      {"790-byte boot", bootImage("C", "V", "D", 790), true, true},
      {"789-byte boot", bootImage("C", "V", "D", 789), true, false},
      {"application read as boot", applicationImage("C", "V", "D"), true, false},
      {"wrong identifier", imageAt(46, "0623", "C", "V", "D", 82), false, false},
      {"empty", "", false, false},
  };
  for (const auto &image : images)
    EXPECT_EQ(readImage(image.content, image.boot), image.accepted) << image.what;
  for (const std::string &path : {dir.file("missing.bin"), std::string(), dir.path()})
    EXPECT_FALSE(readFirmwareFile(nullptr, path.c_str(), read)) << "'" << path << "'";
}

TEST_F(FirmwareReader, TextsStopAtTheFirstZeroAndFilesAreReadInBinaryModeWithAnySlashes) {
  std::string content = applicationImage("AB", "", "D1");
  content.replace(54, 10, "0056312E30");
  ASSERT_TRUE(readImage(content, false));
  EXPECT_TRUE(read.AppVersion.empty()) << "hex text beginning with 00";
  content.replace(54, 10, std::string("5631\0\0\0\0\0\0", 10));
  ASSERT_TRUE(readImage(content, false));
  EXPECT_STREQ(read.AppVersion.c_str(), "V1");
  // Text that is not hex is decoded all the same and stays inside its field.
  content.replace(50, 32, "CCzz\xFF\x01GG!!..ab cd\x7F\x80-=+*&^%$#@~??");
  ASSERT_TRUE(readImage(content, false));
  EXPECT_LE(read.AppVersion.length(), 5u);
  EXPECT_LE(read.AppDate.length(), 9u);

  std::filesystem::create_directory(dir.file("folder"));
  writeFile(dir.file("folder/app.bin"), applicationImage("\r\n\r\n", "V1.00", "D"));
  ASSERT_TRUE(readFirmwareFile(nullptr, (dir.path() + "\\folder\\app.bin").c_str(), read));
  EXPECT_STREQ(read.AppCheckSum.c_str(), "\r\n\r\n");
  EXPECT_STREQ(read.AppVersion.c_str(), "V1.00");
}

// An application image replaces the application texts only. A missing
// file runs the whole progress before its status 15. (The command-line
// tests read the progress on a second thread while a download runs.)
TEST_F(FirmwareDownload, AnApplicationImageTakesOverItsTextsAfterFiftyEventsAMissingFileGets15) {
  CAN_DEV_HANDLE device = reservedDevice(kVersions);
  const std::string path = dir.file("app.bin");
  writeFile(path, applicationImage("C0DE", "V1.00", "12/03/24"));
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(CAN_DevBoardTeleFirm(device, path.c_str(), &result), E_SUCCESS);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(2500));
  EXPECT_EQ(result.errorCode, 0);
  EXPECT_EQ(result.written, 1);
  EXPECT_EQ(progressQueued(device), steps(100));
  ASSERT_EQ(CAN_DevGetVersion(device, &version), E_SUCCESS);
  const std::vector<std::string> texts = {version.appVersion, version.appDate, version.appCheckSum,
                                          version.bootVersion, version.bootCheckSum};
  EXPECT_EQ(texts, (std::vector<std::string>{"V1.00", "12/03/24", "C0DE", "B0.01", "BOOT"}));

  const std::string missing = dir.file("missing.bin");
  result = {0xEE, 0xEE};
  EXPECT_EQ(CAN_DevBoardTeleFirm(device, missing.c_str(), &result), E_BAD_FILE);
  EXPECT_EQ(result.errorCode, 0);
  EXPECT_EQ(result.written, 1);
  EXPECT_EQ(progressQueued(device), steps(100));
  EXPECT_EQ(log.count("The file <" + missing + "> is unreachable"), 1u);
  EXPECT_STREQ(simuDevice().versions.AppVersion.c_str(), "V1.00");
}

TEST_F(FirmwareDownload, TheFailureSwitchStopsAt80WithoutOpeningTheFile) {
  CAN_DEV_HANDLE device = reservedDevice(kVersions + "<DEVICES SimulateUploadFailure='1'/>");
  const std::string path = dir.file("app.bin");
  writeFile(path, applicationImage("C0DE", "V1.00", "12/03/24"));
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(CAN_DevBoardTeleFirm(device, path.c_str(), &result), E_BOARD_ERROR_1);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(2000));
  EXPECT_EQ(result.errorCode, 0x82);
  EXPECT_EQ(result.written, 1);
  EXPECT_EQ(progressQueued(device), steps(80));
  EXPECT_STREQ(simuDevice().versions.AppVersion.c_str(), "A0.01") << "the image was not read";

  ASSERT_EQ(CAN_DevSetMode(device, 1, &detail), E_SUCCESS);
  result = {0xEE, 0xEE};
  EXPECT_EQ(CAN_DevBoardTeleFirm(device, path.c_str(), &result), E_INVALID) << "outside mode 0";
  EXPECT_EQ(result.errorCode, 0xEE);
  EXPECT_EQ(result.written, 0xEE);
  EXPECT_TRUE(progressQueued(device).empty());
}
