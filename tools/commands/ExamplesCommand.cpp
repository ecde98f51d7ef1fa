// examples: hands out the built-in bench, to copy and edit.
#include "Command.h"
#include "Errors.h"
#include "files/ExampleBench.h"
#include "output/Output.h"

#include <cstdio>

namespace {

const char kExamplesDetails[] =
    "Writes the example bench built into the program into FOLDER (created when\n"
    "missing): bench.xml, the ECU scenarios, the two firmware images and\n"
    "README.md, which explains them. A file of the same name that differs from\n"
    "the example (one you edited) is left alone, and nothing is written:\n"
    "\n"
    "  --force   replace such files with the example's\n"
    "\n"
    "Exit status: 0 written, 1 FOLDER holds differing files (without --force).\n";

int runExamples(const Arguments &arguments) {
  const std::string &folder = arguments.positional[0];
  const std::vector<std::string> differing = differingBenchFiles(folder);
  if (!differing.empty() && !arguments.has("--force")) {
    for (const std::string &name : differing)
      printError(folder + "/" + name + " differs from the example: not replaced");
    printError("nothing written; --force replaces " +
               std::string(differing.size() == 1 ? "it" : "them"));
    return kExitRefused;
  }
  for (const std::string &name : writeEmbeddedBench(folder))
    std::printf("  %s/%s\n", folder.c_str(), name.c_str());
  return kExitDone;
}

} // namespace

Command examplesCommand() {
  return {"examples",
          "examples FOLDER",
          "write the example bench into FOLDER, to edit",
          kExamplesDetails,
          1,
          1,
          {"--force"},
          runExamples};
}
