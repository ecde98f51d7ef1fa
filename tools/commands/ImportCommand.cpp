// import: a bench and its scenarios from recorded diagnostic traffic. The
// Python package does it (ISO-TP reassembly, pairing requests with answers,
// every trace format python-can reads); the program hands it the arguments.
#include "Command.h"
#include "Errors.h"
#include "files/PythonPackage.h"

#include <sstream>

namespace {

const char kImportDetails[] =
    "Reads the CAN traces (candump .log, .asc, .blf, .trc, .csv, .db: every\n"
    "format python-can 4.1 reads), reassembles the diagnostic messages\n"
    "(ISO 15765-2), pairs each ECU's requests with its answers and writes\n"
    "DIR/bench.xml with one UCE per ECU and one scenario per ECU whose entries\n"
    "answer as recorded, in the recorded order. Then it prints what was\n"
    "imported: per ECU the requests, answers, unanswered requests and\n"
    "transport errors, and the frames that were no diagnostics.\n"
    "\noptions:\n"
    "  --out DIR           the folder to write into (required)\n"
    "  --ecu TX/RX=NAME    an ECU's request and answer identifiers (hex) and\n"
    "                      its name, as 710/77A=gateway; may be repeated\n"
    "  --dry-run           print the report, write nothing\n"
    "  --force             write into DIR even when it holds files\n"
    "\nThe Python package does the work (python3 -m cansimu import), so it\n"
    "needs Python 3.9 or later with python-can, as convert does.\n"
    "\nexit status: 0 imported; 1 nothing to import or DIR not empty; 2 bad\n"
    "command line; 3 no Python to run.\n";

int runImport(const Arguments &arguments) {
  if (!arguments.has("--out"))
    throw UsageError("import needs --out DIR (see cansimu import --help)");
  std::vector<std::string> command = {"import"};
  command.insert(command.end(), arguments.positional.begin(), arguments.positional.end());
  command.insert(command.end(), {"--out", arguments.options.at("--out")});
  if (arguments.has("--ecu")) {
    std::istringstream links(arguments.options.at("--ecu"));
    for (std::string link; std::getline(links, link);)
      command.insert(command.end(), {"--ecu", link});
  }
  for (const char *flag : {"--dry-run", "--force"})
    if (arguments.has(flag))
      command.push_back(flag);
  const int status = runPythonPackage(command);
  // The package's own statuses: 1 nothing imported, 2 its command line.
  if (status == 0)
    return kExitDone;
  if (status == 1)
    return kExitRefused;
  return status == 2 ? kExitUsage : kExitSetup;
}

} // namespace

Command importCommand() {
  return {"import",
          "import TRACE... --out DIR",
          "a bench and scenarios from recorded diagnostic traffic",
          kImportDetails,
          1,
          static_cast<size_t>(-1),
          {"--out", "--ecu", "--dry-run", "--force"},
          runImport};
}
