// The program's help and its commands' help, kept to 80 columns.
#pragma once

#include <cstdio>
#include <string>

struct Command;

// The usage line, the commands with their summaries, the options and the
// exit statuses.
void printProgramHelp(FILE *out);
// "usage: cansimu flash CONFIG IMAGE [options]", then the command's details.
void printCommandHelp(const Command &command);
// The program's version and the library it would load.
void printVersion(const std::string &library);
