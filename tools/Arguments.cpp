#include "Arguments.h"

#include "Errors.h"

namespace {
// Options that take a value, and options that stand alone; every command
// accepts --library, the others are checked by the command that uses them.
const char *const kValueOptions[] = {"--library", "--seconds"};
const char *const kFlagOptions[] = {"--broadcast", "--frame"};

template <size_t N> bool listed(const char *const (&options)[N], const std::string &option) {
  for (const char *known : options)
    if (option == known)
      return true;
  return false;
}
} // namespace

Arguments parseArguments(int argc, char **argv) {
  Arguments arguments;
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    if (argument == "--help" || argument == "-h") {
      arguments.help = true;
    } else if (listed(kValueOptions, argument)) {
      if (i + 1 == argc)
        throw UsageError(argument + " needs a value");
      arguments.options[argument] = argv[++i];
    } else if (listed(kFlagOptions, argument)) {
      arguments.options[argument] = "";
    } else if (argument.size() > 1 && argument[0] == '-') {
      throw UsageError("unknown option " + argument);
    } else if (arguments.command.empty()) {
      arguments.command = argument;
    } else {
      arguments.positional.push_back(argument);
    }
  }
  const auto library = arguments.options.find("--library");
  if (library != arguments.options.end()) {
    arguments.library = library->second;
    arguments.options.erase(library);
  }
  return arguments;
}
