#include "Help.h"

#include "Command.h"
#include "library/LibraryLookup.h"

#include <cstdio>

namespace {
// Where the summaries start; a longer synopsis gets a line of its own.
constexpr int kSummaryColumn = 29;
} // namespace

void printProgramHelp(FILE *out) {
  std::fprintf(out, "usage: cansimu COMMAND [ARGUMENTS] [OPTIONS]\n\n"
                    "A host for the simulated CAN interface box: it loads the cansimu library\n"
                    "at run time, as a diagnostic application does, and drives it.\n\n"
                    "commands:\n");
  for (const Command &command : commands()) {
    const std::string synopsis = command.synopsis;
    if (synopsis.size() + 3 > kSummaryColumn)
      std::fprintf(out, "  %s\n%*s%s\n", synopsis.c_str(), kSummaryColumn, "", command.summary);
    else
      std::fprintf(out, "  %-*s %s\n", kSummaryColumn - 3, synopsis.c_str(), command.summary);
  }
  std::fputs("\noptions:\n"
             "  --library PATH             the library to load; by default the one next\n"
             "                             to the program, in ../lib, or named by the\n"
             "                             environment variable CANSIMU_LIBRARY\n"
             "  --log FILE                 the library appends every log line to FILE\n"
             "                             (it sets CANSIMU_LOG for this run)\n"
             "  --trace FILE               the library appends the bus traffic to FILE in\n"
             "                             candump log format (sets CANSIMU_TRACE)\n"
             "  --report FILE              the library keeps a JSON session report in FILE\n"
             "                             (sets CANSIMU_REPORT; see cansimu report)\n"
             "  --version                  the program's version and the library it loads\n"
             "  --help                     this help, or a command's: cansimu COMMAND --help\n"
             "\nexit status: 0 done; 1 the library refused a call (ask: a request got no\n"
             "answer; check: warnings; shell: an expect failed); 2 bad command line;\n"
             "3 library, configuration or file missing or unreadable.\n",
             out);
}

void printCommandHelp(const Command &command) {
  std::printf("usage: cansimu %s [--library PATH] [--log FILE] [--trace FILE] [--report FILE]"
              "\n\n%s",
              command.synopsis, command.details);
}

void printVersion(const std::string &library) {
  const LibraryChoice choice = chooseLibrary(library);
  std::printf("cansimu %s\nlibrary %s\n  (%s)\n", CANSIMU_VERSION, choice.path.c_str(),
              choice.origin.c_str());
  if (!choice.missed.empty())
    std::printf("  (%s)\n", choice.missed.c_str());
}
