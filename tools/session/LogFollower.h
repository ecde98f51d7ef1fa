// Reads the lines the library appends to its log file, as they come: the
// program learns from them what the exports do not tell (which scenario
// entry answered a request).
#pragma once

#include <string>
#include <vector>

class LogFollower {
public:
  // Follows the file at `path` from its current end (nothing when empty).
  explicit LogFollower(std::string path);

  // The text after `marker` of each line appended since the last call that
  // holds it, in order.
  std::vector<std::string> newLines(const std::string &marker);
  // The same for several markers at once: for each marker, the text after
  // it of the new lines that hold it (a line counts for its first marker).
  std::vector<std::vector<std::string>> newLines(const std::vector<std::string> &markers);
  // Skips what was appended so far.
  void skipToEnd();

private:
  std::string path_;
  long long offset_ = 0;
};

// The log file that the library loaded by this program writes: the one
// --log or CANSIMU_LOG names, or else a temporary file that this object
// names in CANSIMU_LOG before the library is loaded and removes at the end.
class ProgramLog {
public:
  ProgramLog();
  ~ProgramLog();
  ProgramLog(const ProgramLog &) = delete;
  ProgramLog &operator=(const ProgramLog &) = delete;
  const std::string &path() const { return path_; }

private:
  std::string path_;
  bool temporary_ = false;
};

// The path of the log file the library of this run writes (CANSIMU_LOG);
// empty when none.
std::string programLogPath();

// An "Answer source" line of the library after its "request HEX: " (or a
// "Session refused by" line after its ECU), with every <path> shortened to
// its file name: "entry engine.xml:41 22F1??, response 1 of 1".
std::string shownSource(const std::string &line);
// An "ECU state" line after its marker, as shown: "session 03; level 01
// unlocked" (the ECU it names is left out).
std::string shownState(const std::string &line);
// The ECU such a line names ("7e0/7e8").
std::string sourceEcu(const std::string &line);
