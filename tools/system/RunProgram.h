// Runs another program and waits for it: how the program hands a task to
// the Python package (convert).
#pragma once

#include <string>
#include <vector>

// Runs arguments[0] (looked up on the PATH when it names no folder) with
// the rest as its arguments, in this process's environment and with its
// standard streams, and returns its exit status. Throws SetupError when it
// cannot be started.
int runProgram(const std::vector<std::string> &arguments);
