// shell: an interactive console over one session, one command a line; the
// same commands read from a file or a pipe script a session.
#include "Command.h"
#include "Errors.h"
#include "names/InjectionNames.h"
#include "names/StatusNames.h"
#include "output/Output.h"
#include "session/Bus.h"
#include "session/DeviceSteps.h"
#include "session/FirmwareFlash.h"
#include "session/LogFollower.h"
#include "session/Session.h"
#include "system/Console.h"

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

const char kShellDetails[] =
    "Starts a session with CONFIG and reads commands, one a line:\n"
    "\n"
    "  reserve [NAME]          list the devices and reserve the box (or reserve\n"
    "                          NAME without listing), then read the driver and\n"
    "                          device queues once: an unplugged box shows\n"
    "  mode [N]                set the box's mode to N, or read it\n"
    "  version                 read the firmware versions\n"
    "  voltages                read the supply voltages\n"
    "  reset                   reset the box's processor (blocks 500 ms)\n"
    "  flash IMAGE             download a firmware image, with progress\n"
    "  port                    reserve port 96\n"
    "  assoc                   load the association table built from the\n"
    "                          bench's UCE elements (mode 1)\n"
    "  baud                    detect the baud rate (mode 1)\n"
    "  measures                read the bus voltages (mode 3)\n"
    "  channel ECU             create and configure a one-to-one channel to the\n"
    "                          ECU (its targetAddress, idTx or scenario name)\n"
    "  channel broadcast [HEX] create and configure a broadcast channel to every\n"
    "                          free ECU, with HEX as its start frame\n"
    "  open                    open the channel's session\n"
    "  send HEX...             send requests on the channel, print the answers:\n"
    "                          each word is one request (send 22F190 1003),\n"
    "                          but words of one byte each are one (22 F1 90)\n"
    "  close                   close the channel's session\n"
    "  frame ID HEX            send a raw CAN frame (mode 2, 8 bytes at most) to\n"
    "                          identifier ID (at most 1FFFFFFF; 7D0: every\n"
    "                          ECU), print the answers\n"
    "  free                    free the channel, else the port, else the box\n"
    "  rx [MS]                 read the driver, device, port and channel events\n"
    "                          until a queue stays empty MS ms (100)\n"
    "  inject NAME STATUS [DETAIL]\n"
    "                          setNextCANStatus: arm STATUS for the next call of\n"
    "                          the export NAME, or for CAN_DrvRxMsg,\n"
    "                          CAN_DevRxMsg and CAN_PrtRxMsg queue an event of\n"
    "                          type STATUS. Names and types are checked against\n"
    "                          the library's; a name still armed keeps its first\n"
    "                          arming (the library drops the second). STATUS and\n"
    "                          DETAIL: numbers or names (E_BUSOFF,\n"
    "                          DEV_TYPE_RESET, PRT_TYPE_FRAME)\n"
    "  expect STATUS           the last call answered STATUS (by name or number;\n"
    "                          for a command of several calls, the first that\n"
    "                          did not answer E_SUCCESS): a script that meets a\n"
    "                          mismatch stops with exit status 1\n"
    "  expect rx TYPE [HEX]    the last answer read (send, frame, rx) has the\n"
    "                          event type TYPE (name or number) and, when HEX\n"
    "                          is given, those frame bytes; a final '*' accepts\n"
    "                          any rest (62F190*)\n"
    "  sleep MS                wait MS milliseconds (at most an hour)\n"
    "  ecu                     the last state (session, security levels,\n"
    "                          identifiers) of each ECU that keeps one; the\n"
    "                          answers of such an ECU show it too\n"
    "  help                    this list\n"
    "  quit                    end the session (so does the end of input)\n"
    "\n"
    "Each call prints one line with its status; answers are decoded below it,\n"
    "and a refusal the shell can explain names the step that is missing\n"
    "(assoc before a one-to-one channel, open before send).\n"
    "with the scenario entry that answered (\"from engine.xml:41 22F1??\") or\n"
    "why none did, as the library's log file tells it.\n"
    "On a terminal the shell prompts, edits the line and keeps a history of\n"
    "the session's commands (arrow keys); Ctrl-C drops the line being typed,\n"
    "or ends the wait of rx, sleep or a flash's progress, and the session goes\n"
    "on. From a file or a pipe (cansimu shell bench.xml < steps.txt) each\n"
    "command is echoed before its output, '#' starts a comment, a line that is\n"
    "not a valid command stops the script with exit status 2, and an expect\n"
    "that fails with exit status 1.\n";

