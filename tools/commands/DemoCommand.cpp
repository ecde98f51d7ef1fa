// demo: a guided host session over the example bench, one line per call:
// the box first, then a diagnostic session on its port.
#include "Command.h"
#include "Errors.h"
#include "files/ExampleBench.h"
#include "output/Output.h"
#include "output/Records.h"
#include "session/Bus.h"
#include "session/DeviceSteps.h"
#include "session/FirmwareFlash.h"
#include "session/Session.h"

#include <chrono>
#include <cstdio>

namespace {

const char kDemoDetails[] =
    "A guided session with the simulated interface box, as a diagnostic host\n"
    "runs it, one line per call with its status and what came back.\n"
    "\n"
    "The box: initialise the driver with CONFIG, reserve the box, read its\n"
    "versions and voltages, reset its processor, let a test harness inject a\n"
    "failure, download the example application image with a live progress bar\n"
    "(a second thread reads the progress events while the download blocks).\n"
    "\n"
    "The bus: reserve port 96, load an association table built from the\n"
    "bench's UCE elements, open a one-to-one channel to the first ECU and send\n"
    "it requests (a session, the VIN, a request it does not know, a typed\n"
    "failure); then a broadcast channel whose tester-present start frame\n"
    "reaches every ECU; then a raw CAN frame in mode 2.\n"
    "\n"
    "The flashing ECU (examples/flashing.xml, only with the example bench): a\n"
    "programming session, security access, a fingerprint written, an erase\n"
    "that answers \"response pending\" first, a download, a checksum and a\n"
    "reset, from an ECU that keeps a state.\n"
    "\n"
    "CONFIG defaults to the example bench (examples/bench.xml of the source\n"
    "tree, or the copy built into the program when the tree is not there).\n"
    "The firmware image always comes from the example bench.\n";

// The requests of the one-to-one part: an extended session, the VIN, a
// service the scenario does not know, an answer the scenario types.
const char *const kRequests[] = {"1003", "22F190", "280301", "22F195"};
const char kTesterPresent[] = "3E00";
// What a flashing application sends the example flashing ECU, in order.
const char *const kFlashingRequests[] = {"1003",
                                         "1002",
                                         "2711",
                                         "271245746716",
                                         "2EF15A010203040506070809",
                                         "3101FF00",
                                         "3400440001000000FF00",
                                         "3601AABBCCDD",
                                         "3602EEFF0011",
                                         "37",
                                         "3101FF01",
                                         "1101"};
const char kFrameRequest[] = "22F190";

// Stops the demo at a call that did not answer E_SUCCESS.
struct DemoStopped {};

void expectSuccess(CAN_STATUS status) {
  if (status != E_SUCCESS)
    throw DemoStopped{};
}

Bytes bytesOf(const char *hex) {
  Bytes bytes;
  std::string why;
  parseHexBytes(hex, bytes, why);
  return bytes;
}

void runDevicePart(Session &session, const ExampleBench &bench) {
  const DriverApi &api = session.api();
  printHeading("The box: versions, voltages, a reset, an injected failure, a download");
  const CAN_STATUS initialised = session.start();
  printStep("CAN_DrvInit(configuration)", initialised, "configuration read");
  expectSuccess(initialised);
  expectSuccess(reserveDevice(session));
  expectSuccess(showVersion(session));
  expectSuccess(showTension(session));
  expectSuccess(setMode(session, 0));
  expectSuccess(showMode(session));
  expectSuccess(resetProcessor(session));
  readDeviceEvents(session, 1000, DEV_TYPE_RESET);

  // What a test harness beside the host does: the next call fails on demand.
  api.setNextCANStatus("CAN_DevGetTension", E_DISCONNECTED, 0);
  printNote("setNextCANStatus(\"CAN_DevGetTension\", 7)", "the harness arms a failure");
  CAN_TensionDev tension{};
  printStep("CAN_DevGetTension()", api.DevGetTension(session.device(), &tension),
            "answered by the harness");
  expectSuccess(showTension(session));

  const FlashOutcome flashed =
      flashFirmware(session, bench.file("application.bin"), "application.bin");
  expectSuccess(flashed.status);
  expectSuccess(showVersion(session));
}

void runChannelPart(Session &session, Bus &bus, const BenchEcu &ecu) {
  printHeading("\nPort 96, mode 1: a one-to-one channel to ECU " + ecu.label());
  expectSuccess(bus.reservePort());
  expectSuccess(setMode(session, 1));
  expectSuccess(bus.loadAssocTable());
  expectSuccess(bus.createChannel(&ecu));
  expectSuccess(bus.openSession());
  for (const char *request : kRequests) {
    expectSuccess(bus.sendRequest(bytesOf(request)));
    bus.readChannel(kReadMs);
  }
  expectSuccess(bus.closeSession());
  expectSuccess(bus.freeChannel());
}

void runBroadcastPart(Bus &bus) {
  printHeading("\nA broadcast channel: its tester-present start frame reaches every ECU");
  expectSuccess(bus.createChannel(nullptr, bytesOf(kTesterPresent)));
  expectSuccess(bus.openSession());
  bus.readChannel(kReadMs);
  expectSuccess(bus.closeSession());
  expectSuccess(bus.freeChannel());
}

void runFramePart(Session &session, Bus &bus, const BenchEcu &ecu) {
  printHeading("\nMode 2: a raw CAN frame to " + canIdText(ecu.idTxValue) +
               "; a frame carries at most 8 bytes");
  expectSuccess(setMode(session, 2));
  expectSuccess(bus.sendFrame(ecu.idTxValue, bytesOf(kFrameRequest)));
  bus.readPort(kReadMs);
  expectSuccess(bus.freePort());
  expectSuccess(session.freeDevice());
}

bool isResponsePending(const ReadEvent &event) {
  return event.frame.size() == 6 && event.frame.compare(0, 2, "7F") == 0 &&
         event.frame.compare(4, 2, "78") == 0;
}

// The answers to one request: each read until an answer comes (a read may
// end at once on the signal of the record taken before, and an answer may
// be delayed), on after each "response pending" until the final one.
void readUntilFinal(Bus &bus) {
  bus.setQuietMisses(true);
  Reading reading;
  do {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(kPendingMs);
    reading = Reading();
    while (reading.read.empty() && std::chrono::steady_clock::now() < deadline)
      reading = bus.readChannel(kPendingMs);
  } while (!reading.read.empty() && isResponsePending(reading.read.back()));
  bus.setQuietMisses(false);
  if (reading.read.empty())
    printNote("CAN_ChnRxMsg()", "no answer within 5 s");
}

// The example flashing ECU on its own bench: a whole flashing sequence.
void runFlashingPart(const Arguments &arguments, const ExampleBench &bench) {
  Session session(arguments.library, bench.file("flashing.xml"));
  Bus bus(session, readBench(session.configuration()), Voice::Steps);
  const BenchEcu *ecu = bus.ecus().empty() ? nullptr : &bus.ecus().front();
  if (ecu == nullptr)
    throw DemoStopped{};
  printHeading("\nflashing.xml: reprogramming ECU " + ecu->label() +
               ", which keeps a session, a security level and its identifiers");
  expectSuccess(session.start());
  expectSuccess(reserveDevice(session, true));
  expectSuccess(bus.reservePort());
  expectSuccess(setMode(session, 1));
  expectSuccess(bus.loadAssocTable());
  expectSuccess(bus.createChannel(ecu));
  expectSuccess(bus.openSession());
  for (const char *request : kFlashingRequests) {
    expectSuccess(bus.sendRequest(bytesOf(request)));
    readUntilFinal(bus);
  }
  expectSuccess(bus.closeSession());
  expectSuccess(bus.freeChannel());
  session.end();
  printNote("CAN_DrvEnd()", "driver destroyed");
}

// The ECU the one-to-one channel talks to: the bench's first ECU that an
// association table can name.
const BenchEcu &firstAddressedEcu(const Bus &bus, const std::string &configuration) {
  for (const BenchEcu &ecu : bus.ecus())
    if (ecu.usable() && ecu.addressed)
      return ecu;
  throw SetupError(configuration +
                   " has no UCE element with a one-byte targetAddress: no ECU to talk to");
}

int runDemo(const Arguments &arguments) {
  const ExampleBench bench;
  const std::string configuration =
      arguments.positional.empty() ? bench.file("bench.xml") : arguments.positional[0];
  Session session(arguments.library, configuration);
  Bus bus(session, readBench(session.configuration()), Voice::Steps);
  const BenchEcu &ecu = firstAddressedEcu(bus, configuration);

  printHeading("cansimu demo: a host session with the simulated interface box");
  std::printf("  library        %s\n  configuration  %s%s\n\n", session.libraryPath().c_str(),
              session.configuration().c_str(),
              arguments.positional.empty() && bench.embedded() ? " (built-in bench)" : "");
  int exitStatus = kExitDone;
  try {
    runDevicePart(session, bench);
    runChannelPart(session, bus, ecu);
    runBroadcastPart(bus);
    runFramePart(session, bus, ecu);
  } catch (const DemoStopped &) {
    exitStatus = kExitRefused;
  }
  session.end();
  printNote("CAN_DrvEnd()", "driver destroyed");
  // The flashing ECU belongs to the example bench.
  if (exitStatus == kExitDone && arguments.positional.empty()) {
    try {
      runFlashingPart(arguments, bench);
    } catch (const DemoStopped &) {
      exitStatus = kExitRefused;
    }
  }
  if (exitStatus != kExitDone)
    printError("the demo stopped: the last call did not succeed");
  return exitStatus;
}

} // namespace

Command demoCommand() {
  return {"demo", "demo [CONFIG]", "a guided session over the example bench", kDemoDetails, 0, 1,
          {},     runDemo};
}
