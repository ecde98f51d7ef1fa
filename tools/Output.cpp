#include "Output.h"

#include "Console.h"
#include "StatusNames.h"

#include <cstdio>

namespace {
// Two spaces, the call, the status and a short note fit in 80 columns.
constexpr size_t kCallWidth = 34;
constexpr size_t kStatusWidth = 15;

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
} // namespace

std::string colouredStatus(CAN_STATUS status, size_t width) {
  const std::string text = padded(statusText(status), width);
  return colour() ? colourOf(status) + text + "\033[0m" : text;
}

void printStep(const std::string &call, CAN_STATUS status, const std::string &note) {
  const size_t width = note.empty() ? 0 : kStatusWidth;
  std::printf("  %s %s%s%s\n", padded(call, kCallWidth).c_str(),
              colouredStatus(status, width).c_str(), note.empty() ? "" : " ", note.c_str());
  std::fflush(stdout);
}

void printNote(const std::string &what, const std::string &note) {
  std::printf("  %s %s %s\n", padded(what, kCallWidth).c_str(),
              std::string(kStatusWidth, ' ').c_str(), note.c_str());
  std::fflush(stdout);
}

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