const char kCommandList[] =
    "commands: reserve [NAME], mode [N], version, voltages, reset, flash IMAGE,\n"
    "  port, assoc, baud, measures, channel ECU|broadcast [HEX], open,\n"
    "  send HEX... (22 F1 90: one request), close, frame ID HEX, free, rx [MS],\n"
    "  inject NAME STATUS [DETAIL], expect STATUS, expect rx TYPE [HEX],\n"
    "  sleep MS, ecu, help, quit\n";

// Answers are queued before the call that asked returns: only a missing
// answer waits this long.
constexpr uint32_t kAnswerMs = 100;
// Extended CAN identifiers have 29 bits.
constexpr uint32_t kHighestCanId = 0x1FFFFFFF;
// The box's modes: firmware download, CAN parameters, raw frames, measures.
constexpr uint32_t kHighestMode = 3;
// Steps and their notes are indented under the command.
constexpr size_t kHintIndent = 6;
constexpr uint32_t kLongestSleepMs = 3600 * 1000;
constexpr auto kSleepSlice = std::chrono::milliseconds(20);

using Words = std::vector<std::string>;
// What a command's calls answered, for expect: nothing when it made no
// call that answers a status.
using Outcome = std::optional<CAN_STATUS>;

// A line that is not a valid command.
struct BadLine {
  std::string why;
};
// An expect that did not hold.
struct ExpectFailed {
  std::string why;
};

Words words(const std::string &line) {
  std::istringstream in(line);
  Words out;
  for (std::string word; in >> word;)
    out.push_back(word);
  return out;
}

uint32_t number(const std::string &text, uint32_t most) {
  uint32_t value = 0;
  const NumberReading reading = readNumber(text, most, value);
  if (reading != NumberReading::Read)
    throw BadLine{numberProblem(text, reading, most)};
  return value;
}

Bytes hexArgument(const std::string &text) {
  Bytes bytes;
  std::string why;
  if (!parseHexBytes(text, bytes, why))
    throw BadLine{"'" + text + "' " + why};
  return bytes;
}

// The first status of several that is not E_SUCCESS, else E_SUCCESS.
CAN_STATUS firstFailure(CAN_STATUS sofar, CAN_STATUS next) {
  return sofar != E_SUCCESS ? sofar : next;
}

// The armings of this session that no call has taken yet, as far as the
// program can tell: an armed status is taken by the next call of its
// export, and the program counts its own calls. The bench's INJECT
// elements arm at each read of the bench, in document order.
class Armings {
public:
  explicit Armings(const Session &session) : session_(session) {}

  // Where the arming of `name` that still waits comes from; null if none.
  const std::string *waiting(const std::string &name) const {
    const auto found = armings_.find(name);
    if (found == armings_.end() || session_.api().callsOf(name) != found->second.calls)
      return nullptr;
    return &found->second.where;
  }
  void armed(const std::string &name, const std::string &where) {
    armings_[name] = {session_.api().callsOf(name), where};
  }

  // Applies the bench's INJECT elements as a read of it does, when the
  // library has read the bench since the last look: at the start, and after
  // a CAN_DrvRxMsg that came after the file was saved.
  void followBench() {
    std::error_code error;
    const auto saved = std::filesystem::last_write_time(session_.configuration(), error);
    const unsigned driverReads = session_.api().callsOf("CAN_DrvRxMsg");
    if (!error && looked_ && (saved == saved_ || driverReads == driverReads_))
      return;
    looked_ = true;
    saved_ = saved;
    driverReads_ = driverReads;
    XmlSource bench;
    if (bench.load(session_.configuration()) != XmlSource::Outcome::Read)
      return;
    const auto exported = [this](const std::string &name) { return session_.exports(name); };
    for (const BenchInjection &element : readBenchInjections(bench)) {
      Injection injection;
      std::string why;
      if (readInjection(element.exportName, element.status, element.detail, exported, injection,
                        why) == InjectionProblem::None &&
          injection.route == InjectionRoute::Arm && waiting(injection.exportName) == nullptr)
        armed(injection.exportName, "the bench's line " + std::to_string(element.line));
    }
  }

private:
  struct Arming {
    unsigned calls; // the export's calls when it was armed
    std::string where;
  };
  const Session &session_;
  std::map<std::string, Arming> armings_;
  bool looked_ = false;
  std::filesystem::file_time_type saved_;
  unsigned driverReads_ = 0;
};

