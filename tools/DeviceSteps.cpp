#include "DeviceSteps.h"

#include "Output.h"
#include "Records.h"

#include <chrono>

namespace {
std::string waitCall(const char *name, uint32_t timeoutMs) {
  return std::string(name) + "(timeout " + std::to_string(timeoutMs) + " ms)";
}
std::string left(uint32_t pending) { return ", " + std::to_string(pending) + " left"; }
} // namespace

CAN_STATUS showVersion(const Session &session, CAN_VersionDev *answer) {
  CAN_VersionDev version{};
  const CAN_STATUS status = session.api().DevGetVersion(session.device(), &version);
  printStep("CAN_DevGetVersion()", status, status == E_SUCCESS ? describeVersions(version) : "");
  if (answer != nullptr)
    *answer = version;
  return status;
}

CAN_STATUS showTension(const Session &session) {
  CAN_TensionDev tension{};
  const CAN_STATUS status = session.api().DevGetTension(session.device(), &tension);
  printStep("CAN_DevGetTension()", status, status == E_SUCCESS ? describeTension(tension) : "");
  return status;
}

CAN_STATUS setMode(const Session &session, uint32_t mode, bool quiet) {
  uint8_t detail = 0;
  const CAN_STATUS status = session.api().DevSetMode(session.device(), mode, &detail);
  std::string note = status == E_SUCCESS ? describeMode(mode) : "";
  if (detail != 0)
    note += (note.empty() ? "" : ", ") + std::string("detail ") + std::to_string(detail);
  if (!quiet || status != E_SUCCESS)
    printStep("CAN_DevSetMode(" + std::to_string(mode) + ")", status, note);
  return status;
}

CAN_STATUS showMode(const Session &session) {
  CAN_ModeDev mode{};
  const CAN_STATUS status = session.api().DevGetMode(session.device(), &mode);
  printStep("CAN_DevGetMode()", status, status == E_SUCCESS ? describeMode(mode.mode) : "");
  return status;
}

CAN_STATUS resetProcessor(const Session &session) {
  const auto began = std::chrono::steady_clock::now();
  const CAN_STATUS status = session.api().DevHC16Reset(session.device());
  const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(
      std::chrono::steady_clock::now() - began);
  printStep("CAN_DevHC16Reset()", status, "reset, blocked " + std::to_string(took.count()) + " ms");
  return status;
}

unsigned readDeviceEvents(const Session &session, uint32_t timeoutMs, uint32_t until) {
  const DriverApi &api = session.api();
  for (unsigned read = 0;; ++read) {
    CAN_EventDev *event = nullptr;
    uint32_t pending = 0;
    const CAN_STATUS status = api.DevRxMsg(session.device(), &event, &pending, timeoutMs);
    if (status != E_SUCCESS || event == nullptr) {
      printStep(waitCall("CAN_DevRxMsg", timeoutMs), status,
                status == E_NO_EVENT ? "queue empty" : "");
      return read;
    }
    const uint32_t type = event->type;
    printStep(waitCall("CAN_DevRxMsg", timeoutMs), status,
              describeDeviceEvent(*event) + left(pending));
    api.DevFreeRxMsg(event);
    if (type == until && pending == 0)
      return read + 1;
  }
}

unsigned readDriverEvents(const Session &session, uint32_t timeoutMs) {
  const DriverApi &api = session.api();
  for (unsigned read = 0;; ++read) {
    CAN_EventDrv *event = nullptr;
    uint32_t pending = 0;
    const CAN_STATUS status = api.DrvRxMsg(&event, &pending, timeoutMs);
    if (status != E_SUCCESS || event == nullptr) {
      printStep(waitCall("CAN_DrvRxMsg", timeoutMs), status,
                status == E_NO_EVENT ? "queue empty" : "");
      return read;
    }
    printStep(waitCall("CAN_DrvRxMsg", timeoutMs), status,
              describeDriverEvent(*event) + left(pending));
    api.DrvFreeRxMsg(event);
  }
}
