// The program's own parsing and wording, where a slip would show a tester a
// wrong value: codes typed in the shell, event payloads, the command line.
#include "Arguments.h"
#include "Errors.h"
#include "Records.h"
#include "StatusNames.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>

namespace {

CAN_EventDev deviceEvent(uint32_t type, void *data) {
  CAN_EventDev event{};
  event.type = type;
  event.data = data;
  return event;
}

Arguments parse(std::vector<std::string> words) {
  std::vector<char *> argv;
  static char program[] = "cansimu";
  argv.push_back(program);
  for (std::string &word : words)
    argv.push_back(&word[0]);
  return parseArguments(static_cast<int>(argv.size()), argv.data());
}

} // namespace

// "010" is ten: a leading zero is not octal. A refused text leaves the value
// as it was.
TEST(CliCodes, ParseCode_TakesDecimalHexadecimalAndEveryNameAndNothingElse) {
  const std::pair<const char *, uint32_t> accepted[] = {
      {"27", 27u},
      {"0x1B", 27u},
      {"010", 10u},
      {"4294967295", UINT32_MAX},
      {"E_SUCCESS", 0u},
      {"DEV_TYPE_PROGRESS", DEV_TYPE_PROGRESS},
      {"DRV_TYPE_DEVICE_101", DRV_TYPE_DEVICE_101}};
  for (const auto &[text, expected] : accepted) {
    uint32_t value = 12345;
    EXPECT_TRUE(parseCode(text, value) && value == expected) << text;
  }
  for (const char *text : {"", "-1", "+1", "4294967296", "12abc", "0x", "e_busoff", "E_BUSOFF "}) {
    uint32_t value = 12345;
    EXPECT_FALSE(parseCode(text, value)) << "'" << text << "'";
    EXPECT_EQ(value, 12345u) << "'" << text << "'";
  }
}

TEST(CliCodes, Texts_NumberAStatusWithoutANameAndKeepEachQueuesOwnTypes) {
  EXPECT_EQ(statusText(5), "status 5");
  EXPECT_EQ(driverEventName(DEV_TYPE_RESET), nullptr) << "each queue has its own types";
}

TEST(CliRecords, DeviceEvents_DescribeThePayloadOfTheirType) {
  // A progress event carries its value in the data word, not behind it.
  EXPECT_EQ(describeDeviceEvent(deviceEvent(DEV_TYPE_PROGRESS, reinterpret_cast<void *>(44))),
            "DEV_TYPE_PROGRESS (1000), 44 %");
  uint8_t pair[2] = {0x33, 0};
  EXPECT_EQ(describeDeviceEvent(deviceEvent(DEV_TYPE_STATUS_PAIR, pair)),
            "DEV_TYPE_STATUS_PAIR (200), values 0x33, 0x00");
  CAN_EnumDev device{};
  std::strcpy(device.name, "SIMU-7");
  device.disconnected = 1;
  EXPECT_EQ(describeDeviceEvent(deviceEvent(DEV_TYPE_DISCONNECTED, &device)),
            "DEV_TYPE_DISCONNECTED (101), device \"SIMU-7\", free, disconnected");
  EXPECT_EQ(describeDeviceEvent(deviceEvent(150, pair)), "type 150");
}

TEST(CliRecords, VersionTexts_StopAtTheFieldEndWithoutATerminator) {
  CAN_VersionDev version{};
  std::memcpy(version.appVersion, "ABCDEFGHIJK", 11);
  std::strcpy(version.appDate, "02/09/25");
  std::strcpy(version.appCheckSum, "7E21");
  EXPECT_EQ(describeApplicationVersion(version), "ABCDEFGHIJK (02/09/25, 7E21)");
}

TEST(CliArguments, OptionsStandAnywhereNeedTheirValueAndLibraryIsSetApart) {
  const Arguments arguments = parse({"--library", "lib.so", "events", "b.xml", "--seconds", "3"});
  EXPECT_EQ(arguments.command, "events");
  EXPECT_EQ(arguments.positional, std::vector<std::string>{"b.xml"});
  EXPECT_EQ(arguments.library, "lib.so");
  EXPECT_FALSE(arguments.has("--library"));
  EXPECT_EQ(arguments.options.at("--seconds"), "3");
  EXPECT_TRUE(parse({"flash", "-h"}).help);
  EXPECT_THROW(parse({"demo", "--library"}), UsageError);
  EXPECT_EQ(parse({"flash", "b.xml", "-"}).positional.back(), "-") << "'-' is an argument";
}
