// convert: CAN trace conversion. The Python package does it, with
// python-can's readers and writers; the program runs
// `python -m cansimu convert IN OUT`.
#include "Command.h"
#include "Errors.h"
#include "files/PythonPackage.h"

namespace {

const char kConvertDetails[] =
    "Converts the CAN trace IN into OUT, each in the format its extension names:\n"
    "the candump log (.log), and every format python-can 4.1 reads and writes\n"
    "(.asc, .blf, .trc, .csv, .db; .txt only written). The Python package does\n"
    "the work (python3 -m cansimu convert IN OUT), so it needs Python 3.9 or\n"
    "later with python-can (Debian: python3-can; Windows: pip install\n"
    "python-can) and the cansimu package, installed or lying beside the\n"
    "program. CANSIMU_PYTHON names the interpreter to use.\n"
    "\nexit status: 0 converted; 3 a trace that cannot be read or written, or\n"
    "no Python to run.\n";

int runConvert(const Arguments &arguments) {
  const int status =
      runPythonPackage({"convert", arguments.positional[0], arguments.positional[1]});
  return status == 0 ? kExitDone : kExitSetup;
}

} // namespace

Command convertCommand() {
  return {"convert",
          "convert IN OUT",
          "convert a CAN trace to another format (python-can)",
          kConvertDetails,
          2,
          2,
          {},
          runConvert};
}
