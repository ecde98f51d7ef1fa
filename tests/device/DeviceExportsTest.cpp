// The CAN_Dev* exports as a host calls them.
#include "DeviceFixture.h"

#include <chrono>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

using namespace device_test;
using DeviceExports = DeviceTest;

// The first serial number names the device, and a read without one keeps
// it. The enumeration record holds 127 bytes of it and its terminator; the
// reservation compares the whole name.
TEST_F(DeviceExports, EnumerateFillsOnlyAnEmptyListAndCutsALongNameInsideItsRecord) {
  const std::string serial(5000, 'S');
  init(ConfigurationFile().section(serialSection(serial)).section(serialSection("SECOND")));
  CAN_EnumList list = {};
  ASSERT_EQ(CAN_DevEnumerate(&list), E_SUCCESS);
  ASSERT_EQ(list.count, 1u);
  auto *record = static_cast<CAN_EnumDev *>(list.records);
  EXPECT_EQ(record->name, serial.substr(0, 127));
  EXPECT_EQ(record->fixedOne, 1u) << "nothing after the name was overrun";
  EXPECT_EQ(record->reserved + record->disconnected, 0u);
  for (unsigned char byte : record->unused)
    ASSERT_EQ(byte, 0) << "unwritten bytes are zero";
  EXPECT_EQ(CAN_DevEnumerate(&list), E_NULL_POINTER) << "a list that already holds records";
  EXPECT_EQ(list.records, record);
  EXPECT_EQ(log.count("already holds records"), 1u);
  free(record);
  edit(ConfigurationFile());
  CAN_DEV_HANDLE handle = nullptr;
  EXPECT_EQ(CAN_DevReservation(serial.substr(0, 127).c_str(), &handle), E_NOT_FOUND);
  EXPECT_NE(reserve(serial.c_str()), nullptr);
}

TEST_F(DeviceExports, ReservationChecksTheNameThenTheReservationThenTheConnection) {
  init(namedDevice());
  EXPECT_EQ(CAN_DevFree(&simuDevice()), E_SUCCESS) << "never reserved";
  CAN_DEV_HANDLE handle = &handle;
  EXPECT_EQ(CAN_DevReservation("simu-0042", &handle), E_NOT_FOUND) << "case-sensitive";
  EXPECT_EQ(log.count("no device is named <simu-0042>"), 1u);
  CAN_DEV_HANDLE device = reserve();
  handle = &handle;
  EXPECT_EQ(CAN_DevReservation(kSerial, &handle), E_ALREADY_RESERVED);
  EXPECT_EQ(handle, nullptr) << "a refusal clears the handle";
  simuDevice().port->reserved = true;
  EXPECT_EQ(CAN_DevFree(device), E_INVALID) << "refused while the port is reserved";
  simuDevice().port->reserved = false;

  edit(namedDevice(kUnplugged));
  EXPECT_EQ(nextEvent(device)->type, DEV_TYPE_DISCONNECTED);
  EXPECT_EQ(CAN_DevReservation("OTHER", &handle), E_NOT_FOUND);
  EXPECT_EQ(CAN_DevReservation(kSerial, &handle), E_ALREADY_RESERVED) << "still reserved";
  EXPECT_EQ(CAN_DevFree(device), E_SUCCESS) << "no connection check";
  EXPECT_EQ(CAN_DevReservation(kSerial, &handle), E_DISCONNECTED);
}

// An edit replaces only the version texts it gives a value; a text longer
// than its 10-byte field is cut and logged, one of exactly ten is kept whole.
TEST_F(DeviceExports, ConfigAndVersionCarryTheTextsCutToTenBytesAndThePort) {
  CAN_DEV_HANDLE device =
      reservedDevice("<CAN_FIRMWAREVERSION BootVersion='B1.20' BootDate='01/02/2003' "
                     "BootCheckSum='BC01' AppVersion='A4.56' AppDate='04/05/2006' "
                     "AppCheckSum='AC02'/>");
  edit(namedDevice("<CAN_FIRMWAREVERSION BootVersion='0123456789ABC' AppVersion=''/>"));
  std::memset(&config, 0xEE, sizeof config);
  simuDevice().port->reserved = true;
  ASSERT_EQ(CAN_DevGetConfig(device, &config), E_SUCCESS);
  EXPECT_EQ(config.resultByte, 0);
  const std::vector<std::string> texts = {config.bootVersion, config.bootDate, config.bootCheckSum,
                                          config.appVersion,  config.appDate,  config.appCheckSum};
  EXPECT_EQ(texts, (std::vector<std::string>{"0123456789", "01/02/2003", "BC01", "A4.56",
                                             "04/05/2006", "AC02"}));
  EXPECT_EQ(log.count("BootVersion <0123456789ABC> is longer than 10 bytes"), 1u);
  EXPECT_EQ(log.count("AppDate"), 0u);
  EXPECT_EQ(config.padding, 0xEE) << "not written";
  ASSERT_EQ(config.count, 1u);
  EXPECT_EQ(config.ports[0].reserved, 1);
  EXPECT_EQ(config.ports[0].portNumber, 96);
  free(config.ports);
  // The version record is the config's first bytes, and nothing more.
  unsigned char buffer[sizeof(CAN_VersionDev) + 4];
  std::memset(buffer, 0xEE, sizeof buffer);
  ASSERT_EQ(CAN_DevGetVersion(device, reinterpret_cast<CAN_VersionDev *>(buffer)), E_SUCCESS);
  EXPECT_EQ(std::memcmp(buffer, &config, sizeof(CAN_VersionDev)), 0);
  EXPECT_EQ(buffer[sizeof(CAN_VersionDev)], 0xEE);
}

TEST_F(DeviceExports, ResetTakesHalfASecondThenQueuesItsEvent) {
  CAN_DEV_HANDLE device = reservedDevice();
  const auto start = std::chrono::steady_clock::now();
  ASSERT_EQ(CAN_DevHC16Reset(device), E_SUCCESS);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(500));
  DeviceEvent event = nextEvent(device, nullptr, 1);
  EXPECT_EQ(event->type, DEV_TYPE_RESET);
  EXPECT_EQ(*static_cast<unsigned char *>(event->data), 0xF4);
}
