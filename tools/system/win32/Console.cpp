#include "system/Console.h"

#include <atomic>
#include <cstdlib>
#include <io.h>
#include <iostream>
#include <stdio.h>
#include <windows.h>

namespace {
std::atomic<bool> interruptSeen{false};

// Runs on a thread of its own; returning TRUE keeps the program alive.
BOOL WINAPI noteInterrupt(DWORD event) {
  if (event != CTRL_C_EVENT)
    return FALSE;
  interruptSeen = true;
  return TRUE;
}
} // namespace

bool inputIsTerminal() { return _isatty(_fileno(stdin)) != 0; }

bool outputIsTerminal() { return _isatty(_fileno(stdout)) != 0; }

// A console shows ANSI colours once virtual-terminal processing is on;
// older consoles refuse it, and then the output stays plain.
bool outputShowsColour() {
  if (!outputIsTerminal() || std::getenv("NO_COLOR") != nullptr)
    return false;
  HANDLE console = GetStdHandle(STD_OUTPUT_HANDLE);
  DWORD mode = 0;
  if (console == INVALID_HANDLE_VALUE || !GetConsoleMode(console, &mode))
    return false;
  return SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

void catchInterrupts() { SetConsoleCtrlHandler(noteInterrupt, TRUE); }

bool interrupted() { return interruptSeen; }

void clearInterrupt() { interruptSeen = false; }

// The console's own line input already edits the line and keeps a history
// (arrow keys, F7). Ctrl-C ends its read at once, and the handler thread
// notes it a moment later.
LineRead readTerminalLine(const char *prompt, std::string &line) {
  clearInterrupt();
  std::fputs(prompt, stdout);
  std::fflush(stdout);
  if (std::getline(std::cin, line) && !interrupted())
    return LineRead::Line;
  for (int wait = 0; wait < 10 && !interrupted(); ++wait)
    Sleep(10);
  if (!interrupted())
    return LineRead::EndOfInput;
  std::cin.clear();
  std::fputs("^C\n", stdout);
  return LineRead::Interrupted;
}
