// The device's section of the configuration file, read at CAN_DrvInit and
// again at the host's CAN_DrvRxMsg after an edit, and the connection state
// the host sees at its next CAN_DevRxMsg.
#include "DeviceFixture.h"

#include <cmath>
#include <cstring>

using namespace device_test;

namespace {

using DeviceConfiguration = DeviceTest;

std::string uploadFailure(const std::string &value) {
  return "<DEVICES SimulateUploadFailure='" + value + "'/>";
}

} // namespace

TEST_F(DeviceConfiguration, OnlyTheExactStateTextMeansConnected) {
  const std::pair<std::string, bool> cases[] = {
      {stateSection("DEV_TYPE_RCON"), true},
      {stateSection("dev_type_rcon"), false},
      {stateSection("DEV_TYPE_RCON "), false},
      {"<CAN_DEVICESTATE/>", false},
      {stateSection("OFF") + "<DEVICESTATE>DEV_TYPE_RCON</DEVICESTATE>", false},
      {"<DEVICESTATE>DEV_TYPE_RCON</DEVICESTATE>", true},
      {"<DEVICESTATE>OFF</DEVICESTATE>", false},
      {"", true},
  };
  for (const auto &[sections, connected] : cases) {
    init(namedDevice(sections));
    EXPECT_EQ(simuDevice().configuredConnected, connected) << sections;
  }
}

TEST_F(DeviceConfiguration, UnpluggingIsSeenAtTheNextDeviceReadAfterTheFileWasRead) {
  init(namedDevice(stateSection("DEV_TYPE_RCON")));
  CAN_DEV_HANDLE device = reserve();
  CAN_ModeDev mode;
  // Saved but not yet read: CAN_DevRxMsg alone never reads the file.
  save(namedDevice(stateSection("UNPLUGGED")));
  EXPECT_TRUE(queueIsEmpty(device));
  EXPECT_EQ(CAN_DevGetMode(device, &mode), E_SUCCESS);

  // Read at the driver's poll; the host sees it at its next device read.
  pollDriver();
  EXPECT_TRUE(simuDevice().port->deviceConnected);
  DeviceEvent event = nextEvent(device);
  ASSERT_NE(event, nullptr);
  EXPECT_EQ(event->type, DEV_TYPE_DISCONNECTED);
  EXPECT_EQ(event->data, nullptr);
  EXPECT_FALSE(simuDevice().port->deviceConnected) << "the port follows";
  EXPECT_EQ(CAN_DevGetMode(device, &mode), E_DISCONNECTED);
  EXPECT_TRUE(queueIsEmpty(device)) << "one event per change";

  // A file with no state element plugs the box back in.
  edit(namedDevice());
  event = nextEvent(device);
  ASSERT_NE(event, nullptr);
  EXPECT_EQ(event->type, DEV_TYPE_CONNECTED);
  EXPECT_TRUE(simuDevice().port->deviceConnected);
  EXPECT_EQ(CAN_DevGetMode(device, &mode), E_SUCCESS);
}

TEST_F(DeviceConfiguration, VoltagesReadTheirNumberPrefixAndEmptyKeepsTheOldValue) {
  const std::pair<std::string, float> cases[] = {
      {"12.5", 12.5f},
      {"12.5V", 12.5f},
      {" 7e-1", 0.7f},
      {"abc", 0.0f},
      {"13.75", 13.75f},
      {"", 13.75f},
      {"1e39", INFINITY},
      {"-1e999", -INFINITY},
      {std::string(4000, '9'), INFINITY},
      {"0." + std::string(3000, '0') + "1", 0.0f},
      {"4.2" + std::string(3000, 'x'), 4.2f},
  };
  init(namedDevice("<VOLTAGES APCKelmora='5'/>"));
  for (const auto &[text, expected] : cases) {
    edit(namedDevice("<VOLTAGES VBatt='" + text + "'/>"));
    EXPECT_FLOAT_EQ(simuDevice().batteryVoltage, expected) << text.substr(0, 20);
    EXPECT_FLOAT_EQ(simuDevice().apcKelmora, 5.0f) << "an absent attribute keeps its value";
  }
  EXPECT_EQ(log.count("VOLTAGES VBatt <abc> holds no number: read as 0"), 1u);
  EXPECT_EQ(log.count("VOLTAGES VBatt <1e39> is beyond a 32-bit float"), 1u);
}

TEST_F(DeviceConfiguration, TheUploadFailureSwitchIsOnForAnyNonZeroInteger) {
  const std::pair<std::string, bool> cases[] = {
      {uploadFailure("1"), true},   {uploadFailure("-1"), true},
      {uploadFailure(" 2x"), true}, {uploadFailure("99999999999999999999999"), true},
      {uploadFailure("0"), false},  {uploadFailure("true"), false},
      {uploadFailure(""), false},   {uploadFailure("1"), true},
      {"", false} /* removed */,
  };
  init(namedDevice());
  for (const auto &[sections, on] : cases) {
    edit(namedDevice(sections));
    EXPECT_EQ(simuDevice().simulateUploadFailure, on) << sections;
  }
}

TEST_F(DeviceConfiguration, TheSerialNumberIsTheFirstFoundAndSurvivesAReadWithoutOne) {
  init(ConfigurationFile().section(serialSection("FIRST")).section(serialSection("SECOND")));
  CAN_DEV_HANDLE device = reserve("FIRST");
  edit(ConfigurationFile());
  EXPECT_EQ(CAN_DevFree(device), E_SUCCESS);
  EXPECT_EQ(reserve("FIRST"), device) << "still found by its old name";
}

TEST_F(DeviceConfiguration, AVeryLongSerialNumberIsCutOnlyInTheEnumerationRecord) {
  const std::string serial(5000, 'S');
  init(ConfigurationFile().section(serialSection(serial)));
  CAN_EnumList list = {};
  ASSERT_EQ(CAN_DevEnumerate(&list), E_SUCCESS);
  const auto *record = static_cast<const CAN_EnumDev *>(list.records);
  EXPECT_EQ(std::strlen(record->name), 127u);
  EXPECT_EQ(record->fixedOne, 1u) << "nothing after the name was overrun";
  free(list.records);
  EXPECT_NE(reserve(serial.c_str()), nullptr) << "reservation compares the whole name";
}

TEST_F(DeviceConfiguration, VersionAttributesReplaceOnlyWhereTheyHaveAValue) {
  init(namedDevice("<CAN_FIRMWAREVERSION BootVersion='B1' BootDate='D1' AppDate='E1'/>"));
  edit(namedDevice("<CAN_FIRMWAREVERSION BootVersion='B2' AppDate=''/>"));
  EXPECT_STREQ(simuDevice().versions.BootVersion.c_str(), "B2");
  EXPECT_STREQ(simuDevice().versions.BootDate.c_str(), "D1");
  EXPECT_STREQ(simuDevice().versions.AppDate.c_str(), "E1");
}
