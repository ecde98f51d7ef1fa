// The command line, split into the command, its positional arguments and
// its options. Options may stand anywhere after the program name; the
// program's own (--library, --log, --trace, --report, --help, --version)
// before the command too.
#pragma once

#include <map>
#include <string>
#include <vector>

struct Command;

struct Arguments {
  std::string command;
  std::vector<std::string> positional;
  // The command's options by name with their dashes ("--seconds"), with
  // their values; flags ("--frame") have an empty one. An option given
  // several times (--ecu) holds its values one a line.
  std::map<std::string, std::string> options;
  std::string library; // --library PATH: the library to load
  std::string log;     // --log FILE: where the library appends its log lines
  std::string trace;   // --trace FILE: where the library appends the bus trace
  std::string report;  // --report FILE: where the library keeps the session report
  bool help = false;
  bool version = false;

  bool has(const std::string &option) const { return options.count(option) != 0; }
};

// Parses the command line against `commands` (each with the options it
// takes). Throws UsageError for an unknown command or option, an option the
// command does not take, or an option without its value.
Arguments parseArguments(int argc, char **argv, const std::vector<Command> &commands);
