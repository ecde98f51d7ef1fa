// events: the driver, device and port queues, printed as events arrive.
#include "Command.h"
#include "Errors.h"
#include "output/Output.h"
#include "output/Records.h"
#include "session/Bus.h"
#include "session/DeviceSteps.h"
#include "session/Session.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>

namespace {

const char kEventsDetails[] =
    "Starts a session with CONFIG, reserves the box and its port 96 and prints\n"
    "every driver, device and port event as it arrives, one line each with the\n"
    "time since the start, the queue and the type name; a CAN frame on the\n"
    "port is decoded below its line. Edit and save CONFIG meanwhile (unplug\n"
    "the box with CAN_DEVICESTATE, for example) to watch the host see the\n"
    "change.\n"
    "\n"
    "  --seconds N   stop after N seconds (default: run until Ctrl-C)\n";

// Each queue is polled with this timeout in turn; it bounds how late an
// event is printed.
constexpr uint32_t kPollMs = 50;
// Where the event's text starts on its line: details line up under it.
constexpr size_t kTextColumn = 22;

std::atomic<bool> interrupted{false};

extern "C" void onInterrupt(int) { interrupted = true; }

double parseSeconds(const Arguments &arguments) {
  const auto given = arguments.options.find("--seconds");
  if (given == arguments.options.end())
    return -1;
  char *end = nullptr;
  const double seconds = std::strtod(given->second.c_str(), &end);
  if (given->second.empty() || *end != '\0' || !(seconds > 0) || seconds > 1e6)
    throw UsageError("--seconds needs a positive number, not '" + given->second + "'");
  return seconds;
}

void printEvent(double at, const char *queue, const std::string &text) {
  std::printf("  %8.3f s  %-7s %s\n", at, queue, text.c_str());
  std::fflush(stdout);
}

int runEvents(const Arguments &arguments) {
  const double seconds = parseSeconds(arguments);
  Session session(arguments.library, arguments.positional[0]);
  const DriverApi &api = session.api();
  printStep("CAN_DrvInit(configuration)", session.start(), session.configuration());
  if (reserveDevice(session) != E_SUCCESS)
    return kExitRefused;
  // Without the port (an unplugged box refuses it) the other queues remain.
  Bus bus(session, {}, Voice::Steps);
  bus.reservePort();
  CAN_PRT_HANDLE port = bus.port();
  const char *queues = port != nullptr ? "driver, device and port" : "driver and device";
  if (seconds > 0)
    std::printf("watching the %s queues for %g s\n", queues, seconds);
  else
    std::printf("watching the %s queues until Ctrl-C\n", queues);
  std::fflush(stdout);

  std::signal(SIGINT, onInterrupt);
  const auto began = std::chrono::steady_clock::now();
  const auto elapsed = [&began] {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - began).count();
  };
  unsigned count = 0;
  while (!interrupted && (seconds < 0 || elapsed() < seconds)) {
    // The driver's read also re-reads the configuration when it was saved.
    CAN_EventDrv *driverEvent = nullptr;
    uint32_t pending = 0;
    if (api.DrvRxMsg(&driverEvent, &pending, kPollMs) == E_SUCCESS && driverEvent != nullptr) {
      printEvent(elapsed(), "driver", describeDriverEvent(*driverEvent));
      api.DrvFreeRxMsg(driverEvent);
      ++count;
    }
    CAN_EventDev *deviceEvent = nullptr;
    if (api.DevRxMsg(session.device(), &deviceEvent, &pending, kPollMs) == E_SUCCESS &&
        deviceEvent != nullptr) {
      printEvent(elapsed(), "device", describeDeviceEvent(*deviceEvent));
      api.DevFreeRxMsg(deviceEvent);
      ++count;
    }
    CAN_EventPort *portEvent = nullptr;
    if (port != nullptr && api.PrtRxMsg(port, &portEvent, &pending, kPollMs) == E_SUCCESS &&
        portEvent != nullptr) {
      const EventText text = describePortEvent(*portEvent, kLineWidth - kTextColumn);
      printEvent(elapsed(), "port", text.summary);
      for (const std::string &line : text.details)
        printDetail(kTextColumn, line);
      api.PrtFreeRxMsg(portEvent);
      ++count;
    }
  }
  std::signal(SIGINT, SIG_DFL);
  std::printf("%u event%s\n", count, count == 1 ? "" : "s");
  return kExitDone;
}

} // namespace

Command eventsCommand() {
  return {"events",
          "events CONFIG [--seconds N]",
          "driver, device and port events as they arrive",
          kEventsDetails,
          1,
          1,
          {"--seconds"},
          runEvents};
}
