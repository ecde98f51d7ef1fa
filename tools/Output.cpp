#include "Output.h"

#include "Console.h"
#include "StatusNames.h"

#include <cstdio>

namespace {
constexpr size_t kCallWidth = 44;
constexpr size_t kStatusWidth = 20;

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
  std::printf("  %s %s %s\n", padded(call, kCallWidth).c_str(),
              colouredStatus(status, kStatusWidth).c_str(), note.c_str());
  std::fflush(stdout);
}

void printNote(const std::string &what, const std::string &note) {
  std::printf("  %s %s %s\n", padded(what, kCallWidth).c_str(),
              std::string(kStatusWidth, ' ').c_str(), note.c_str());
  std::fflush(stdout);
}

void printHeading(const std::string &text) {
  if (colour())
    std::printf("\033[1m%s\033[0m\n", text.c_str());
  else
    std::printf("%s\n", text.c_str());
  std::fflush(stdout);
}

void printError(const std::string &message) {
  std::fflush(stdout);
  std::fprintf(stderr, "cansimu: %s\n", message.c_str());
}
