#include "Command.h"

const std::vector<Command> &commands() {
  static const std::vector<Command> all = {
      demoCommand(),    askCommand(),    checkCommand(),  infoCommand(),   flashCommand(),
      eventsCommand(),  shellCommand(),  injectCommand(), reportCommand(), examplesCommand(),
      convertCommand(), importCommand(), helpCommand()};
  return all;
}
