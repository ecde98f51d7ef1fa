// The firmware image reader on good and broken files. Whole downloads run
// through the command-line tests (flash, demo) and the allocation sweep.
#include "device/FirmwareDownload.h"
#include "support/FirmwareImages.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

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
