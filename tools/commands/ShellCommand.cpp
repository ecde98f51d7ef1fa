// shell: an interactive console over one session, one command a line; the
// same commands read from a file or a pipe script a session.
#include "Bus.h"
#include "Command.h"
#include "Console.h"
#include "DeviceSteps.h"
#include "Errors.h"
#include "FirmwareFlash.h"
#include "Output.h"
#include "Session.h"
#include "StatusNames.h"

#include <cstdio>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

namespace {

const char kDetails[] =
    "Starts a session with CONFIG and reads commands, one a line:\n"
    "\n"
    "  reserve                 list the devices and reserve the box\n"
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
    "  send HEX...             send requests on the channel, print the answers\n"
    "  close                   close the channel's session\n"
    "  frame ID HEX            send a raw CAN frame (mode 2, 8 bytes at most) to\n"
    "                          identifier ID (7D0: every ECU), print the answers\n"
    "  free                    free the channel, else the port, else the box\n"
    "  rx [MS]                 read the driver, device, port and channel events\n"
    "                          until a queue stays empty MS ms (100)\n"
    "  inject NAME STATUS [DETAIL]\n"
    "                          setNextCANStatus: the next call of the export\n"
    "                          NAME answers STATUS; for CAN_DrvRxMsg,\n"
    "                          CAN_DevRxMsg and CAN_PrtRxMsg, queue an event of\n"
    "                          type STATUS. STATUS and DETAIL: numbers or names\n"
    "                          (E_BUSOFF, DEV_TYPE_RESET, PRT_TYPE_FRAME)\n"
    "  help                    this list\n"
    "  quit                    end the session (so does the end of input)\n"
    "\n"
    "Each call prints one line with its status; answers are decoded below it.\n"
    "On a terminal the shell prompts, edits the line and keeps a history of\n"
    "the session's commands (arrow keys). From a file or a pipe (cansimu shell\n"
    "bench.xml < steps.txt) each command is echoed before its output, '#'\n"
    "starts a comment, and a line that is not a valid command stops the script\n"
    "with exit status 2.\n";

const char kCommandList[] =
    "commands: reserve, mode [N], version, voltages, reset, flash IMAGE, port,\n"
    "  assoc, baud, measures, channel ECU|broadcast [HEX], open, send HEX...,\n"
    "  close, frame ID HEX, free, rx [MS], inject NAME STATUS [DETAIL], help, quit\n";

// Answers are queued before the call that asked returns: only a missing
// answer waits this long.
constexpr uint32_t kAnswerMs = 100;
constexpr size_t kFrameBytes = 8;

using Words = std::vector<std::string>;

// A line that is not a valid command.
struct BadLine {
  std::string why;
};

Words words(const std::string &line) {
  std::istringstream in(line);
  Words out;
  for (std::string word; in >> word;)
    out.push_back(word);
  return out;
}

uint32_t code(const std::string &text) {
  uint32_t value = 0;
  if (!parseCode(text, value))
    throw BadLine{"'" + text + "' is neither a number nor a status or event name"};
  return value;
}

Bytes hexArgument(const std::string &text) {
  Bytes bytes;
  std::string why;
  if (!parseHexBytes(text, bytes, why))
    throw BadLine{"'" + text + "' " + why};
  return bytes;
}

// What a command needs before it can call the library.
enum class Needs { Nothing, Device, Port, Channel };

class Shell {
public:
  Shell(Session &session, Bus &bus) : session_(session), bus_(bus) {}

  // Runs one command; false once the session should end.
  bool execute(const Words &line) {
    const std::string &name = line[0];
    if (name == "quit" || name == "exit")
      return false;
    const Entry *entry = find(name);
    if (entry == nullptr)
      throw BadLine{"unknown command '" + name + "'"};
    if (line.size() - 1 < entry->least || line.size() - 1 > entry->most)
      throw BadLine{"wrong number of arguments for " + name};
    if (holds(entry->needs))
      (this->*entry->run)(line);
    return true;
  }

private:
  struct Entry {
    const char *name;
    size_t least, most;
    Needs needs;
    void (Shell::*run)(const Words &);
  };

