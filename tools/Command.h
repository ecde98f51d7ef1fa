// One command of the program: its name, its help, the arguments it takes
// and the function that runs it. Each command lives in its own file under
// commands/ and is listed in Commands.cpp.
#pragma once

#include "Arguments.h"

#include <string>
#include <vector>

struct Command {
  const char *name;
  const char *synopsis; // "flash CONFIG IMAGE"
  const char *summary;  // one line for the program's help
  const char *details;  // the rest of the command's --help
  size_t minArguments;
  size_t maxArguments;
  std::vector<std::string> options; // value options it takes besides --library
  int (*run)(const Arguments &arguments);
};

// Every command, in the order the help lists them.
const std::vector<Command> &commands();

Command demoCommand();
Command infoCommand();
Command flashCommand();
Command eventsCommand();
Command shellCommand();
Command examplesCommand();
Command convertCommand();
Command importCommand();
Command askCommand();
Command checkCommand();
Command injectCommand();
Command reportCommand();
Command helpCommand();
