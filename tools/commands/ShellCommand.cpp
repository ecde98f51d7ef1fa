// shell: an interactive console over one session, one command a line; the
// same commands read from a file or a pipe script a session.
#include "Command.h"
#include "Console.h"
#include "DeviceSteps.h"
#include "Errors.h"
#include "Files.h"
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
    "  reserve                     list the devices and reserve the box\n"
    "  free                        release the reservation\n"
    "  mode [N]                    set the box's mode to N, or read it\n"
    "  version                     read the firmware versions\n"
    "  voltages                    read the supply voltages\n"
    "  reset                       reset the box's processor (blocks 500 ms)\n"
    "  flash IMAGE                 download a firmware image, with progress\n"
    "  rx [MS]                     read the driver, then the device events\n"
    "                              until a queue stays empty MS ms (100)\n"
    "  inject NAME STATUS [DETAIL] setNextCANStatus: the next call of the export\n"
    "                              NAME answers STATUS; for CAN_DrvRxMsg and\n"
    "                              CAN_DevRxMsg, queue an event of type STATUS.\n"
    "                              STATUS and DETAIL: numbers or names\n"
    "                              (E_BUSOFF, DEV_TYPE_RESET)\n"
    "  help                        this list\n"
    "  quit                        end the session (so does the end of input)\n"
    "\n"
    "On a terminal the shell prompts, edits the line and keeps a history of\n"
    "the session's commands (arrow keys). From a file or a pipe (cansimu shell\n"
    "bench.xml < steps.txt) each command is echoed before its output, '#'\n"
    "starts a comment, and a line that is not a valid command stops the script\n"
    "with exit status 2.\n";

const char kCommandList[] = "commands: reserve, free, mode [N], version, voltages, reset, "
                            "flash IMAGE, rx [MS], inject NAME STATUS [DETAIL], help, quit\n";

// A line that is not a valid command.
struct BadLine {
  std::string why;
};

std::vector<std::string> words(const std::string &line) {
  std::istringstream in(line);
  std::vector<std::string> out;
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

void expectWords(const std::vector<std::string> &line, size_t least, size_t most) {
  if (line.size() - 1 < least || line.size() - 1 > most)
    throw BadLine{"wrong number of arguments for " + line[0]};
}

class Shell {
public:
  explicit Shell(Session &session) : session_(session) {}

  // Runs one command; false once the session should end.
  bool execute(const std::vector<std::string> &line) {
    const std::string &name = line[0];
    if (name == "quit" || name == "exit")
      return false;
    if (name == "help") {
      std::fputs(kCommandList, stdout);
    } else if (name == "inject") {
      inject(line);
    } else if (name == "rx") {
      expectWords(line, 0, 1);
      const uint32_t timeout = line.size() > 1 ? code(line[1]) : 100;
      if (timeout == 0)
        throw BadLine{"rx needs a timeout above 0 ms"};
      readDriverEvents(session_, timeout);
      if (needsDevice())
        readDeviceEvents(session_, timeout);
    } else if (name == "reserve") {
      expectWords(line, 0, 0);
      session_.reserveDevice();
    } else {
      deviceCommand(line);
    }
    return true;
  }

private:
  void inject(const std::vector<std::string> &line) {
    expectWords(line, 2, 3);
    const uint32_t status = code(line[2]);
    const uint32_t detail = line.size() > 3 ? code(line[3]) : 0;
    session_.api().setNextCANStatus(line[1].c_str(), status, detail);
    // The receive exports queue an event of that type instead of arming.
    const char *queued = line[1] == "CAN_DrvRxMsg"   ? driverEventName(status)
                         : line[1] == "CAN_DevRxMsg" ? deviceEventName(status)
                                                     : nullptr;
    const bool queues = line[1] == "CAN_DrvRxMsg" || line[1] == "CAN_DevRxMsg";
    printNote("setNextCANStatus(\"" + line[1] + "\", " + std::to_string(status) + ", " +
                  std::to_string(detail) + ")",
              queues ? "event " + eventTypeText(queued, status) + " queued"
                     : "next " + line[1] + " answers " + statusText(status));
  }

  // True when a device handle is there; otherwise says how to get one.
  bool needsDevice() {
    if (session_.device() != nullptr)
      return true;
    printNote("(no device handle)", "run reserve first");
    return false;
  }

  void deviceCommand(const std::vector<std::string> &line) {
    const std::string &name = line[0];
    const bool known = name == "free" || name == "mode" || name == "version" ||
                       name == "voltages" || name == "reset" || name == "flash";
    if (!known)
      throw BadLine{"unknown command '" + name + "'"};
    expectWords(line, name == "flash" ? 1 : 0, name == "mode" || name == "flash" ? 1 : 0);
    if (!needsDevice())
      return;
    if (name == "free")
      session_.freeDevice();
    else if (name == "mode" && line.size() > 1)
      setMode(session_, code(line[1]));
    else if (name == "mode")
      showMode(session_);
    else if (name == "version")
      showVersion(session_);
    else if (name == "voltages")
      showTension(session_);
    else if (name == "reset")
      resetProcessor(session_);
    else
      flashFirmware(session_, session_.userPath(line[1]), line[1]);
  }

  Session &session_;
};

int runShell(const Arguments &arguments) {
  Session session(arguments.library, arguments.positional[0]);
  const bool interactive = inputIsTerminal();
  printStep("CAN_DrvInit(configuration)", session.start(), session.configuration());
  if (interactive)
    std::fputs(kCommandList, stdout);

  Shell shell(session);
  std::string text;
  for (unsigned number = 1;; ++number) {
    if (!(interactive ? readTerminalLine("cansimu> ", text) : bool(std::getline(std::cin, text))))
      break;
    if (!text.empty() && text.back() == '\r')
      text.pop_back();
    const std::vector<std::string> line = words(text.substr(0, text.find('#')));
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
  return {"shell",
          "shell CONFIG",
          "an interactive console over one session (or a script)",
          kDetails,
          1,
          1,
          {},
          runShell};
}
