#include "Console.h"

#include <cstdlib>
#include <string_view>
#include <unistd.h>

bool inputIsTerminal() { return isatty(STDIN_FILENO) != 0; }

bool outputIsTerminal() { return isatty(STDOUT_FILENO) != 0; }

bool outputShowsColour() {
  const char *term = std::getenv("TERM");
  const bool dumb = term == nullptr || std::string_view(term) == "dumb";
  return outputIsTerminal() && !dumb && std::getenv("NO_COLOR") == nullptr;
}