// What a command needs before it can call the library.
enum class Needs { Nothing, Device, Port, Channel };

class Shell {
public:
  Shell(Session &session, Bus &bus, bool interactive)
      : session_(session), bus_(bus), interactive_(interactive), armings_(session) {}

  void started() { armings_.followBench(); }

  // Runs the command on line `number`; false once the session should end.
  bool execute(const Words &line, unsigned number) {
    const std::string &name = line[0];
    if (name == "quit" || name == "exit")
      return false;
    const Entry *entry = find(name);
    if (entry == nullptr)
      throw BadLine{"unknown command '" + name + "'"};
    if (line.size() - 1 < entry->least || line.size() - 1 > entry->most)
      throw BadLine{"wrong number of arguments for " + name};
    line_ = number;
    if (!holds(entry->needs))
      return true;
    // Ctrl-C ends this command's waits, not the session.
    CancellableWait wait(interactive_);
    session_.setWait(&wait);
    const Outcome outcome = (this->*entry->run)(line);
    session_.setWait(nullptr);
    if (outcome) {
      last_ = *outcome;
      lastCommand_ = "line " + std::to_string(number) + " (" + name + ")";
    }
    armings_.followBench();
    return true;
  }

private:
  struct Entry {
    const char *name;
    size_t least, most;
    Needs needs;
    Outcome (Shell::*run)(const Words &);
  };

  static const Entry *find(const std::string &name) {
    static const Entry entries[] = {
        {"help", 0, 0, Needs::Nothing, &Shell::help},
        {"reserve", 0, 1, Needs::Nothing, &Shell::reserve},
        {"mode", 0, 1, Needs::Device, &Shell::mode},
        {"version", 0, 0, Needs::Device, &Shell::version},
        {"voltages", 0, 0, Needs::Device, &Shell::voltages},
        {"reset", 0, 0, Needs::Device, &Shell::reset},
        {"flash", 1, 1, Needs::Device, &Shell::flash},
        {"port", 0, 0, Needs::Device, &Shell::port},
        {"assoc", 0, 0, Needs::Port, &Shell::assoc},
        {"baud", 0, 0, Needs::Port, &Shell::baud},
        {"measures", 0, 0, Needs::Port, &Shell::measures},
        {"channel", 1, 2, Needs::Port, &Shell::channel},
        {"open", 0, 0, Needs::Channel, &Shell::open},
        {"send", 1, SIZE_MAX, Needs::Channel, &Shell::send},
        {"close", 0, 0, Needs::Channel, &Shell::close},
        {"frame", 2, 2, Needs::Port, &Shell::frame},
        {"free", 0, 0, Needs::Nothing, &Shell::free},
        {"rx", 0, 1, Needs::Nothing, &Shell::rx},
        {"inject", 2, 3, Needs::Nothing, &Shell::inject},
        {"expect", 1, 3, Needs::Nothing, &Shell::expect},
        {"sleep", 1, 1, Needs::Nothing, &Shell::sleep},
        {"ecu", 0, 0, Needs::Nothing, &Shell::ecu},
    };
    for (const Entry &entry : entries)
      if (name == entry.name)
        return &entry;
    return nullptr;
  }

  // True when the handles the command needs are there; otherwise says how
  // to get them.
  bool holds(Needs needs) {
    if (needs == Needs::Nothing)
      return true;
    if (session_.device() == nullptr) {
      printNote("(no device handle)", "run reserve first");
      return false;
    }
    if (needs == Needs::Port && bus_.port() == nullptr) {
      printNote("(no port handle)", "run port first");
      return false;
    }
    if (needs == Needs::Channel && bus_.channel() == nullptr) {
      printNote("(no channel handle)", "run channel first");
      return false;
    }
    return true;
  }

