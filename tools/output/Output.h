// output/: the program's lines, the library's records and frames in words, progress.
// The program's lines: one per library call, with the status by name and a
// note in plain words, coloured only on a terminal.
#pragma once

#include "cansimu/cansimu.h"

#include <string>

// "  CAN_DevGetVersion()   E_SUCCESS (0)   boot B1.04 ..."
void printStep(const std::string &call, CAN_STATUS status, const std::string &note = "");
// A line in the same columns for something that has no status.
void printNote(const std::string &what, const std::string &note);
// A line that goes on from the step above it, indented by `indent`.
void printDetail(size_t indent, const std::string &text);
// A heading line, bold on a terminal.
void printHeading(const std::string &text);
// "cansimu: <message>" on standard error.
void printError(const std::string &message);

// Text padded to `width` columns, then wrapped in the colour for `status`.
std::string colouredStatus(CAN_STATUS status, size_t width = 0);
// Text in bold, or in the colour of warnings, on a terminal only.
std::string boldText(const std::string &text);
std::string warningText(const std::string &text);

// The width a line of output keeps to where it can.
constexpr size_t kLineWidth = 80;
