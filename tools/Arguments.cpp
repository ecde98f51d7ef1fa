#include "Arguments.h"

#include "Command.h"
#include "Errors.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace {

// The command options that take a value; the others are flags.
bool takesValue(const std::string &option) {
  return option == "--seconds" || option == "--junit" || option == "--fail-on" ||
         option == "--out" || option == "--ecu";
}

// Options that may be given several times: their values, one a line.
bool repeats(const std::string &option) { return option == "--ecu"; }

bool isOption(const std::string &word) { return word.size() > 1 && word[0] == '-'; }

// CLI11's "--seconds: 1 required TEXT missing" in the program's words.
std::string usageText(const CLI::ParseError &error) {
  const std::string what = error.what();
  const size_t colon = what.find(':');
  if (colon != std::string::npos && what.find("missing") != std::string::npos)
    return what.substr(0, colon) + " needs a value";
  return what;
}

// Why a word that no command or option took is refused.
std::string leftOverText(const std::string &word, const Command *command,
                         const std::vector<Command> &commands) {
  if (!isOption(word))
    return command == nullptr
               ? "unknown command '" + word + "'"
               : "unexpected argument '" + word + "' (see cansimu " + command->name + " --help)";
  const auto takes = [&word](const Command &candidate) {
    return std::find(candidate.options.begin(), candidate.options.end(), word) !=
           candidate.options.end();
  };
  if (command == nullptr)
    return "unknown option " + word;
  const std::string hint = std::string(" (see cansimu ") + command->name + " --help)";
  if (takes(*command))
    return word + " goes after the command: cansimu " + command->name + " ... " + word + hint;
  if (std::any_of(commands.begin(), commands.end(), takes))
    return std::string(command->name) + " takes no " + word + hint;
  return "unknown option " + word + hint;
}

} // namespace

Arguments parseArguments(int argc, char **argv, const std::vector<Command> &commands) {
  Arguments arguments;
  CLI::App app("cansimu");
  // Help is the program's own (main), so that it keeps to 80 columns.
  app.set_help_flag();
  // Words nobody takes are judged below, with the program's messages; a
  // command hands the options it does not know to the program.
  app.allow_extras();
  app.fallthrough();
  // A path such as /home/bench.xml is an argument, also on Windows, where
  // CLI11 would otherwise read it as a /option.
  app.allow_windows_style_options(false);
  app.require_subcommand(0, 1);
  app.add_option("--library", arguments.library)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
  app.add_option("--log", arguments.log)->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
  app.add_option("--trace", arguments.trace)->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
  app.add_option("--report", arguments.report)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
  app.add_flag("-h,--help", arguments.help);
  app.add_flag("--version", arguments.version);

  std::map<std::string, std::string> values;
  std::map<std::string, bool> flags;
  for (const Command &command : commands) {
    CLI::App *sub = app.add_subcommand(command.name);
    sub->allow_extras();
    sub->allow_windows_style_options(false);
    sub->add_option("arguments", arguments.positional);
    for (const std::string &option : command.options)
      if (takesValue(option))
        sub->add_option(option, values[option])
            ->multi_option_policy(repeats(option) ? CLI::MultiOptionPolicy::Join
                                                  : CLI::MultiOptionPolicy::TakeLast);
      else
        sub->add_flag(option, flags[option]);
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError &error) {
    throw UsageError(usageText(error));
  }

  const Command *command = nullptr;
  std::vector<std::string> leftOver = app.remaining();
  for (const CLI::App *sub : app.get_subcommands()) {
    command = &*std::find_if(commands.begin(), commands.end(),
                             [sub](const Command &c) { return sub->get_name() == c.name; });
    arguments.command = command->name;
    for (const std::string &option : command->options)
      if (sub->count(option) > 0)
        arguments.options[option] = takesValue(option) ? values[option] : "";
    const std::vector<std::string> rest = sub->remaining();
    leftOver.insert(leftOver.end(), rest.begin(), rest.end());
  }
  for (const std::string &word : leftOver)
    if (word != "--")
      throw UsageError(leftOverText(word, command, commands));
  return arguments;
}
