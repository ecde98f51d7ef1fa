// Device calls shared by the commands: each makes one call through the
// session and prints it as one line with its status and what it answered.
#pragma once

#include "session/Session.h"

#include <cstdint>
#include <string>

// A waiting call as its step line names it: "CAN_DrvRxMsg(timeout 100 ms)".
std::string waitCall(const char *name, uint32_t timeoutMs);

// Session::reserve, then one read of the driver and the device queues, so
// that the state the configuration gives the box (unplugged, say) is the one
// it shows from the first command on. Prints one line per call (`quiet`:
// only a call that fails).
CAN_STATUS reserveDevice(Session &session, bool quiet = false, const std::string &name = "");

CAN_STATUS showVersion(const Session &session, CAN_VersionDev *answer = nullptr);
CAN_STATUS showTension(const Session &session);
// CAN_DevSetMode, printed (`quiet`: only when it fails).
CAN_STATUS setMode(const Session &session, uint32_t mode, bool quiet = false);
CAN_STATUS showMode(const Session &session);
// CAN_DevHC16Reset, with how long the box took.
CAN_STATUS resetProcessor(const Session &session);

// No type stops the reading early.
constexpr uint32_t kAnyEvent = UINT32_MAX;

// Reads device events one line each until the queue stays empty for
// `timeoutMs` (that last wait printed too), or until an event of type
// `until` has arrived and nothing else is queued, or until Ctrl-C cuts the
// session's wait short. `quiet`: prints nothing. Returns the number read.
unsigned readDeviceEvents(const Session &session, uint32_t timeoutMs, uint32_t until = kAnyEvent,
                          bool quiet = false);
// The same for the driver queue (which also re-reads a changed configuration).
unsigned readDriverEvents(const Session &session, uint32_t timeoutMs, bool quiet = false);
// The line of a wait that Ctrl-C ended.
void printCutWait(const char *call, uint32_t timeoutMs, const char *endFifo);
