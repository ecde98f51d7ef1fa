// A host on a simulated bus: a configuration with its ECUs and their
// scenario files written into the test's directory, the device and its port
// reserved, and the port's events released through CAN_PrtFreeRxMsg.
#pragma once

#include "cansimu/cansimu.h"
#include "core/SimuDriver.h"
#include "device/SimuDevice.h"
#include "support/LogCapture.h"
#include "support/Queues.h"
#include "support/TempDir.h"
#include "support/XmlFiles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace bus_test {

constexpr const char *kSerial = "SIMU-0042";

using PortEvent = queues::Owned<CAN_EventPort>;

// A driver reading a configuration file the test writes into its own
// directory; ended after each test.
class DriverTest : public ::testing::Test {
protected:
  TempDir dir;
  std::string configPath = dir.file("bench.xml");
  LogCapture log;
  long long fileTime = 1000000;
  uint8_t detail = 0;

  void TearDown() override { CAN_DrvEnd(); }
  // Saves the configuration with a later time: read at the next driver poll.
  void saveFile(const ConfigurationFile &file) {
    file.writeTo(configPath);
    setModificationTime(configPath, ++fileTime);
  }
  // A host's poll: it re-reads an edited configuration, then times out.
  void pollDriver() { EXPECT_TRUE(queues::isEmpty<CAN_EventDrv>(nullptr)); }
};

class BusTest : public DriverTest {
protected:
  CAN_DEV_HANDLE device = nullptr;
  CAN_PRT_HANDLE port = nullptr;

  // A UCE element whose scenario is written as `name`.xml (no file for an
  // empty name: the scenario attribute is then empty).
  std::string ecu(const std::string &idTx, const std::string &idRx, const ScenarioFile &scenario,
                  const std::string &name, const std::string &address = "7A") {
    std::string path;
    if (!name.empty())
      path = scenario.writeTo(dir.file(name + ".xml"));
    return "<UCE scenario='" + path + "' targetAddress='" + address + "' idRx='" + idRx +
           "' idTx='" + idTx + "'/>";
  }
  ConfigurationFile bench(const std::string &sections) {
    return ConfigurationFile().section("<CAN_SERIALNUMBER>" + std::string(kSerial) +
                                       "</CAN_SERIALNUMBER>" + sections);
  }
  // Reads the configuration, reserves the device and the port, sets `mode`.
  void start(const std::string &sections, uint32_t mode = 1) {
    save(sections);
    ASSERT_EQ(CAN_DrvInit(configPath.c_str()), E_SUCCESS);
    ASSERT_EQ(CAN_DevReservation(kSerial, &device), E_SUCCESS);
    ASSERT_EQ(CAN_PrtReservation(device, 96, &port), E_SUCCESS);
    ASSERT_EQ(CAN_DevSetMode(device, mode, &detail), E_SUCCESS);
  }
  void save(const std::string &sections) { saveFile(bench(sections)); }
  void edit(const std::string &sections) {
    save(sections);
    pollDriver();
  }
  SimuPort &simuPort() { return *SimuDriver::instance()->device->port; }

  // The next port event; a zeroed record when none came within the timeout.
  PortEvent nextEvent(uint32_t timeoutMs = 1000) {
    return queues::next<CAN_EventPort>(port, timeoutMs);
  }
  bool portQueueIsEmpty() { return queues::isEmpty<CAN_EventPort>(port); }
};

// The data bytes of a frame event, as hex text.
inline std::string frameHex(const CAN_EventPort &event) {
  const auto *frame = static_cast<const CAN_FramePort *>(event.data);
  return frame == nullptr ? "" : queues::hexOf(frame->bytes, std::min<uint32_t>(frame->length, 8));
}

// A raw frame to `canId` with the bytes given (8 at most are kept).
inline CAN_FramePort frameTo(uint32_t canId, std::vector<uint8_t> bytes) {
  CAN_FramePort frame = {};
  frame.canId = canId;
  frame.length = static_cast<uint32_t>(bytes.size());
  for (size_t i = 0; i < bytes.size() && i < 8; ++i)
    frame.bytes[i] = bytes[i];
  return frame;
}

} // namespace bus_test