  static const Entry *find(const std::string &name) {
    static const Entry entries[] = {
        {"help", 0, 0, Needs::Nothing, &Shell::help},
        {"reserve", 0, 0, Needs::Nothing, &Shell::reserve},
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

  void help(const Words &) { std::fputs(kCommandList, stdout); }
  void reserve(const Words &) { session_.reserveDevice(); }
  void mode(const Words &line) {
    if (line.size() > 1)
      setMode(session_, code(line[1]));
    else
      showMode(session_);
  }
  void version(const Words &) { showVersion(session_); }
  void voltages(const Words &) { showTension(session_); }
  void reset(const Words &) { resetProcessor(session_); }
  void flash(const Words &line) { flashFirmware(session_, session_.userPath(line[1]), line[1]); }
  void port(const Words &) { bus_.reservePort(); }
  void assoc(const Words &) { bus_.loadAssocTable(); }
  void baud(const Words &) { bus_.detectBaudRate(); }
  void measures(const Words &) { bus_.showMeasures(); }

  void channel(const Words &line) {
    if (line[1] == "broadcast") {
      bus_.createChannel(nullptr, line.size() > 2 ? hexArgument(line[2]) : Bytes());
      return;
    }
    if (line.size() > 2)
      throw BadLine{"only a broadcast channel takes a start frame"};
    const BenchEcu *ecu = findEcu(bus_.ecus(), line[1]);
    if (ecu == nullptr)
      throw BadLine{"unknown ECU '" + line[1] + "' (the bench's ECUs: " + ecuList(bus_.ecus()) +
                    ")"};
    if (!ecu->addressed)
      throw BadLine{"ECU " + ecu->label() +
                    " has no one-byte targetAddress: no channel reaches it"};
    bus_.createChannel(ecu);
  }

  void open(const Words &) {
    // A broadcast session's opening sends the start frame: its answers wait.
    if (bus_.openSession() == E_SUCCESS && bus_.broadcast())
      bus_.readChannel(kAnswerMs);
  }

  void send(const Words &line) {
    std::vector<Bytes> requests;
    for (size_t i = 1; i < line.size(); ++i)
      requests.push_back(hexArgument(line[i]));
    for (const Bytes &request : requests)
      if (bus_.sendRequest(request) == E_SUCCESS)
        bus_.readChannel(kAnswerMs);
  }

  void close(const Words &) { bus_.closeSession(); }

  void frame(const Words &line) {
    uint32_t id = 0;
    if (!parseHexNumber(line[1], id))
      throw BadLine{"'" + line[1] + "' is no hex CAN identifier"};
    const Bytes bytes = hexArgument(line[2]);
    if (bytes.size() > kFrameBytes)
      throw BadLine{"'" + line[2] + "' is longer than a CAN frame (8 bytes)"};
    if (bus_.sendFrame(id, bytes) == E_SUCCESS)
      bus_.readPort(kAnswerMs);
  }

  // The innermost handle goes first: the channel, then the port, then the box.
  void free(const Words &) {
    if (bus_.channel() != nullptr)
      bus_.freeChannel();
    else if (bus_.port() != nullptr)
      bus_.freePort();
    else if (holds(Needs::Device))
      session_.freeDevice();
  }

  void rx(const Words &line) {
    const uint32_t timeout = line.size() > 1 ? code(line[1]) : 100;
    if (timeout == 0)
      throw BadLine{"rx needs a timeout above 0 ms"};
    readDriverEvents(session_, timeout);
    if (!holds(Needs::Device))
      return;
    readDeviceEvents(session_, timeout);
    if (bus_.port() != nullptr)
      bus_.readPort(timeout, true);
    if (bus_.channel() != nullptr)
      bus_.readChannel(timeout, true);
  }

  void inject(const Words &line) {
    const std::string &name = line[1];
    if (!session_.exports(name))
      throw BadLine{"'" + name + "' is not an export of the library"};
    const uint32_t status = code(line[2]);
    const uint32_t detail = line.size() > 3 ? code(line[3]) : 0;
    session_.api().setNextCANStatus(name.c_str(), status, detail);
    // The receive exports queue an event of that type instead of arming.
    const char *queued = name == "CAN_DrvRxMsg"   ? driverEventName(status)
                         : name == "CAN_DevRxMsg" ? deviceEventName(status)
                                                  : portEventName(status);
    const bool queues = name == "CAN_DrvRxMsg" || name == "CAN_DevRxMsg" || name == "CAN_PrtRxMsg";
    printNote("setNextCANStatus(\"" + name + "\", " + std::to_string(status) + ", " +
                  std::to_string(detail) + ")",
              queues ? "event " + eventTypeText(queued, status) + " queued"
                     : "next " + name + " answers " + statusText(status));
  }

  Session &session_;
  Bus &bus_;
};

int runShell(const Arguments &arguments) {
  Session session(arguments.library, arguments.positional[0]);
  Bus bus(session, readBench(session.configuration()), Voice::Steps);
  const bool interactive = inputIsTerminal();
  printStep("CAN_DrvInit(configuration)", session.start(), session.configuration());
  if (interactive)
    std::fputs(kCommandList, stdout);

  Shell shell(session, bus);
  std::string text;
  for (unsigned number = 1;; ++number) {
    if (!(interactive ? readTerminalLine("cansimu> ", text) : bool(std::getline(std::cin, text))))
      break;
    if (!text.empty() && text.back() == '\r')
      text.pop_back();
    const Words line = words(text.substr(0, text.find('#')));
    if (line.empty())
      continue;
    if (!interactive)
      std::printf("> %s\n", text.c_str());
    try {
      if (!shell.execute(line))
        break;
    } catch (const BadLine &bad) {
      if (!interactive)
        throw UsageError("line " + std::to_string(number) + ": " + bad.why);
      printError(bad.why);
    }
  }
  if (interactive)
    std::fputs("\n", stdout);
  session.end();
  return kExitDone;
}

} // namespace

Command shellCommand() {
  return {"shell", "shell CONFIG", "a console over one session, or a script of it", kDetails, 1, 1,
          {},      runShell};
}
