// The firmware image reader on good and broken files, and whole downloads
// through CAN_DevBoardTeleFirm, which take 2 to 2.5 s each.
#include "device/FirmwareDownload.h"
#include "DeviceFixture.h"
#include "support/FirmwareImages.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <thread>
#include <vector>

using namespace device_test;
using namespace firmware;

namespace {

class FirmwareReader : public ::testing::Test {
protected:
  TempDir dir;
  FirmwareVersions read;

  bool readApplication(const std::string &content) {
    writeFile(dir.file("image.bin"), content);
    return readFirmwareFile(nullptr, dir.file("image.bin").c_str(), read);
  }
  bool readBoot(const std::string &content) {
    writeFile(dir.file("image.bin"), content);
    return readFirmwareFile(dir.file("image.bin").c_str(), nullptr, read);
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

// The progress values a host reads while a download runs on another thread.
// A read may come back empty early (the queue's signal outlives a read that
// did not wait), so it keeps polling as a host does.
std::vector<uintptr_t> progressDuring(CAN_DEV_HANDLE device, size_t count) {
  std::vector<uintptr_t> values;
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  CAN_EventDev *event = nullptr;
  uint32_t pending = 0;
  while (values.size() < count && std::chrono::steady_clock::now() < deadline) {
    if (CAN_DevRxMsg(device, &event, &pending, 1000) != E_SUCCESS)
      continue;
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
  ASSERT_TRUE(readApplication(applicationImage("C0DE", "V1.00", "12/03/2024")));
  EXPECT_STREQ(read.AppCheckSum.c_str(), "C0DE");
  EXPECT_STREQ(read.AppVersion.c_str(), "V1.00");
  EXPECT_STREQ(read.AppDate.c_str(), "12/03/202") << "nine characters fit the field";
  EXPECT_TRUE(read.BootVersion.empty());
  EXPECT_FALSE(readBoot(applicationImage("C0DE", "V1.00", "12/03/2024")));
  ASSERT_TRUE(readBoot(bootImage("B007", "B2.10", "05/06/07")));
  EXPECT_STREQ(read.BootCheckSum.c_str(), "B007");
  EXPECT_STREQ(read.BootVersion.c_str(), "B2.10");
  EXPECT_STREQ(read.BootDate.c_str(), "05/06/07");
  EXPECT_FALSE(readApplication(bootImage("B007", "B2.10", "05/06/07")));

  EXPECT_TRUE(readApplication(applicationImage("C", "V", "D", 82)));
  EXPECT_FALSE(readApplication(applicationImage("C", "V", "D", 81)));
  EXPECT_TRUE(readBoot(bootImage("C", "V", "D", 790)));
  EXPECT_FALSE(readBoot(bootImage("C", "V", "D", 789)));
}

TEST_F(FirmwareReader, TextsStopAtTheFirstZeroAndFilesAreReadInBinaryModeWithAnySlashes) {
  std::string content = applicationImage("AB", "", "D1");
  content.replace(54, 10, "0056312E30");
  ASSERT_TRUE(readApplication(content));
  EXPECT_STREQ(read.AppCheckSum.c_str(), "AB");
  EXPECT_TRUE(read.AppVersion.empty()) << "hex text beginning with 00";
  EXPECT_STREQ(read.AppDate.c_str(), "D1");
  content.replace(54, 10, std::string("5631\0\0\0\0\0\0", 10));
  ASSERT_TRUE(readApplication(content));
  EXPECT_STREQ(read.AppVersion.c_str(), "V1");

  std::filesystem::create_directory(dir.file("folder"));
  writeFile(dir.file("folder/app.bin"), applicationImage("\r\n\r\n", "V1.00", "D"));
  ASSERT_TRUE(readFirmwareFile(nullptr, (dir.path() + "\\folder\\app.bin").c_str(), read));
  EXPECT_STREQ(read.AppCheckSum.c_str(), "\r\n\r\n");
  EXPECT_STREQ(read.AppVersion.c_str(), "V1.00");
}

TEST_F(FirmwareReader, BrokenFilesAreRefusedAndNonHexTextStaysInsideItsField) {
  for (const std::string &path : {dir.file("missing.bin"), std::string(), dir.path()})
    EXPECT_FALSE(readFirmwareFile(nullptr, path.c_str(), read)) << "'" << path << "'";
  EXPECT_FALSE(readApplication(""));
  EXPECT_FALSE(readApplication(std::string(4096, '\0')));
  std::string content = applicationImage("C", "V", "D");
  content.replace(46, 4, "0623");
  EXPECT_FALSE(readApplication(content)) << "wrong identifier";
  content.replace(46, 36, "0622CCzz\xFF\x01GG!!..ab cd\x7F\x80-=+*&^%$#@~??");
  ASSERT_TRUE(readApplication(content));
  EXPECT_LE(read.AppVersion.length(), 5u);
  EXPECT_LE(read.AppDate.length(), 9u);
}

TEST_F(FirmwareDownload, AnApplicationImageTakesOverTheApplicationTextsAfterFiftyEvents) {
  init(namedDevice(kVersions));
  CAN_DEV_HANDLE device = reserve();
  const std::string path = dir.file("app.bin");
  writeFile(path, applicationImage("C0DE", "V1.00", "12/03/24"));
  std::vector<uintptr_t> seen;
  std::thread reader([&] { seen = progressDuring(device, 50); });
  DownloadResult result = {0xEE, 0xEE};
  const auto start = std::chrono::steady_clock::now();
  const CAN_STATUS status = CAN_DevBoardTeleFirm(device, path.c_str(), &result);
  const auto took = std::chrono::steady_clock::now() - start;
  reader.join();
  EXPECT_EQ(status, E_SUCCESS);
  EXPECT_EQ(result.errorCode, 0);
  EXPECT_EQ(result.written, 1);
  EXPECT_GE(took, std::chrono::milliseconds(2500));
  EXPECT_EQ(seen, steps(100));
  CAN_VersionDev version;
  ASSERT_EQ(CAN_DevGetVersion(device, &version), E_SUCCESS);
  EXPECT_STREQ(version.appVersion, "V1.00");
  EXPECT_STREQ(version.appDate, "12/03/24");
  EXPECT_STREQ(version.appCheckSum, "C0DE");
  EXPECT_STREQ(version.bootVersion, "B0.01");
  edit(namedDevice(kVersions));
  EXPECT_STREQ(simuDevice().versions.AppVersion.c_str(), "A0.01") << "a re-read gives them back";
}

TEST_F(FirmwareDownload, ABootImageTakesOverOnlyTheBootTextsAndAMissingFileFailsWith15) {
  init(namedDevice(kVersions));
  CAN_DEV_HANDLE device = reserve();
  const std::string path = dir.file("boot.bin");
  writeFile(path, bootImage("B007", "B2.10", "05/06/07"));
  DownloadResult result = {};
  ASSERT_EQ(CAN_DevBoardTeleFirm(device, path.c_str(), &result), E_SUCCESS);
  EXPECT_EQ(progressDuring(device, 50), steps(100));
  EXPECT_STREQ(simuDevice().versions.BootVersion.c_str(), "B2.10");
  EXPECT_STREQ(simuDevice().versions.BootCheckSum.c_str(), "B007");
  EXPECT_STREQ(simuDevice().versions.AppVersion.c_str(), "A0.01");

  const std::string missing = dir.file("missing.bin");
  result = {0xEE, 0xEE};
  EXPECT_EQ(CAN_DevBoardTeleFirm(device, missing.c_str(), &result), E_BAD_FILE);
  EXPECT_EQ(result.errorCode, 0);
  EXPECT_EQ(result.written, 1);
  EXPECT_EQ(progressDuring(device, 50), steps(100)) << "after the whole progress";
  EXPECT_STREQ(simuDevice().versions.BootVersion.c_str(), "B2.10");
  EXPECT_EQ(log.count("The file <" + missing + "> is unreachable"), 1u);
  EXPECT_TRUE(queueIsEmpty(device));
}

TEST_F(FirmwareDownload, TheFailureSwitchStopsAt80WithoutOpeningTheFile) {
  init(namedDevice(kVersions + "<DEVICES SimulateUploadFailure='1'/>"));
  CAN_DEV_HANDLE device = reserve();
  const std::string path = dir.file("app.bin");
  writeFile(path, applicationImage("C0DE", "V1.00", "12/03/24"));
  DownloadResult result = {};
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(CAN_DevBoardTeleFirm(device, path.c_str(), &result), E_BOARD_ERROR_1);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(2000));
  EXPECT_EQ(result.errorCode, 0x82);
  EXPECT_EQ(result.written, 1);
  EXPECT_EQ(progressDuring(device, 40), steps(80));
  EXPECT_TRUE(queueIsEmpty(device));
  EXPECT_STREQ(simuDevice().versions.AppVersion.c_str(), "A0.01") << "the image was not read";

  uint8_t detail = 0;
  ASSERT_EQ(CAN_DevSetMode(device, 1, &detail), E_SUCCESS);
  result = {0xEE, 0xEE};
  EXPECT_EQ(CAN_DevBoardTeleFirm(device, path.c_str(), &result), E_INVALID) << "outside mode 0";
  EXPECT_EQ(result.errorCode, 0xEE);
  EXPECT_EQ(result.written, 0xEE);
  EXPECT_TRUE(queueIsEmpty(device));
}
