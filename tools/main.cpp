// cansimu: a command-line host for the simulated interface box. It loads the
// library at run time, as a diagnostic application does, and drives it.
#include "Arguments.h"
#include "Command.h"
#include "Errors.h"
#include "Help.h"
#include "library/AceRuntime.h"
#include "output/Output.h"
#include "system/LibraryLoader.h"

#include <cstdio>
#include <filesystem>
#include <string>

namespace {

const Command &findCommand(const std::string &name) {
  for (const Command &command : commands())
    if (name == command.name)
      return command;
  throw UsageError("unknown command '" + name + "'");
}

// Checks the number of arguments against what the command takes.
void checkArguments(const Command &command, const Arguments &arguments) {
  const size_t count = arguments.positional.size();
  if (count < command.minArguments)
    throw UsageError(std::string("missing arguments: cansimu ") + command.synopsis);
  if (count > command.maxArguments)
    throw UsageError("too many arguments for " + std::string(command.name) + ": '" +
                     arguments.positional[command.maxArguments] + "'");
}

int run(int argc, char **argv) {
  const Arguments arguments = parseArguments(argc, argv, commands());
  if (arguments.version) {
    printVersion(arguments.library);
    return kExitDone;
  }
  if (arguments.command.empty()) {
    printProgramHelp(arguments.help ? stdout : stderr);
    return arguments.help ? kExitDone : kExitUsage;
  }
  const Command &command = findCommand(arguments.command);
  if (arguments.help) {
    printCommandHelp(command);
    return kExitDone;
  }
  // The library reads these variables when it is loaded, which comes later.
  if (!arguments.log.empty())
    setEnvironment("CANSIMU_LOG", std::filesystem::absolute(arguments.log).string());
  if (!arguments.trace.empty())
    setEnvironment("CANSIMU_TRACE", std::filesystem::absolute(arguments.trace).string());
  if (!arguments.report.empty())
    setEnvironment("CANSIMU_REPORT", std::filesystem::absolute(arguments.report).string());
  // The program reads the log and the trace right after each call, so the
  // library writes them at the end of every call rather than every few
  // milliseconds.
  setEnvironment("CANSIMU_FLUSH", "call");
  try {
    checkArguments(command, arguments);
    return command.run(arguments);
  } catch (const UsageError &error) {
    throw UsageError(std::string(error.what()) + " (see cansimu " + command.name + " --help)");
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
