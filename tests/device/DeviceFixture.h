// What the device tests share: a configuration file in a fresh directory,
// the host's calls to read it and to reserve the device, and device events
// that release themselves through CAN_DevFreeRxMsg.
#pragma once

#include "cansimu/cansimu.h"
#include "core/SimuDriver.h"
#include "device/SimuDevice.h"
#include "support/LogCapture.h"
#include "support/TempDir.h"
#include "support/XmlFiles.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace device_test {

constexpr const char *kSerial = "SIMU-0042";

// A device event owned by the test, released as a host releases it.
struct FreeDeviceEvent {
  void operator()(CAN_EventDev *event) const { CAN_DevFreeRxMsg(event); }
};
using DeviceEvent = std::unique_ptr<CAN_EventDev, FreeDeviceEvent>;

inline std::string serialSection(const std::string &serial = kSerial) {
  return "<CAN_SERIALNUMBER>" + serial + "</CAN_SERIALNUMBER>";
}

inline std::string stateSection(const std::string &state) {
  return "<CAN_DEVICESTATE>" + state + "</CAN_DEVICESTATE>";
}

// A configuration naming the device kSerial, plus the given sections.
inline ConfigurationFile namedDevice(const std::string &extra = "") {
  ConfigurationFile file;
  file.section(serialSection());
  if (!extra.empty())
    file.section(extra);
  return file;
}

class DeviceTest : public ::testing::Test {
protected:
  TempDir dir;
  std::string configPath = dir.file("bench.xml");
  LogCapture log;
  long long fileTime = 1000000;

  void TearDown() override { CAN_DrvEnd(); }

  // Writes the configuration and has the driver read it.
  void init(const ConfigurationFile &file) {
    save(file);
    ASSERT_EQ(CAN_DrvInit(configPath.c_str()), E_SUCCESS);
  }
  // Saves an edited configuration with a later modification time.
  void save(const ConfigurationFile &file) {
    file.writeTo(configPath);
    setModificationTime(configPath, ++fileTime);
  }
  // The host's driver poll, which re-reads an edited configuration.
  void pollDriver() {
    CAN_EventDrv *event = nullptr;
    uint32_t pending = 0;
    EXPECT_EQ(CAN_DrvRxMsg(&event, &pending, 1), E_NO_EVENT);
  }
  // Saves the edit and lets the driver read it.
  void edit(const ConfigurationFile &file) {
    save(file);
    pollDriver();
  }
  CAN_DEV_HANDLE reserve(const char *name = kSerial) {
    CAN_DEV_HANDLE handle = nullptr;
    EXPECT_EQ(CAN_DevReservation(name, &handle), E_SUCCESS);
    return handle;
  }
  SimuDevice &simuDevice() { return *SimuDriver::instance()->device; }

  // The next device event, or null (with a failure) when none arrives.
  DeviceEvent nextEvent(CAN_DEV_HANDLE handle, uint32_t *pending = nullptr,
                        uint32_t timeoutMs = 1000) {
    CAN_EventDev *event = nullptr;
    uint32_t count = 0;
    EXPECT_EQ(CAN_DevRxMsg(handle, &event, &count, timeoutMs), E_SUCCESS);
    if (pending != nullptr)
      *pending = count;
    return DeviceEvent(event);
  }
  // True when the device queue stays empty for a short wait.
  bool queueIsEmpty(CAN_DEV_HANDLE handle) {
    CAN_EventDev *event = nullptr;
    uint32_t count = 0;
    const CAN_STATUS status = CAN_DevRxMsg(handle, &event, &count, 1);
    CAN_DevFreeRxMsg(event);
    return status == E_NO_EVENT;
  }
};

} // namespace device_test
