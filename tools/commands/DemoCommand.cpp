// demo: a guided host session over the example bench, one line per call.
#include "Command.h"
#include "DeviceSteps.h"
#include "Errors.h"
#include "ExampleBench.h"
#include "FirmwareFlash.h"
#include "Output.h"
#include "Records.h"
#include "Session.h"

#include <cstdio>

namespace {

const char kDetails[] =
    "A guided session with the simulated interface box, as a diagnostic host\n"
    "runs it: initialise the driver with CONFIG, list and reserve the box, read\n"
    "its versions and voltages, set its mode, reset its processor and read the\n"
    "reset event, let a test harness inject a failure, download the example\n"
    "application image with a live progress bar (a second thread reads the\n"
    "progress events while the download blocks), then read the new versions.\n"
    "\n"
    "CONFIG defaults to the example bench (examples/bench.xml of the source\n"
    "tree, or the copy built into the program when the tree is not there).\n"
    "The firmware image always comes from the example bench.\n";

// Stops the demo at a call that did not answer E_SUCCESS.
struct DemoStopped {};

void expectSuccess(CAN_STATUS status) {
  if (status != E_SUCCESS)
    throw DemoStopped{};
}

void runSteps(Session &session, const ExampleBench &bench) {
  const DriverApi &api = session.api();
  const CAN_STATUS initialised = session.start();
  printStep("CAN_DrvInit(configuration)", initialised, "configuration read");
  expectSuccess(initialised);
  expectSuccess(session.reserveDevice());
  expectSuccess(showVersion(session));
  expectSuccess(showTension(session));
  expectSuccess(setMode(session, 0));
  expectSuccess(showMode(session));
  expectSuccess(resetProcessor(session));
  readDeviceEvents(session, 1000, DEV_TYPE_RESET);

  // What a test harness beside the host does: the next call fails on demand.
  api.setNextCANStatus("CAN_DevGetTension", E_DISCONNECTED, 0);
  printNote("setNextCANStatus(\"CAN_DevGetTension\", 7)", "harness arms a failure");
  CAN_TensionDev tension{};
  printStep("CAN_DevGetTension()", api.DevGetTension(session.device(), &tension),
            "answered by the harness");
  expectSuccess(showTension(session));

  const FlashOutcome flashed =
      flashFirmware(session, bench.file("application.bin"), "application.bin");
  expectSuccess(flashed.status);
  expectSuccess(showVersion(session));
  expectSuccess(session.freeDevice());
}

int runDemo(const Arguments &arguments) {
  const ExampleBench bench;
  const std::string configuration =
      arguments.positional.empty() ? bench.file("bench.xml") : arguments.positional[0];
  Session session(arguments.library, configuration);

  printHeading("cansimu demo: a host session with the simulated interface box");
  std::printf("  library        %s\n  configuration  %s%s\n\n", session.libraryPath().c_str(),
              session.configuration().c_str(),
              arguments.positional.empty() && bench.embedded() ? " (built-in bench)" : "");
  int exitStatus = kExitDone;
  try {
    runSteps(session, bench);
  } catch (const DemoStopped &) {
    exitStatus = kExitRefused;
  }
  session.end();
  printNote("CAN_DrvEnd()", "driver destroyed");
  if (exitStatus != kExitDone)
    printError("the demo stopped: the last call did not succeed");
  return exitStatus;
}

} // namespace

Command demoCommand() {
  return {"demo", "demo [CONFIG]", "a guided session over the example bench", kDetails, 0, 1,
          {},     runDemo};
}
