// What the program knows about where its input and output go.
#pragma once

#include <string>

// True when standard input comes from a terminal (an interactive shell).
bool inputIsTerminal();
// True when standard output goes to a terminal that shows ANSI colours (and
// NO_COLOR is not set): only then does the program colour its output.
bool outputShowsColour();
// True when standard output goes to a terminal at all (live progress bars).
bool outputIsTerminal();

// Prompts on the terminal and reads one line of the interactive shell, with
// line editing and a history of the session's lines (arrow keys) where the
// platform offers them. False at the end of input.
bool readTerminalLine(const char *prompt, std::string &line);
