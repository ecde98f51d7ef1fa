// info: what the box tells a host about itself, as a small table.
#include "Command.h"
#include "Errors.h"
#include "core/BenchOutputs.h"
#include "files/XmlSource.h"
#include "output/Output.h"
#include "output/Records.h"
#include "platform/CodePage.h"
#include "session/Session.h"

#include <cstdio>
#include <cstdlib>

namespace {

const char kInfoDetails[] =
    "Starts a session with CONFIG and prints what the simulated box reports:\n"
    "its name and state, boot and application firmware, supply voltages, mode\n"
    "and port. A box that the configuration unplugs is reported as such: its\n"
    "records are refused (E_DISCONNECTED) and the exit status is 1.\n"
    "\n"
    "Then the files the library writes for this bench, and who named each:\n"
    "the log (CANSIMU_LOG or the bench's LOGFILE), the bus trace\n"
    "(CANSIMU_TRACE or TRACEFILE) and the session report (CANSIMU_REPORT or\n"
    "REPORTFILE); the variable wins when both name one.\n";

// Rows of the table: a label, then either the value or the refusing status.
void row(const char *label, const std::string &value) {
  std::printf("  %-12s %s\n", label, value.c_str());
}

// Always true: the row says a call was refused.
bool refusedRow(const char *label, const char *call, CAN_STATUS status) {
  row(label, std::string(call) + " answered " + colouredStatus(status));
  return true;
}

// The files the library writes, as it chooses them: the variable first,
// then the bench's element, relative to the bench's folder.
void outputRows(const std::string &configuration) {
  XmlSource bench;
  if (bench.load(configuration) != XmlSource::Outcome::Read)
    return;
  const char *labels[] = {"log", "trace", "report"};
  size_t i = 0;
  for (const BenchOutputs::Output &output :
       BenchOutputs::named(bench.document(), toWideString(configuration.c_str()))) {
    const char *named = std::getenv(output.variable);
    if (named != nullptr && *named != '\0')
      row(labels[i], std::string(named) + " (" + output.variable + ")");
    else if (output.path.length() != 0)
      row(labels[i],
          std::string(toAnsiString(output.path).c_str()) + " (the bench's " + output.element + ")");
    else
      row(labels[i], "none");
    ++i;
  }
}

int runInfo(const Arguments &arguments) {
  Session session(arguments.library, arguments.positional[0]);
  const DriverApi &api = session.api();
  std::printf("%s\n", session.configuration().c_str());
  session.start();

  CAN_EnumList list{0, nullptr};
  const CAN_STATUS listed = api.DevEnumerate(&list);
  if (listed != E_SUCCESS || list.count == 0) {
    refusedRow("device", "CAN_DevEnumerate", listed != E_SUCCESS ? listed : E_NOT_FOUND);
    return kExitRefused;
  }
  const std::string name = fieldText(static_cast<const CAN_EnumDev *>(list.records)->name);
  std::free(list.records);
  CAN_DEV_HANDLE device = nullptr;
  const CAN_STATUS reserved = api.DevReservation(name.c_str(), &device);
  if (reserved != E_SUCCESS) {
    refusedRow("device", "CAN_DevReservation", reserved);
    return kExitRefused;
  }
  // The state the configuration asks for reaches the host with the first
  // device event read, so read the queue once before asking anything.
  CAN_EventDev *event = nullptr;
  uint32_t pending = 0;
  bool connected = true;
  while (api.DevRxMsg(device, &event, &pending, 10) == E_SUCCESS && event != nullptr) {
    if (event->type == DEV_TYPE_DISCONNECTED || event->type == DEV_TYPE_CONNECTED)
      connected = event->type == DEV_TYPE_CONNECTED;
    api.DevFreeRxMsg(event);
  }
  row("device", "\"" + name + "\", " + (connected ? "connected" : "disconnected"));

  bool refused = false;
  CAN_ConfigDev config{};
  const CAN_STATUS configured = api.DevGetConfig(device, &config);
  if (configured == E_SUCCESS) {
    const auto &version = reinterpret_cast<const CAN_VersionDev &>(config);
    row("boot", describeBootVersion(version));
    row("application", describeApplicationVersion(version));
    for (uint32_t i = 0; i < config.count && config.ports != nullptr; ++i)
      row("port", std::to_string(config.ports[i].portNumber) +
                      (config.ports[i].reserved ? ", reserved" : ", free"));
    std::free(config.ports);
  } else {
    refused = refusedRow("firmware", "CAN_DevGetConfig", configured);
  }
  CAN_TensionDev tension{};
  const CAN_STATUS measured = api.DevGetTension(device, &tension);
  if (measured == E_SUCCESS)
    row("voltages", describeTension(tension));
  else
    refused = refusedRow("voltages", "CAN_DevGetTension", measured);
  CAN_ModeDev mode{};
  const CAN_STATUS moded = api.DevGetMode(device, &mode);
  if (moded == E_SUCCESS)
    row("mode", std::to_string(mode.mode) + " (" + modeName(mode.mode) + ")");
  else
    refused = refusedRow("mode", "CAN_DevGetMode", moded);
  api.DevFree(device);
  outputRows(session.configuration());
  return refused ? kExitRefused : kExitDone;
}

} // namespace

Command infoCommand() {
  return {"info",
          "info CONFIG",
          "the box's name, state, firmware, voltages and mode",
          kInfoDetails,
          1,
          1,
          {},
          runInfo};
}
