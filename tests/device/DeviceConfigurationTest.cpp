// The device's section of the configuration file, read at CAN_DrvInit and
// again at the host's CAN_DrvRxMsg after an edit, and the connection state
// the host sees at its next CAN_DevRxMsg.
#include "DeviceFixture.h"

#include <cmath>
#include <cstring>

using namespace device_test;
using DeviceConfiguration = DeviceTest;

TEST_F(DeviceConfiguration, OnlyTheExactStateTextMeansConnected) {
  const std::pair<std::string, bool> cases[] = {
      {"<CAN_DEVICESTATE>DEV_TYPE_RCON</CAN_DEVICESTATE>", true},
      {"<CAN_DEVICESTATE>dev_type_rcon</CAN_DEVICESTATE>", false},
      {"<CAN_DEVICESTATE>DEV_TYPE_RCON </CAN_DEVICESTATE>", false},
      {"<CAN_DEVICESTATE/>", false},
      {kUnplugged + "<DEVICESTATE>DEV_TYPE_RCON</DEVICESTATE>", false},
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
  init(namedDevice());
  CAN_DEV_HANDLE device = reserve();
  CAN_ModeDev mode;
  save(namedDevice(kUnplugged));
  EXPECT_TRUE(queueIsEmpty(device)) << "CAN_DevRxMsg alone never reads the file";
  EXPECT_EQ(CAN_DevGetMode(device, &mode), E_SUCCESS);
  pollDriver();
  EXPECT_TRUE(simuDevice().port->deviceConnected) << "read, not yet seen";
  DeviceEvent event = nextEvent(device);
  ASSERT_NE(event, nullptr);
  EXPECT_EQ(event->type, DEV_TYPE_DISCONNECTED);
  EXPECT_EQ(event->data, nullptr);
  EXPECT_FALSE(simuDevice().port->deviceConnected) << "the port follows";
  EXPECT_EQ(CAN_DevGetMode(device, &mode), E_DISCONNECTED);
  EXPECT_TRUE(queueIsEmpty(device)) << "one event per change";

  edit(namedDevice());
  event = nextEvent(device);
  ASSERT_NE(event, nullptr);
  EXPECT_EQ(event->type, DEV_TYPE_CONNECTED);
  EXPECT_TRUE(simuDevice().port->deviceConnected);
  EXPECT_EQ(CAN_DevGetMode(device, &mode), E_SUCCESS);
}

TEST_F(DeviceConfiguration, NumbersAreReadFromTheirPrefixAndAnEmptyVoltageKeepsTheOldValue) {
  const std::pair<std::string, float> voltages[] = {{"12.5", 12.5f},
                                                    {"12.5V", 12.5f},
                                                    {" 7e-1", 0.7f},
                                                    {"abc", 0.0f},
                                                    {"13.75", 13.75f},
                                                    {"", 13.75f},
                                                    {"1e39", INFINITY},
                                                    {"-1e999", -INFINITY},
                                                    {std::string(4000, '9'), INFINITY},
                                                    {"0." + std::string(3000, '0') + "1", 0.0f},
                                                    {"4.2" + std::string(3000, 'x'), 4.2f}};
  init(namedDevice("<VOLTAGES APCKelmora='5'/>"));
  for (const auto &[text, expected] : voltages) {
    edit(namedDevice("<VOLTAGES VBatt='" + text + "'/>"));
    EXPECT_FLOAT_EQ(simuDevice().batteryVoltage, expected) << text.substr(0, 20);
    EXPECT_FLOAT_EQ(simuDevice().apcKelmora, 5.0f) << "an absent attribute keeps its value";
  }
  EXPECT_EQ(log.count("VOLTAGES VBatt <abc> holds no number: read as 0"), 1u);
  EXPECT_EQ(log.count("VOLTAGES VBatt <1e39> is beyond a 32-bit float"), 1u);

  // The upload failure switch is on for any non-zero integer; removed is off.
  const std::pair<const char *, bool> switches[] = {
      {"1", true},     {"-1", true},    {" 2x", true}, {"99999999999999999999999", true},
      {"0", false},    {"true", false}, {"", false},   {"1", true},
      {nullptr, false}};
  for (const auto &[value, on] : switches) {
    edit(namedDevice(value ? "<DEVICES SimulateUploadFailure='" + std::string(value) + "'/>" : ""));
    EXPECT_EQ(simuDevice().simulateUploadFailure, on) << (value ? value : "removed");
  }
}

TEST_F(DeviceConfiguration, TheFirstSerialNumberNamesTheDeviceAndSurvivesAReadWithoutOne) {
  init(ConfigurationFile().section(serialSection("FIRST")).section(serialSection("SECOND")));
  CAN_DEV_HANDLE device = reserve("FIRST");
  edit(ConfigurationFile());
  EXPECT_EQ(CAN_DevFree(device), E_SUCCESS);
  EXPECT_EQ(reserve("FIRST"), device) << "still found by its old name";

  const std::string serial(5000, 'S');
  edit(ConfigurationFile().section(serialSection(serial)));
  CAN_EnumList list = {};
  ASSERT_EQ(CAN_DevEnumerate(&list), E_SUCCESS);
  const auto *record = static_cast<const CAN_EnumDev *>(list.records);
  EXPECT_EQ(std::strlen(record->name), 127u) << "cut only in the enumeration record";
  EXPECT_EQ(record->fixedOne, 1u) << "nothing after the name was overrun";
  free(list.records);
  EXPECT_EQ(CAN_DevFree(device), E_SUCCESS);
  EXPECT_EQ(reserve(serial.c_str()), device) << "reservation compares the whole name";
}

TEST_F(DeviceConfiguration, VersionAttributesReplaceOnlyWhereTheyHaveAValue) {
  init(namedDevice("<CAN_FIRMWAREVERSION BootVersion='B1' BootDate='D1' AppDate='E1'/>"));
  edit(namedDevice("<CAN_FIRMWAREVERSION BootVersion='B2' AppDate=''/>"));
  EXPECT_STREQ(simuDevice().versions.BootVersion.c_str(), "B2");
  EXPECT_STREQ(simuDevice().versions.BootDate.c_str(), "D1");
  EXPECT_STREQ(simuDevice().versions.AppDate.c_str(), "E1");
}
