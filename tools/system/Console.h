// system/: what differs by system (posix/, win32/): console, library loader, programs run.
// What the program knows about where its input and output go, and Ctrl-C.
#pragma once

#include <string>

// True when standard input comes from a terminal (an interactive shell).
bool inputIsTerminal();
// True when standard output goes to a terminal that shows ANSI colours (and
// NO_COLOR is not set): only then does the program colour its output.
bool outputShowsColour();
// True when standard output goes to a terminal at all (live progress bars).
bool outputIsTerminal();

enum class LineRead { Line, Interrupted, EndOfInput };

// Prompts on the terminal and reads one line of the interactive shell, with
// line editing and a history of the session's lines (arrow keys) where the
// platform offers them. Ctrl-C while typing gives Interrupted (once
// catchInterrupts has run): the line is dropped, as consoles do.
LineRead readTerminalLine(const char *prompt, std::string &line);

// From then on Ctrl-C no longer ends the program: it is noted, and the wait
// or the line it came in is cut short.
void catchInterrupts();
// True when Ctrl-C came since the last clearInterrupt.
bool interrupted();
void clearInterrupt();
