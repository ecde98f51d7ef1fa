// The one log function: every log line of the library goes through it.
#pragma once

#include <ace/SString.h>

// Hands the text to the platform's logging service as the fourth of four
// wide strings ("MERIDAX" three times, then the text). While the driver's
// console mode is on, the line is also written to standard output with "\n".
void logMessage(const ACE_WString &text);

// Whether each line is also written to standard output: set by the driver
// from its configuration's console mode, off while no driver exists.
void echoLogToConsole(bool on);

// Whether a line logged now reaches anybody (a log reader or the console).
// Lines that only explain what happened are built only then.
bool logIsRead();
