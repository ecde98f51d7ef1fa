// help: the program's help, or a command's.
#include "Command.h"
#include "Errors.h"
#include "Help.h"

namespace {

const char kHelpDetails[] =
    "Prints the list of commands and options, or with COMMAND that command's\n"
    "help (the same as cansimu COMMAND --help).\n";

int runHelp(const Arguments &arguments) {
  if (arguments.positional.empty()) {
    printProgramHelp(stdout);
    return kExitDone;
  }
  const std::string &name = arguments.positional[0];
  for (const Command &command : commands())
    if (name == command.name) {
      printCommandHelp(command);
      return kExitDone;
    }
  throw UsageError("unknown command '" + name + "'");
}

} // namespace

Command helpCommand() {
  return {"help", "help [COMMAND]", "this help, or a command's", kHelpDetails, 0, 1, {}, runHelp};
}