  Outcome help(const Words &) {
    std::fputs(kCommandList, stdout);
    return std::nullopt;
  }
  Outcome reserve(const Words &line) {
    return reserveDevice(session_, false, line.size() > 1 ? line[1] : "");
  }
  Outcome mode(const Words &line) {
    if (line.size() == 1)
      return showMode(session_);
    const uint32_t mode = number(line[1], UINT32_MAX);
    const CAN_STATUS status = setMode(session_, mode);
    if (status == E_SUCCESS && mode > kHighestMode)
      printDetail(kHintIndent, "the calls that need a mode are refused until mode sets 0 to 3");
    return status;
  }
  Outcome version(const Words &) { return showVersion(session_); }
  Outcome voltages(const Words &) { return showTension(session_); }
  Outcome reset(const Words &) { return resetProcessor(session_); }
  Outcome flash(const Words &line) {
    return flashFirmware(session_, session_.userPath(line[1]), line[1]).status;
  }
  Outcome port(const Words &) { return bus_.reservePort(); }
  Outcome assoc(const Words &) { return bus_.loadAssocTable(); }
  Outcome baud(const Words &) { return bus_.detectBaudRate(); }
  Outcome measures(const Words &) { return bus_.showMeasures(); }

  Outcome channel(const Words &line) {
    if (line[1] == "broadcast")
      return bus_.createChannel(nullptr, line.size() > 2 ? hexArgument(line[2]) : Bytes());
    if (line.size() > 2)
      throw BadLine{"only a broadcast channel takes a start frame"};
    const BenchEcu *ecu = findEcu(bus_.ecus(), line[1]);
    if (ecu == nullptr)
      throw BadLine{"unknown ECU '" + line[1] + "' (the bench's ECUs: " + ecuList(bus_.ecus()) +
                    ")"};
    if (!ecu->addressed)
      throw BadLine{"ECU " + ecu->label() +
                    " has no one-byte targetAddress: no channel reaches it"};
    const CAN_STATUS status = bus_.createChannel(ecu);
    if (status == E_INVALID && !bus_.assocLoaded())
      printDetail(kHintIndent, "run assoc first: a one-to-one channel needs the association table");
    return status;
  }

  Outcome open(const Words &) {
    // A broadcast session's opening sends the start frame: its answers wait.
    sources_.skipToEnd();
    const CAN_STATUS status = bus_.openSession();
    if (status == E_SUCCESS && bus_.broadcast())
      remember(bus_.readChannel(kAnswerMs));
    printSources();
    return status;
  }

  // The answers of the last read, for expect rx.
  void remember(const Reading &reading) { lastRead_ = reading.read; }

  // What the library logged about the answers since the last call.
  void printSources() {
    const std::vector<std::vector<std::string>> lines = sources_.newLines(
        std::vector<std::string>{"Answer source: ", "Session refused by ", "ECU state: "});
    for (const std::string &line : lines[0])
      printDetail(4, "from " + shownSource(line));
    for (const std::string &line : lines[1])
      printDetail(4, "refused by " + shownSource(line));
    for (const std::string &line : lines[2]) {
      printDetail(4, "state " + shownState(line));
      ecuStates_[sourceEcu(line)] = shownState(line);
    }
  }

  // The last state every stateful ECU showed, as the log told it.
  Outcome ecu(const Words &) {
    if (ecuStates_.empty())
      printNote("(no state yet)", "no ECU that keeps a state has answered");
    for (const auto &state : ecuStates_)
      printDetail(2, "ECU " + state.first + ": " + state.second);
    return std::nullopt;
  }

  Outcome send(const Words &line) {
    std::vector<Bytes> requests;
    for (const std::string &text : requestTexts(Words(line.begin() + 1, line.end())))
      requests.push_back(hexArgument(text));
    CAN_STATUS outcome = E_SUCCESS;
    bool hinted = false;
    for (const Bytes &request : requests) {
      sources_.skipToEnd();
      const CAN_STATUS status = bus_.sendRequest(request);
      if (status == E_SUCCESS)
        remember(bus_.readChannel(kAnswerMs));
      printSources();
      if (status == E_INVALID && !bus_.sessionOpen() && !hinted)
        printDetail(kHintIndent, "run open first: requests go only on an open session");
      hinted = hinted || status == E_INVALID;
      outcome = firstFailure(outcome, status);
    }
    return outcome;
  }

  Outcome close(const Words &) { return bus_.closeSession(); }

  Outcome frame(const Words &line) {
    uint32_t id = 0;
    if (!parseHexNumber(line[1], id))
      throw BadLine{"'" + line[1] + "' is no hex CAN identifier (at most 8 digits)"};
    if (id > kHighestCanId)
      throw BadLine{"'" + line[1] + "' is above 1FFFFFFF, the highest CAN identifier"};
    const Bytes bytes = hexArgument(line[2]);
    if (bytes.size() > kFrameBytes)
      throw BadLine{"'" + line[2] + "' is longer than a CAN frame (8 bytes)"};
    sources_.skipToEnd();
    const CAN_STATUS status = bus_.sendFrame(id, bytes);
    if (status == E_SUCCESS)
      remember(bus_.readPort(kAnswerMs));
    printSources();
    return status;
  }

