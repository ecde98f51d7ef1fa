// What the device tests share: a configuration file the driver reads, the
// reserved device, and events released through CAN_DevFreeRxMsg.
#pragma once

#include "support/BusFixture.h"

#include <string>

namespace device_test {

using bus_test::kSerial;
using DeviceEvent = queues::Owned<CAN_EventDev>;

inline std::string serialSection(const std::string &serial = kSerial) {
  return "<CAN_SERIALNUMBER>" + serial + "</CAN_SERIALNUMBER>";
}
// A configuration naming the device kSerial, plus `extra` sections.
inline ConfigurationFile namedDevice(const std::string &extra = "") {
  return ConfigurationFile().section(serialSection() + extra);
}
const std::string kUnplugged = "<CAN_DEVICESTATE>UNPLUGGED</CAN_DEVICESTATE>";

class DeviceTest : public bus_test::DriverTest {
protected:
  // Records the exports write into.
  CAN_ModeDev mode = {};
  CAN_ConfigDev config = {};
  CAN_TensionDev tension = {};
  CAN_VersionDev version = {};
  CAN_TestDev test = {};
  DownloadResult result = {0xEE, 0xEE};

  void init(const ConfigurationFile &file) {
    save(file);
    ASSERT_EQ(CAN_DrvInit(configPath.c_str()), E_SUCCESS);
  }
  // Saves the file with a later modification time, unread until the driver's poll.
  void save(const ConfigurationFile &file) { saveFile(file); }
  // Saves the file and polls the driver, which reads it.
  void edit(const ConfigurationFile &file) {
    save(file);
    pollDriver();
  }
  CAN_DEV_HANDLE reserve(const char *name = kSerial) {
    CAN_DEV_HANDLE handle = nullptr;
    EXPECT_EQ(CAN_DevReservation(name, &handle), E_SUCCESS);
    return handle;
  }
  // Reads a configuration naming kSerial, plus `extra`, and reserves the device.
  CAN_DEV_HANDLE reservedDevice(const std::string &extra = "") {
    init(namedDevice(extra));
    return reserve();
  }
  SimuDevice &simuDevice() { return *SimuDriver::instance()->device; }

  // The next device event; a zeroed record when none came within the timeout.
  DeviceEvent nextEvent(CAN_DEV_HANDLE handle, uint32_t *pending = nullptr,
                        uint32_t timeoutMs = 1000) {
    return queues::next<CAN_EventDev>(handle, timeoutMs, pending);
  }
  bool queueIsEmpty(CAN_DEV_HANDLE handle) { return queues::isEmpty<CAN_EventDev>(handle); }
};

} // namespace device_test
