// A host on a simulated bus: a configuration with its ECUs and their
// scenario files written into the test's directory, the device and its port
// reserved, and the port's events released through CAN_PrtFreeRxMsg.
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

namespace bus_test {

constexpr const char *kSerial = "SIMU-0042";

struct FreePortEvent {
  void operator()(CAN_EventPort *event) const { CAN_PrtFreeRxMsg(event); }
};
using PortEvent = std::unique_ptr<CAN_EventPort, FreePortEvent>;

class BusTest : public ::testing::Test {
protected:
  TempDir dir;
  std::string configPath = dir.file("bench.xml");
  LogCapture log;
  long long fileTime = 1000000;
  CAN_DEV_HANDLE device = nullptr;
  CAN_PRT_HANDLE port = nullptr;
  uint8_t detail = 0;

  void TearDown() override { CAN_DrvEnd(); }

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
  // Saves the configuration with a later time: read at the next driver poll.
  void save(const std::string &sections) {
    bench(sections).writeTo(configPath);
    setModificationTime(configPath, ++fileTime);
  }
  void edit(const std::string &sections) {
    save(sections);
    CAN_EventDrv *event = nullptr;
    uint32_t pending = 0;
    EXPECT_EQ(CAN_DrvRxMsg(&event, &pending, 1), E_NO_EVENT);
  }
  SimuPort &simuPort() { return *SimuDriver::instance()->device->port; }

  // The next port event; a zeroed record when none came within the timeout.
  PortEvent nextEvent(uint32_t timeoutMs = 1000) {
    CAN_EventPort *event = nullptr;
    uint32_t pending = 0;
    EXPECT_EQ(CAN_PrtRxMsg(port, &event, &pending, timeoutMs), E_SUCCESS);
    return PortEvent(event ? event : static_cast<CAN_EventPort *>(calloc(1, sizeof *event)));
  }
  bool portQueueIsEmpty() {
    CAN_EventPort *event = nullptr;
    uint32_t pending = 0;
    const CAN_STATUS status = CAN_PrtRxMsg(port, &event, &pending, 1);
    CAN_PrtFreeRxMsg(event);
    return status == E_NO_EVENT;
  }
};

// The data bytes of a frame event, as hex text.
inline std::string frameHex(const CAN_EventPort &event) {
  static const char digits[] = "0123456789ABCDEF";
  const auto *frame = static_cast<const CAN_FramePort *>(event.data);
  std::string text;
  for (uint32_t i = 0; frame != nullptr && i < frame->length && i < 8; ++i) {
    text += digits[frame->bytes[i] >> 4];
    text += digits[frame->bytes[i] & 0xF];
  }
  return text;
}

} // namespace bus_test
