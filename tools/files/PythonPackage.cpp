#include "files/PythonPackage.h"

#include "library/LibraryLookup.h"
#include "system/LibraryLoader.h"
#include "system/RunProgram.h"

#include <cstdlib>
#include <filesystem>

namespace fs = std::filesystem;

namespace {

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
  std::error_code error;
  return fs::exists("/usr/bin/python3", error) ? "/usr/bin/python3" : "python3";
#endif
}

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

} // namespace

int runPythonPackage(const std::vector<std::string> &arguments) {
  offerPackageFolders();
  std::vector<std::string> command = {interpreter(), "-m", "cansimu"};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return runProgram(command);
}
