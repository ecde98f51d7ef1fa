// examples: hands out the built-in bench, to copy and edit.
#include "Command.h"
#include "Errors.h"
#include "ExampleBench.h"

#include <cstdio>

namespace {

const char kDetails[] =
    "Writes the example bench built into the program into FOLDER (created when\n"
    "missing; files of the same names are replaced): bench.xml, the ECU\n"
    "scenarios, the two firmware images and README.md, which explains them.\n";

int runExamples(const Arguments &arguments) {
  const std::string &folder = arguments.positional[0];
  for (const std::string &name : writeEmbeddedBench(folder))
    std::printf("  %s/%s\n", folder.c_str(), name.c_str());
  return kExitDone;
}

} // namespace

Command examplesCommand() {
  return {
      "examples", "examples FOLDER", "write the example bench into FOLDER, to edit", kDetails, 1, 1,
      {},         runExamples};
}
