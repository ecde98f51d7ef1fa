#include "session/DeviceSteps.h"

#include "output/Output.h"
#include "output/Records.h"

#include <chrono>
#include <cstdio>

std::string waitCall(const char *name, uint32_t timeoutMs) {
  return std::string(name) + "(timeout " + std::to_string(timeoutMs) + " ms)";
}

namespace {
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

// Only an interactive shell cuts waits short: the terminal has echoed ^C
// where the cursor was.
void printCutWait(const char *call, uint32_t timeoutMs, const char *endFifo) {
  std::fputs("\n", stdout);
  printNote(waitCall(call, timeoutMs), std::string("Ctrl-C: ") + endFifo + " ended the wait");
}

namespace {
// Reads one queue until it stays empty, or until `until` arrives with
// nothing behind it, or until Ctrl-C cuts the wait short.
template <class Event, class Read, class Release, class Describe>
unsigned readQueue(const Session &session, const char *call, const char *endFifo,
                   uint32_t timeoutMs, uint32_t until, bool quiet, const Read &read,
                   const Release &release, const std::function<void()> &wake,
                   const Describe &describe) {
  for (unsigned count = 0;; ++count) {
    Event *event = nullptr;
    uint32_t pending = 0;
    bool cut = false;
    const CAN_STATUS status =
        readCancellable(session.wait(), wake, read, release, &event, &pending, cut);
    if (cut) {
      printCutWait(call, timeoutMs, endFifo);
      return count;
    }
    if (status != E_SUCCESS || event == nullptr) {
      if (!quiet)
        printStep(waitCall(call, timeoutMs), status, status == E_NO_EVENT ? "queue empty" : "");
      return count;
    }
    const uint32_t type = event->type;
    if (!quiet)
      printStep(waitCall(call, timeoutMs), status, describe(*event) + left(pending));
    release(event);
    if (type == until && pending == 0)
      return count + 1;
  }
}
} // namespace

unsigned readDeviceEvents(const Session &session, uint32_t timeoutMs, uint32_t until, bool quiet) {
  const DriverApi &api = session.api();
  const CAN_DEV_HANDLE device = session.device();
  return readQueue<CAN_EventDev>(
      session, "CAN_DevRxMsg", "CAN_DevEndFifo", timeoutMs, until, quiet,
      [&](CAN_EventDev **event, uint32_t *pending) {
        return api.DevRxMsg(device, event, pending, timeoutMs);
      },
      [&](CAN_EventDev *event) { api.DevFreeRxMsg(event); }, [&] { api.DevEndFifo(device); },
      [&](const CAN_EventDev &event) {
        session.noteConnection(event.type);
        return describeDeviceEvent(event);
      });
}

unsigned readDriverEvents(const Session &session, uint32_t timeoutMs, bool quiet) {
  const DriverApi &api = session.api();
  return readQueue<CAN_EventDrv>(
      session, "CAN_DrvRxMsg", "CAN_DrvEndFifo", timeoutMs, kAnyEvent, quiet,
      [&](CAN_EventDrv **event, uint32_t *pending) {
        return api.DrvRxMsg(event, pending, timeoutMs);
      },
      [&](CAN_EventDrv *event) { api.DrvFreeRxMsg(event); }, [&] { api.DrvEndFifo(); },
      describeDriverEvent);
}

CAN_STATUS reserveDevice(Session &session, bool quiet, const std::string &name) {
  const CAN_STATUS reserved = session.reserve(quiet, name);
  if (reserved != E_SUCCESS)
    return reserved;
  // The configured connection state reaches a host with its first device
  // read, and a re-read configuration with a driver read before it. Both
  // reads wait 1 ms: what they are for is queued already, or appears within
  // the read itself.
  constexpr uint32_t kStartReadMs = 1;
  readDriverEvents(session, kStartReadMs, quiet);
  readDeviceEvents(session, kStartReadMs, kAnyEvent, quiet);
  return reserved;
}
