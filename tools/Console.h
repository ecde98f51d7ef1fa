// What the program knows about where its input and output go.
#pragma once

// True when standard input comes from a terminal (an interactive shell).
bool inputIsTerminal();
// True when standard output goes to a terminal that shows ANSI colours (and
// NO_COLOR is not set): only then does the program colour its output.
bool outputShowsColour();
// True when standard output goes to a terminal at all (live progress bars).
bool outputIsTerminal();
