// How a command ends when it cannot do its work, and the exit statuses the
// program uses.
#pragma once

#include <stdexcept>

// 0: done; 1: the library answered a status other than E_SUCCESS where the
// command needed success; 2: bad command line; 3: the program could not
// start its session (library, configuration or file missing or unreadable).
enum ExitStatus { kExitDone = 0, kExitRefused = 1, kExitUsage = 2, kExitSetup = 3 };

// A bad command line: the message, then a hint to the command's --help.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Something outside the program is missing: the message alone.
struct SetupError : std::runtime_error {
  using std::runtime_error::runtime_error;
};