  // The innermost handle goes first: the channel, then the port, then the box.
  Outcome free(const Words &) {
    if (bus_.channel() != nullptr)
      return bus_.freeChannel();
    if (bus_.port() != nullptr)
      return bus_.freePort();
    if (holds(Needs::Device))
      return session_.freeDevice();
    return std::nullopt;
  }

  // E_SUCCESS when any queue gave an event, else what the reads answered
  // (E_NO_EVENT, or E_DISCONNECTED from an unplugged box's port).
  Outcome rx(const Words &line) {
    const uint32_t timeout = line.size() > 1 ? number(line[1], UINT32_MAX) : 100;
    if (timeout == 0)
      throw BadLine{"rx needs a timeout above 0 ms"};
    unsigned events = readDriverEvents(session_, timeout);
    CAN_STATUS failure = E_NO_EVENT;
    if (session_.device() == nullptr || cancelled())
      return events > 0 ? E_SUCCESS : failure;
    events += readDeviceEvents(session_, timeout);
    for (const bool port : {true, false}) {
      if (cancelled() || (port ? bus_.port() : bus_.channel()) == nullptr)
        continue;
      const Reading reading = port ? bus_.readPort(timeout, true) : bus_.readChannel(timeout, true);
      if (!reading.read.empty())
        remember(reading);
      events += reading.events;
      if (reading.status != E_SUCCESS && reading.status != E_NO_EVENT)
        failure = reading.status;
    }
    return events > 0 ? E_SUCCESS : failure;
  }

  bool cancelled() const { return session_.wait() != nullptr && session_.wait()->cancelled(); }

  Outcome inject(const Words &line) {
    Injection injection;
    std::string why;
    const auto exported = [this](const std::string &name) { return session_.exports(name); };
    if (readInjection(line[1], line[2], line.size() > 3 ? line[3] : "", exported, injection, why) !=
        InjectionProblem::None)
      throw BadLine{why};
    const std::string &name = injection.exportName;
    const std::string *waiting =
        injection.route == InjectionRoute::Arm ? armings_.waiting(name) : nullptr;
    const std::string where = waiting != nullptr ? *waiting : "";
    session_.api().setNextCANStatus(name.c_str(), injection.status, injection.detail);
    const std::string call = "setNextCANStatus(\"" + name + "\", " +
                             std::to_string(injection.status) + ", " +
                             std::to_string(injection.detail) + ")";
    if (injection.route != InjectionRoute::Arm)
      printNote(call, "queued: " + injectionEffect(injection));
    else if (waiting != nullptr)
      printNote(call, "dropped: the arming of " + where + " waits for its call");
    else
      printNote(call, "armed: " + injectionEffect(injection));
    const std::string note = detailNote(injection);
    if (!note.empty())
      printDetail(6, note);
    if (injection.route == InjectionRoute::Arm && waiting == nullptr)
      armings_.armed(name, "line " + std::to_string(line_));
    return std::nullopt;
  }

  Outcome expect(const Words &line) {
    if (line[1] == "rx")
      return expectAnswer(line);
    if (line.size() > 2)
      throw BadLine{"expect takes one STATUS, or rx TYPE [HEX]"};
    uint32_t status = 0;
    const NumberReading reading = readNumber(line[1], UINT32_MAX, status);
    if (reading != NumberReading::Read && !statusValue(line[1], status))
      throw BadLine{reading == NumberReading::OutOfRange
                        ? numberProblem(line[1], reading, UINT32_MAX)
                        : "'" + line[1] + "' is neither a number nor a status name"};
    if (!last_)
      throw BadLine{"expect: no command has called the library yet"};
    if (*last_ != status)
      throw ExpectFailed{lastCommand_ + " answered " + statusText(*last_) + ", not " +
                         statusText(status)};
    printDetail(2, "expect holds: " + lastCommand_ + " answered " + statusText(status));
    return std::nullopt;
  }

