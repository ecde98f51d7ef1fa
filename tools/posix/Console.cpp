#include "Console.h"

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string_view>
#include <unistd.h>

#ifdef CANSIMU_HAVE_LIBEDIT
#include <editline/readline.h>
#endif

bool inputIsTerminal() { return isatty(STDIN_FILENO) != 0; }

bool outputIsTerminal() { return isatty(STDOUT_FILENO) != 0; }

bool outputShowsColour() {
  const char *term = std::getenv("TERM");
  const bool dumb = term == nullptr || std::string_view(term) == "dumb";
  return outputIsTerminal() && !dumb && std::getenv("NO_COLOR") == nullptr;
}

#ifdef CANSIMU_HAVE_LIBEDIT
bool readTerminalLine(const char *prompt, std::string &line) {
  char *read = readline(prompt);
  if (read == nullptr)
    return false;
  line = read;
  std::free(read);
  if (line.find_first_not_of(" \t") != std::string::npos)
    add_history(line.c_str());
  return true;
}
#else
// Without libedit the terminal's own editing (erase, kill) is all there is.
bool readTerminalLine(const char *prompt, std::string &line) {
  std::fputs(prompt, stdout);
  std::fflush(stdout);
  return static_cast<bool>(std::getline(std::cin, line));
}
#endif
