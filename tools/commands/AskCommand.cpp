// ask: the dry run of a scenario: what an ECU answers to a request, right
// now, through a real channel (or the raw frame path) of the library.
#include "Command.h"
#include "Errors.h"
#include "output/Output.h"
#include "session/Bus.h"
#include "session/DeviceSteps.h"
#include "session/LogFollower.h"
#include "session/Session.h"

#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

namespace {

const char kAskDetails[] =
    "Sends each REQUEST (hex, \"22F190\"; words of one byte each, \"22 F1 90\",\n"
    "make one request) to one ECU of the bench CONFIG and\n"
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
    "  --json        one JSON object per request on its own line: the\n"
    "                request, the events read (type, name, resultCode,\n"
    "                frame) and where each ECU's answer came from\n"
    "\n"
    "An ECU that answers \"response pending\" (7F xx 78) is read on until its\n"
    "final answer, up to 5 s. Under each answer of an ECU that keeps a state,\n"
    "\"state\" shows its session, security levels and identifiers after it.\n"
    "\n"
    "Under each answer, \"from\" names the scenario entry that answered\n"
    "(engine.xml:41 22F1?\?) or why none did; the library writes it to its log\n"
    "file, which ask reads (a temporary one unless --log or CANSIMU_LOG names\n"
    "one).\n"
    "\n"
    "Exit status: 0 when every request got an answer, 1 when one did not\n"
    "(or the library refused a call), 2 for a bad request or an unknown ECU.\n";

bool isResponsePending(const std::string &frame) {
  return frame.size() == 6 && frame.compare(0, 2, "7F") == 0 && frame.compare(4, 2, "78") == 0;
}

// The answers to one request: read on while the last one says "response
// pending".
Reading readAnswers(Bus &bus, bool frames) {
  Reading reading = frames ? bus.readPort(kReadMs) : bus.readChannel(kReadMs);
  bus.setQuietMisses(true);
  while (!reading.read.empty() && isResponsePending(reading.read.back().frame)) {
    // A read may end at once on the signal of the record taken before:
    // read again until the ECU's time is up.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(kPendingMs);
    Reading more;
    while (more.read.empty() && std::chrono::steady_clock::now() < deadline)
      more = frames ? bus.readPort(kPendingMs) : bus.readChannel(kPendingMs);
    if (more.read.empty()) {
      std::fprintf(stderr, "< no final answer within %u ms\n", static_cast<unsigned>(kPendingMs));
      break;
    }
    reading.read.insert(reading.read.end(), more.read.begin(), more.read.end());
    reading.events += more.events;
    reading.answers += more.answers;
    reading.status = more.status;
  }
  bus.setQuietMisses(false);
  return reading;
}

std::vector<Bytes> parseRequests(const std::vector<std::string> &texts, bool frames) {
  std::vector<Bytes> requests;
  for (const std::string &text : requestTexts(texts)) {
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
  if (session.start() != E_SUCCESS || reserveDevice(session, true) != E_SUCCESS ||
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
    printError(
        path + " is not an XML file (" +
        (scenario.problem().line > 0 ? "line " + std::to_string(scenario.problem().line) + ": "
                                     : std::string()) +
        scenario.problem().message + "): ECU " + ecu.label() + " answers every request as unknown");
}

std::string jsonString(const std::string &text) {
  std::string out = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\')
      out += '\\';
    out += c;
  }
  return out + "\"";
}

void printJson(const Bytes &request, const Reading &reading,
               const std::vector<std::string> &sources) {
  std::string line = "{\"request\": \"";
  static const char kDigits[] = "0123456789ABCDEF";
  for (const uint8_t byte : request) {
    line += kDigits[byte >> 4];
    line += kDigits[byte & 0x0F];
  }
  line += "\", \"events\": [";
  const char *separator = "";
  for (const ReadEvent &event : reading.read) {
    line += separator;
    separator = ", ";
    line += "{\"type\": " + std::to_string(event.type) + ", \"name\": " + jsonString(event.name);
    if (event.resultCode >= 0)
      line += ", \"resultCode\": " + std::to_string(event.resultCode);
    if (!event.frame.empty() || event.resultCode >= 0)
      line += ", \"frame\": " + jsonString(event.frame);
    line += "}";
  }
  line += "], \"sources\": [";
  separator = "";
  for (const std::string &source : sources) {
    line += separator;
    separator = ", ";
    line += "{\"ecu\": " + jsonString(sourceEcu(source)) +
            ", \"source\": " + jsonString(shownSource(source)) + "}";
  }
  std::printf("%s]}\n", line.c_str());
}

// "10 03, 3E 00": the requests a refusal left unsent.
std::string unsentList(std::vector<Bytes>::const_iterator first,
                       std::vector<Bytes>::const_iterator last) {
  std::string list;
  for (auto request = first; request != last; ++request)
    list += (list.empty() ? "" : ", ") + spacedHex(*request);
  return list;
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
  const bool json = arguments.has("--json");
  const std::vector<std::string> &words = arguments.positional;
  const size_t firstRequest = broadcast ? 1 : 2;
  if (words.size() <= firstRequest)
    throw UsageError(broadcast ? "missing requests: cansimu ask CONFIG --broadcast REQUEST..."
                               : "missing arguments: cansimu ask CONFIG ECU REQUEST...");
  const std::vector<Bytes> requests =
      parseRequests(std::vector<std::string>(words.begin() + firstRequest, words.end()), frames);

  // The log must be named before the session loads the library.
  const ProgramLog log;
  Session session(arguments.library, words[0]);
  Bus bus(session, readBench(session.configuration()), json ? Voice::Json : Voice::Answers);
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
  if (!json)
    printHeading(target(ecu, frames));
  if (ecu != nullptr)
    warnAboutScenario(session.configuration(), *ecu);
  if (!setUp(session, bus, ecu, frames))
    return kExitRefused;

  bool everyAnswered = true;
  LogFollower sources(log.path());
  for (auto request = requests.begin(); request != requests.end(); ++request) {
    sources.skipToEnd();
    const CAN_STATUS sent = frames
                                ? bus.sendFrame(ecu ? ecu->idTxValue : CAN_BROADCAST_ID, *request)
                                : bus.sendRequest(*request);
    if (sent != E_SUCCESS) {
      if (request + 1 != requests.end())
        printError("not sent after that refusal: " + unsentList(request + 1, requests.end()));
      return kExitRefused;
    }
    const Reading reading = readAnswers(bus, frames);
    const Bytes &asked = *request;
    everyAnswered = everyAnswered && reading.answers > 0;
    const std::vector<std::vector<std::string>> lines =
        sources.newLines(std::vector<std::string>{"Answer source: ", "ECU state: "});
    const std::vector<std::string> &found = lines[0];
    if (json) {
      printJson(asked, reading, found);
      continue;
    }
    for (const std::string &source : found)
      printDetail(2, "from " +
                         (ecu == nullptr ? "ECU " + sourceEcu(source) + ": " : std::string()) +
                         shownSource(source));
    // A stateful ECU: its state after the answer.
    for (const std::string &state : lines[1])
      printDetail(2, "state " +
                         (ecu == nullptr ? "ECU " + sourceEcu(state) + ": " : std::string()) +
                         shownState(state));
  }
  return everyAnswered ? kExitDone : kExitRefused;
}

} // namespace

Command askCommand() {
  return {"ask",
          "ask CONFIG ECU REQUEST...",
          "what an ECU answers to hex requests",
          kAskDetails,
          2,
          SIZE_MAX,
          {"--broadcast", "--frame", "--json"},
          runAsk};
}
