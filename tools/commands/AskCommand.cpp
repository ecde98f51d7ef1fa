// ask: the dry run of a scenario: what an ECU answers to a request, right
// now, through a real channel (or the raw frame path) of the library.
#include "Bus.h"
#include "Command.h"
#include "DeviceSteps.h"
#include "Errors.h"
#include "Output.h"
#include "Session.h"

#include <cstdio>

namespace {

const char kDetails[] = "Sends each REQUEST (hex, \"22F190\") to one ECU of the bench CONFIG and\n"
                        "prints each answer decoded: event type, result code, the frame in hex\n"
                        "with its text, the service and a negative response's code by name.\n"
                        "ECU is the ECU's targetAddress, its idTx or its scenario file's name\n"
                        "without extension (\"10\", \"7E0\", \"engine\"), tried in that order.\n"
                        "\n"
                        "The request goes as a host sends it: port 96 in mode 1, an association\n"
                        "table built from the bench's UCE elements, a one-to-one channel to the\n"
                        "ECU, its session opened, CAN_ChnSendDiag.\n"
                        "\n"
                        "  --broadcast   ask every ECU on a broadcast channel (no ECU argument)\n"
                        "  --frame       send raw CAN frames (CAN_PrtSendTrame, mode 2) to the\n"
                        "                ECU's idTx, or to 7D0 with --broadcast; at most 8 bytes\n"
                        "\n"
                        "Exit status: 0 when every request got an answer, 1 when one did not\n"
                        "(or the library refused a call), 2 for a bad request or an unknown ECU.\n";

// Answers are queued before the request's call returns: only a request
// without any answer waits this long.
constexpr uint32_t kReadMs = 100;
constexpr size_t kFrameBytes = 8;

std::vector<Bytes> parseRequests(const std::vector<std::string> &texts, bool frames) {
  std::vector<Bytes> requests;
  for (const std::string &text : texts) {
    Bytes bytes;
    std::string why;
    if (!parseHexBytes(text, bytes, why))
      throw UsageError("request '" + text + "' " + why);
    if (frames && bytes.size() > kFrameBytes)
      throw UsageError("request '" + text + "' is longer than a CAN frame (8 bytes)");
    requests.push_back(bytes);
  }
  return requests;
}

// Port, mode and channel set up quietly; only a refusal is printed.
bool setUp(Session &session, Bus &bus, const BenchEcu *ecu, bool frames) {
  if (session.start() != E_SUCCESS || session.reserveDevice(true) != E_SUCCESS ||
      bus.reservePort() != E_SUCCESS || setMode(session, frames ? 2 : 1, true) != E_SUCCESS)
    return false;
  if (frames)
    return true;
  if (bus.loadAssocTable() != E_SUCCESS || bus.createChannel(ecu) != E_SUCCESS ||
      bus.openSession() != E_SUCCESS)
    return false;
  // A broadcast session's opening sends its (empty) start frame.
  bus.drainChannel();
  return true;
}

// An ECU whose scenario cannot be read never answers, and one whose
// scenario is no XML answers every request as unknown: worth a word first.
void warnAboutScenario(const std::string &bench, const BenchEcu &ecu) {
  if (ecu.scenario.empty())
    return printError("ECU " + ecu.label() + " has no scenario: it never answers");
  const std::string path = scenarioPath(bench, ecu.scenario);
  XmlSource scenario;
  const XmlSource::Outcome outcome = scenario.load(path);
  if (outcome == XmlSource::Outcome::Unreadable)
    printError("cannot read the scenario " + path + ": ECU " + ecu.label() + " never answers");
  else if (outcome == XmlSource::Outcome::NotXml)
    printError(path + " is not an XML file: ECU " + ecu.label() +
               " answers every request as unknown");
}

// The heading: whom the requests go to, and how.
std::string target(const BenchEcu *ecu, bool frames) {
  if (ecu == nullptr)
    return frames ? "every ECU, raw frames on 7D0" : "every ECU, on a broadcast channel";
  const std::string ids = canIdText(ecu->idTxValue) + "/" + canIdText(ecu->idRxValue);
  return "ECU " + ecu->label() + (frames ? ", raw frames on " : ", one-to-one channel on ") + ids;
}

int runAsk(const Arguments &arguments) {
  const bool broadcast = arguments.has("--broadcast");
  const bool frames = arguments.has("--frame");
  const std::vector<std::string> &words = arguments.positional;
  const size_t firstRequest = broadcast ? 1 : 2;
  if (words.size() <= firstRequest)
    throw UsageError(broadcast ? "missing requests: cansimu ask CONFIG --broadcast REQUEST..."
                               : "missing arguments: cansimu ask CONFIG ECU REQUEST...");
  const std::vector<Bytes> requests =
      parseRequests(std::vector<std::string>(words.begin() + firstRequest, words.end()), frames);

  Session session(arguments.library, words[0]);
  Bus bus(session, readBench(session.configuration()), Voice::Answers);
  if (!hasEcus(bus.ecus()))
    throw SetupError(words[0] + " has no usable UCE element: no ECU to ask");
  const BenchEcu *ecu = nullptr;
  if (!broadcast) {
    ecu = findEcu(bus.ecus(), words[1]);
    if (ecu == nullptr)
      throw UsageError("unknown ECU '" + words[1] + "' (the bench's ECUs: " + ecuList(bus.ecus()) +
                       ")");
    if (!ecu->addressed && !frames)
      throw SetupError("ECU " + ecu->label() +
                       " has no one-byte targetAddress: no channel reaches it (try --frame)");
  }
  printHeading(target(ecu, frames));
  if (ecu != nullptr)
    warnAboutScenario(session.configuration(), *ecu);
  if (!setUp(session, bus, ecu, frames))
    return kExitRefused;

  bool everyAnswered = true;
  for (const Bytes &request : requests) {
    const CAN_STATUS sent = frames ? bus.sendFrame(ecu ? ecu->idTxValue : CAN_BROADCAST_ID, request)
                                   : bus.sendRequest(request);
    if (sent != E_SUCCESS)
      return kExitRefused;
    const Reading reading = frames ? bus.readPort(kReadMs) : bus.readChannel(kReadMs);
    everyAnswered = everyAnswered && reading.answers > 0;
  }
  return everyAnswered ? kExitDone : kExitRefused;
}

} // namespace

Command askCommand() {
  return {"ask",
          "ask CONFIG ECU REQUEST...",
          "what an ECU answers to hex requests",
          kDetails,
          2,
          SIZE_MAX,
          {"--broadcast", "--frame"},
          runAsk};
}
