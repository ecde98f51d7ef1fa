#include "output/Output.h"

#include "names/StatusNames.h"
#include "system/Console.h"

#include <algorithm>
#include <cstdio>

namespace {
// Two spaces, the call, the status and a short note fit in 80 columns.
constexpr size_t kCallWidth = 34;
constexpr size_t kStatusWidth = 15;
// A note that does not fit goes below its step, indented like the details.
constexpr size_t kNoteIndent = 6;

const char *colourOf(CAN_STATUS status) {
  if (status == E_SUCCESS)
    return "\033[32m";
  return status == E_NO_EVENT ? "\033[33m" : "\033[31m";
}

std::string padded(const std::string &text, size_t width) {
  return text.size() >= width ? text : text + std::string(width - text.size(), ' ');
}

bool colour() {
  static const bool shows = outputShowsColour();
  return shows;
}

// A note on lines of its own below its step, broken after a comma where
// one line would pass kLineWidth; the lines after the first go deeper.
void printWrapped(const std::string &note) {
  size_t indent = kNoteIndent;
  std::string rest = note;
  while (!rest.empty()) {
    const size_t room = kLineWidth - indent;
    size_t cut = rest.size() <= room ? std::string::npos : rest.rfind(", ", room - 1);
    if (cut == std::string::npos || cut == 0)
      cut = rest.size();
    else
      cut += 1;
    std::printf("%s%s\n", std::string(indent, ' ').c_str(), rest.substr(0, cut).c_str());
    rest.erase(0, cut == rest.size() ? cut : cut + 1);
    indent = kNoteIndent + 2;
  }
}

// A step line with its note, or, when that line would pass kLineWidth, the
// note on a line of its own below it.
void printLine(const std::string &call, const std::string &status, size_t statusLength,
               const std::string &note) {
  const std::string head = "  " + padded(call, kCallWidth) + " ";
  const size_t length = head.size() + std::max(statusLength, kStatusWidth) + 1 + note.size();
  if (note.empty() || length > kLineWidth) {
    std::string line = head + status;
    line.erase(line.find_last_not_of(' ') + 1);
    std::printf("%s\n", line.c_str());
    printWrapped(note);
  } else {
    std::printf(
        "%s%s%s %s\n", head.c_str(), status.c_str(),
        std::string(kStatusWidth > statusLength ? kStatusWidth - statusLength : 0, ' ').c_str(),
        note.c_str());
  }
  std::fflush(stdout);
}
} // namespace

std::string colouredStatus(CAN_STATUS status, size_t width) {
  const std::string text = padded(statusText(status), width);
  return colour() ? colourOf(status) + text + "\033[0m" : text;
}

void printStep(const std::string &call, CAN_STATUS status, const std::string &note) {
  printLine(call, colouredStatus(status), statusText(status).size(), note);
}

void printNote(const std::string &what, const std::string &note) { printLine(what, "", 0, note); }

std::string boldText(const std::string &text) {
  return colour() ? "\033[1m" + text + "\033[0m" : text;
}

std::string warningText(const std::string &text) {
  return colour() ? "\033[35m" + text + "\033[0m" : text;
}

void printDetail(size_t indent, const std::string &text) {
  std::printf("%s%s\n", std::string(indent, ' ').c_str(), text.c_str());
  std::fflush(stdout);
}

void printHeading(const std::string &text) {
  std::printf("%s\n", boldText(text).c_str());
  std::fflush(stdout);
}

void printError(const std::string &message) {
  std::fflush(stdout);
  std::fprintf(stderr, "cansimu: %s\n", message.c_str());
}
