// files/: benches and scenarios read, checked and edited; the example bench; file tasks.
// The mistakes in benches and scenarios that the library passes over
// without a word, found the way the library reads the files: its own XML
// reader, and its own request hash, pattern rule and request table for the
// overlaps between patterns.
#pragma once

#include "files/XmlSource.h"

#include <string>
#include <vector>

struct Finding {
  unsigned line; // 0: the file as a whole
  std::string message;
};

// What `check` reports for one file.
struct FileReport {
  std::vector<Finding> findings;
  // What is worth knowing but no mistake (it does not count as a warning).
  std::vector<Finding> notes;
  // Scenario files that a bench names and that exist, to check in turn.
  std::vector<std::string> scenarios;
};

struct CheckOptions {
  // The scenarios answer raw frames (CAN_PrtSendTrame), which carry at
  // most 8 bytes and take every answer as hex text.
  bool framePath = false;
};

// A file with UCE elements (or other elements of a configuration) is a
// bench; one with EVENEMENT elements a scenario; a file may be both.
bool isBench(const XmlSource &file);
bool isScenario(const XmlSource &file);

// `path` is the file as the user named it; a bench's relative scenario
// paths count from its folder, as they do for cansimu.
void checkBench(const std::string &path, const XmlSource &file, FileReport &report);
void checkScenario(const std::string &path, const XmlSource &file, const CheckOptions &options,
                   FileReport &report);