  // expect rx TYPE [HEX]: the last answer read has this type and frame.
  Outcome expectAnswer(const Words &line) {
    if (line.size() < 3)
      throw BadLine{"expect rx needs an event type: expect rx CHN_TYPE_RCV_SUCCESS [62F190*]"};
    uint32_t type = 0;
    if (readNumber(line[2], UINT32_MAX, type) != NumberReading::Read &&
        !channelEventType(line[2], type) && !portEventType(line[2], type))
      throw BadLine{"'" + line[2] + "' is neither a number nor an event type name"};
    std::string pattern = line.size() > 3 ? line[3] : "";
    const bool prefix = !pattern.empty() && pattern.back() == '*';
    if (prefix)
      pattern.pop_back();
    if (!pattern.empty())
      hexArgument(pattern);
    if (lastRead_.empty())
      throw ExpectFailed{"expect rx: no answer was read"};
    const ReadEvent &answer = lastRead_.front();
    const std::string shown = answer.name + (answer.frame.empty() ? "" : " " + answer.frame);
    const bool frameHolds =
        line.size() < 4 ||
        (prefix ? answer.frame.compare(0, pattern.size(), pattern) == 0 : answer.frame == pattern);
    if (answer.type != type || !frameHolds)
      throw ExpectFailed{"the answer read was " + shown + ", not " + line[2] +
                         (line.size() > 3 ? " " + line[3] : "")};
    printDetail(2, "expect holds: the answer read was " + shown);
    return std::nullopt;
  }

  Outcome sleep(const Words &line) {
    const auto until = std::chrono::steady_clock::now() +
                       std::chrono::milliseconds(number(line[1], kLongestSleepMs));
    while (std::chrono::steady_clock::now() < until) {
      if (cancelled()) {
        printDetail(0, "\n  sleep: Ctrl-C ended it");
        break;
      }
      std::this_thread::sleep_for(std::min<std::chrono::steady_clock::duration>(
          kSleepSlice, until - std::chrono::steady_clock::now()));
    }
    return std::nullopt;
  }

  Session &session_;
  Bus &bus_;
  bool interactive_;
  Armings armings_;
  LogFollower sources_{programLogPath()};
  // ECU ("7e0/7e8") -> its last state line.
  std::map<std::string, std::string> ecuStates_;
  std::vector<ReadEvent> lastRead_;
  unsigned line_ = 0;
  std::optional<CAN_STATUS> last_;
  std::string lastCommand_;
};

// The lines of the session: from the terminal (with Ctrl-C dropping a
// line) or from a file or a pipe. False at the end of input.
bool nextLine(bool interactive, std::string &text) {
  if (!interactive)
    return static_cast<bool>(std::getline(std::cin, text));
  for (;;) {
    const LineRead read = readTerminalLine("cansimu> ", text);
    if (read != LineRead::Interrupted)
      return read == LineRead::Line;
  }
}

int runShell(const Arguments &arguments) {
  // The log must be named before the session loads the library.
  const ProgramLog log;
  Session session(arguments.library, arguments.positional[0]);
  Bus bus(session, readBench(session.configuration()), Voice::Steps);
  const bool interactive = inputIsTerminal();
  if (interactive)
    catchInterrupts();
  printStep("CAN_DrvInit(configuration)", session.start(), session.configuration());
  if (interactive)
    std::fputs(kCommandList, stdout);

  Shell shell(session, bus, interactive);
  shell.started();
  std::string text;
  int exitStatus = kExitDone;
  for (unsigned number = 1; nextLine(interactive, text); ++number) {
    if (!text.empty() && text.back() == '\r')
      text.pop_back();
    const Words line = words(text.substr(0, text.find('#')));
    if (line.empty())
      continue;
    if (!interactive)
      std::printf("> %s\n", text.c_str());
    try {
      if (!shell.execute(line, number))
        break;
    } catch (const BadLine &bad) {
      printError((interactive ? "" : "line " + std::to_string(number) + ": ") + bad.why);
      if (!interactive) {
        exitStatus = kExitUsage;
        break;
      }
    } catch (const ExpectFailed &failed) {
      printError((interactive ? "" : "line " + std::to_string(number) + ": ") + failed.why);
      if (!interactive) {
        exitStatus = kExitRefused;
        break;
      }
    }
  }
  if (interactive)
    std::fputs("\n", stdout);
  session.end();
  return exitStatus;
}

} // namespace

Command shellCommand() {
  return {
      "shell", "shell CONFIG", "a console over one session, or a script of it", kShellDetails, 1, 1,
      {},      runShell};
}
