// The command line, split into the command, its positional arguments and
// its options. Options may stand anywhere after the program name.
#pragma once

#include <map>
#include <string>
#include <vector>

struct Arguments {
  std::string command;
  std::vector<std::string> positional;
  // Options by name with their dashes ("--seconds"), with their values;
  // options that take none ("--frame") have an empty one.
  std::map<std::string, std::string> options;
  std::string library;
  bool help = false;

  bool has(const std::string &option) const { return options.count(option) != 0; }
};

// Throws UsageError for an unknown option or an option without its value.
Arguments parseArguments(int argc, char **argv);
