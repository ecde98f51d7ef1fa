// What the device tests share: a configuration file the driver reads, the
// reserved device, and events released through CAN_DevFreeRxMsg.
#pragma once

#include "cansimu/cansimu.h"
#include "core/SimuDriver.h"
#include "device/SimuDevice.h"
#include "support/LogCapture.h"
#include "support/TempDir.h"
#include "support/XmlFiles.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>

namespace device_test {

constexpr const char *kSerial = "SIMU-0042";

struct FreeDeviceEvent {
  void operator()(CAN_EventDev *event) const { CAN_DevFreeRxMsg(event); }
};
using DeviceEvent = std::unique_ptr<CAN_EventDev, FreeDeviceEvent>;

inline std::string serialSection(const std::string &serial = kSerial) {
  return "<CAN_SERIALNUMBER>" + serial + "</CAN_SERIALNUMBER>";
}
// A configuration naming the device kSerial, plus `extra` sections.
inline ConfigurationFile namedDevice(const std::string &extra = "") {
  return ConfigurationFile().section(serialSection() + extra);
}
const std::string kUnplugged = "<CAN_DEVICESTATE>UNPLUGGED</CAN_DEVICESTATE>";

class DeviceTest : public ::testing::Test {
protected:
  TempDir dir;
  std::string configPath = dir.file("bench.xml");
  LogCapture log;
  long long fileTime = 1000000;
  // Records the exports write into.
  uint8_t detail = 0;
  CAN_ModeDev mode = {};
  CAN_ConfigDev config = {};
  CAN_TensionDev tension = {};
  CAN_VersionDev version = {};
  CAN_TestDev test = {};
  DownloadResult result = {0xEE, 0xEE};

  void TearDown() override { CAN_DrvEnd(); }
  void init(const ConfigurationFile &file) {
    save(file);
    ASSERT_EQ(CAN_DrvInit(configPath.c_str()), E_SUCCESS);
  }
  // Saves the file with a later modification time, unread until the driver's poll.
  void save(const ConfigurationFile &file) {
    file.writeTo(configPath);
    setModificationTime(configPath, ++fileTime);
  }
  void pollDriver() {
    CAN_EventDrv *event = nullptr;
    uint32_t pending = 0;
    EXPECT_EQ(CAN_DrvRxMsg(&event, &pending, 1), E_NO_EVENT);
  }
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

  // The next event; a zeroed record (type 0, no payload) when none came, so
  // that a test can read what it expected without checking for null first.
  DeviceEvent nextEvent(CAN_DEV_HANDLE handle, uint32_t *pending = nullptr,
                        uint32_t timeoutMs = 1000) {
    CAN_EventDev *event = nullptr;
    uint32_t count = 0;
    EXPECT_EQ(CAN_DevRxMsg(handle, &event, &count, timeoutMs), E_SUCCESS);
    if (pending != nullptr)
      *pending = count;
    return DeviceEvent(event ? event : static_cast<CAN_EventDev *>(calloc(1, sizeof *event)));
  }
  bool queueIsEmpty(CAN_DEV_HANDLE handle) {
    CAN_EventDev *event = nullptr;
    uint32_t count = 0;
    const CAN_STATUS status = CAN_DevRxMsg(handle, &event, &count, 1);
    CAN_DevFreeRxMsg(event);
    return status == E_NO_EVENT;
  }
};

} // namespace device_test
