// cansimu: a command-line host for the simulated interface box. It loads the
// library at run time, as a diagnostic application does, and drives it.
#include "AceRuntime.h"
#include "Arguments.h"
#include "Command.h"
#include "Errors.h"
#include "Output.h"
#include "Session.h"

#include <cstdio>
#include <string>

namespace {

void printProgramHelp(FILE *out) {
  std::fprintf(out, "usage: cansimu COMMAND [ARGUMENTS] [--library PATH]\n\n"
                    "A host for the simulated CAN interface box: it loads the cansimu library\n"
                    "at run time, as a diagnostic application does, and drives it.\n\n"
                    "commands:\n");
  for (const Command &command : commands())
    std::fprintf(out, "  %-26s %s\n", command.synopsis, command.summary);
  std::fprintf(out,
               "\noptions:\n"
               "  --library PATH             the library to load (default: %s)\n"
               "  --help                     this help, or a command's: cansimu COMMAND --help\n"
               "\nexit status: 0 done; 1 the library refused a call (ask: a request got no\n"
               "answer; check: warnings); 2 bad command line; 3 library, configuration or\n"
               "file missing or unreadable.\n",
               defaultLibraryPath().c_str());
}

void printCommandHelp(const Command &command) {
  std::printf("usage: cansimu %s [--library PATH]\n\n%s", command.synopsis, command.details);
}

const Command *findCommand(const std::string &name) {
  for (const Command &command : commands())
    if (name == command.name)
      return &command;
  return nullptr;
}

// Checks the command line against what the command takes.
void checkArguments(const Command &command, const Arguments &arguments) {
  const size_t count = arguments.positional.size();
  if (count < command.minArguments)
    throw UsageError(std::string("missing arguments: cansimu ") + command.synopsis);
  if (count > command.maxArguments)
    throw UsageError("too many arguments for " + std::string(command.name) + ": '" +
                     arguments.positional[command.maxArguments] + "'");
  for (const auto &option : arguments.options) {
    bool taken = false;
    for (const std::string &known : command.options)
      taken = taken || option.first == known;
    if (!taken)
      throw UsageError(std::string(command.name) + " takes no " + option.first);
  }
}

int run(int argc, char **argv) {
  const Arguments arguments = parseArguments(argc, argv);
  if (arguments.command.empty()) {
    printProgramHelp(arguments.help ? stdout : stderr);
    return arguments.help ? kExitDone : kExitUsage;
  }
  const Command *command = findCommand(arguments.command);
  if (command == nullptr)
    throw UsageError("unknown command '" + arguments.command + "'");
  if (arguments.help) {
    printCommandHelp(*command);
    return kExitDone;
  }
  try {
    checkArguments(*command, arguments);
    return command->run(arguments);
  } catch (const UsageError &error) {
    throw UsageError(std::string(error.what()) + " (see cansimu " + command->name + " --help)");
  }
}

} // namespace

int main(int argc, char **argv) {
  const AceRuntime ace;
  try {
    return run(argc, argv);
  } catch (const UsageError &error) {
    const std::string message = error.what();
    const bool hinted = message.find("--help)") != std::string::npos;
    printError(hinted ? message : message + " (cansimu --help lists the commands)");
    return kExitUsage;
  } catch (const SetupError &error) {
    printError(error.what());
    return kExitSetup;
  } catch (const std::exception &error) {
    printError(error.what());
    return kExitSetup;
  }
}
