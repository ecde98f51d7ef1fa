// convert: CAN trace conversion. The Python package does it, with
// python-can's readers and writers; the program finds Python and the
// package and runs `python -m cansimu convert IN OUT`.
#include "Command.h"
#include "Errors.h"
#include "LibraryLoader.h"
#include "LibraryLookup.h"
#include "RunProgram.h"

#include <cstdlib>
#include <filesystem>

namespace fs = std::filesystem;

namespace {

const char kDetails[] =
    "Converts the CAN trace IN into OUT, each in the format its extension names:\n"
    "the candump log (.log), and every format python-can 4.1 reads and writes\n"
    "(.asc, .blf, .trc, .csv, .db; .txt only written). The Python package does\n"
    "the work (python3 -m cansimu convert IN OUT), so it needs Python 3.9 or\n"
    "later with python-can (Debian: python3-can; Windows: pip install\n"
    "python-can) and the cansimu package, installed or lying beside the\n"
    "program. CANSIMU_PYTHON names the interpreter to use.\n"
    "\nexit status: 0 converted; 3 a trace that cannot be read or written, or\n"
    "no Python to run.\n";

#ifdef _WIN32
constexpr char kPathSeparator = ';';
#else
constexpr char kPathSeparator = ':';
#endif

std::string interpreter() {
  const char *named = std::getenv("CANSIMU_PYTHON");
  if (named != nullptr && *named != '\0')
    return named;
#ifdef _WIN32
  return "python";
#else
  // Debian's interpreter sees the Debian packages of python-can and cansimu.
  std::error_code error;
  return fs::exists("/usr/bin/python3", error) ? "/usr/bin/python3" : "python3";
#endif
}

// The package beside the program (the Windows zips) or, for a program run
// from its build folder, in the source tree, ahead of an installed one.
void offerPackageFolders() {
  std::string folders;
  const auto offer = [&folders](const fs::path &folder) {
    std::error_code error;
    if (!folder.empty() && fs::is_regular_file(folder / "cansimu" / "__main__.py", error))
      folders += (folders.empty() ? "" : std::string(1, kPathSeparator)) + folder.string();
  };
  offer(programPath().parent_path());
  if (runningFromBuildTree())
    offer(CANSIMU_PYTHON_SOURCE);
  if (folders.empty())
    return;
  const char *current = std::getenv("PYTHONPATH");
  if (current != nullptr && *current != '\0')
    folders += kPathSeparator + std::string(current);
  setEnvironment("PYTHONPATH", folders);
}

int runConvert(const Arguments &arguments) {
  offerPackageFolders();
  const int status = runProgram({interpreter(), "-m", "cansimu", "convert", arguments.positional[0],
                                 arguments.positional[1]});
  return status == 0 ? kExitDone : kExitSetup;
}

} // namespace

Command convertCommand() {
  return {"convert",
          "convert IN OUT",
          "convert a CAN trace to another format (python-can)",
          kDetails,
          2,
          2,
          {},
          runConvert};
}
