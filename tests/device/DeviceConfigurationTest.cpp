// The device's section of the configuration file, read at CAN_DrvInit and
// again at the host's CAN_DrvRxMsg after an edit, and the connection state
// the host sees at its next CAN_DevRxMsg.
#include "DeviceFixture.h"
#include "api/InjectionTable.h"

#include <cmath>

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

// The connection changes when the host's CAN_DevRxMsg follows the driver's
// read of the edited file, never through an injected event. Unplugged, the
// calls with an effect answer 7 and write nothing; the self-test and the
// calls without effect still answer, and the end marker is not queued.
TEST_F(DeviceConfiguration, ConnectionFollowsTheFileAtTheNextDeviceReadAndNeverAnInjection) {
  CAN_DEV_HANDLE device = reservedDevice();
  setNextCANStatus("CAN_DevRxMsg", DEV_TYPE_DISCONNECTED, 0);
  EXPECT_EQ(nextEvent(device)->type, DEV_TYPE_DISCONNECTED);
  EXPECT_TRUE(simuDevice().connected);
  save(namedDevice(kUnplugged));
  EXPECT_TRUE(queueIsEmpty(device)) << "CAN_DevRxMsg alone never reads the file";
  pollDriver();
  EXPECT_TRUE(simuDevice().port->deviceConnected) << "read, not yet seen";
  DeviceEvent event = nextEvent(device);
  EXPECT_EQ(event->type, DEV_TYPE_DISCONNECTED);
  EXPECT_EQ(event->data, nullptr);
  EXPECT_FALSE(simuDevice().port->deviceConnected) << "the port follows";

  EXPECT_EQ(CAN_DevSetMode(device, 2, &detail), E_DISCONNECTED);
  EXPECT_EQ(CAN_DevGetMode(device, &mode), E_DISCONNECTED);
  EXPECT_EQ(CAN_DevGetConfig(device, &config), E_DISCONNECTED);
  EXPECT_EQ(CAN_DevGetTension(device, &tension), E_DISCONNECTED);
  EXPECT_EQ(CAN_DevGetVersion(device, &version), E_DISCONNECTED);
  EXPECT_EQ(CAN_DevSetSleep(device), E_DISCONNECTED);
  EXPECT_EQ(CAN_DevEndFifo(device), E_DISCONNECTED);
  EXPECT_EQ(CAN_DevHC16Reset(device), E_DISCONNECTED);
  EXPECT_EQ(CAN_DevBoardTeleFirm(device, "missing.bin", &result), E_DISCONNECTED);
  EXPECT_EQ(config.ports, nullptr);
  EXPECT_EQ(result.written, 0xEE);
  EXPECT_EQ(simuDevice().mode, 0u);
  EXPECT_TRUE(queueIsEmpty(device)) << "one event per change, none from a refused call";
  EXPECT_EQ(CAN_DevRunTest(device, 42, &test), E_SUCCESS);
  EXPECT_FLOAT_EQ(test.firstValue, 2.0f);
  EXPECT_FLOAT_EQ(test.secondValue, 2.7f);
  EXPECT_EQ(CAN_DevSndGenericFrame(device, "\x01\x02"), E_SUCCESS);
  EXPECT_EQ(CAN_DevAutoConfig(device), E_SUCCESS);
  EXPECT_EQ(CAN_DevAutoConfigRaz(device), E_SUCCESS);
  setNextCANStatus("CAN_DevRxMsg", DEV_TYPE_ENDFIFO, 0);
  setNextCANStatus("CAN_DevRxMsg", DEV_TYPE_CONNECTED, 0);
  event = nextEvent(device);
  ASSERT_EQ(event->type, DEV_TYPE_CONNECTED) << "the end marker was not queued";
  EXPECT_EQ(static_cast<CAN_EnumDev *>(event->data)->disconnected, 1u);
  EXPECT_FALSE(simuDevice().connected);

  edit(namedDevice());
  event = nextEvent(device);
  EXPECT_EQ(event->type, DEV_TYPE_CONNECTED);
  EXPECT_EQ(event->data, nullptr);
  EXPECT_TRUE(simuDevice().port->deviceConnected);
  EXPECT_EQ(CAN_DevGetMode(device, &mode), E_SUCCESS);
}

TEST_F(DeviceConfiguration, NumbersAreReadFromTheirPrefixAndAnEmptyVoltageKeepsTheOldValue) {
  const std::pair<std::string, float> voltages[] = {{"12.5", 12.5f}, {"12.5V", 12.5f},
                                                    {"abc", 0.0f},   {"13.75", 13.75f},
                                                    {"", 13.75f},    {"1e39", INFINITY}};
  init(namedDevice("<VOLTAGES APCKelmora='5'/>"));
  for (const auto &[text, expected] : voltages) {
    edit(namedDevice("<VOLTAGES VBatt='" + text + "'/>"));
    EXPECT_FLOAT_EQ(simuDevice().batteryVoltage, expected) << text;
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
