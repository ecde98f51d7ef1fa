#include "Console.h"

#include <cstdlib>
#include <io.h>
#include <iostream>
#include <stdio.h>
#include <windows.h>

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

// The console's own line input already edits the line and keeps a history
// (arrow keys, F7).
bool readTerminalLine(const char *prompt, std::string &line) {
  std::fputs(prompt, stdout);
  std::fflush(stdout);
  return static_cast<bool>(std::getline(std::cin, line));
}
