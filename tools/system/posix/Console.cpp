#include "system/Console.h"

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string_view>
#include <unistd.h>

#ifdef CANSIMU_HAVE_LIBEDIT
#include <editline/readline.h>
#endif

namespace {
std::atomic<bool> interruptSeen{false};

extern "C" void noteInterrupt(int) { interruptSeen = true; }
} // namespace

bool inputIsTerminal() { return isatty(STDIN_FILENO) != 0; }

bool outputIsTerminal() { return isatty(STDOUT_FILENO) != 0; }

bool outputShowsColour() {
  const char *term = std::getenv("TERM");
  const bool dumb = term == nullptr || std::string_view(term) == "dumb";
  return outputIsTerminal() && !dumb && std::getenv("NO_COLOR") == nullptr;
}

// Without SA_RESTART, so that a read waiting for a line returns at Ctrl-C.
void catchInterrupts() {
  struct sigaction action {};
  action.sa_handler = noteInterrupt;
  sigemptyset(&action.sa_mask);
  action.sa_flags = 0;
  sigaction(SIGINT, &action, nullptr);
}

bool interrupted() { return interruptSeen; }

void clearInterrupt() { interruptSeen = false; }

#ifdef CANSIMU_HAVE_LIBEDIT
LineRead readTerminalLine(const char *prompt, std::string &line) {
  clearInterrupt();
  char *read = readline(prompt);
  if (read == nullptr) {
    if (!interrupted())
      return LineRead::EndOfInput;
    std::fputs("^C\n", stdout);
    return LineRead::Interrupted;
  }
  line = read;
  std::free(read);
  if (interrupted())
    return LineRead::Interrupted;
  if (line.find_first_not_of(" \t") != std::string::npos)
    add_history(line.c_str());
  return LineRead::Line;
}
#else
// Without libedit the terminal's own editing (erase, kill) is all there is.
LineRead readTerminalLine(const char *prompt, std::string &line) {
  clearInterrupt();
  std::fputs(prompt, stdout);
  std::fflush(stdout);
  if (std::getline(std::cin, line))
    return LineRead::Line;
  if (!interrupted())
    return LineRead::EndOfInput;
  std::cin.clear();
  std::fputs("^C\n", stdout);
  return LineRead::Interrupted;
}
#endif
