#include "library/LibraryLookup.h"

#include "system/LibraryLoader.h"

#include <cstdlib>
#include <filesystem>

namespace fs = std::filesystem;

namespace {
bool isFile(const fs::path &path) {
  std::error_code error;
  return fs::is_regular_file(path, error);
}
} // namespace

bool runningFromBuildTree() {
  const std::string built = CANSIMU_BUILD_FOLDER;
  const fs::path folder = programPath().parent_path();
  std::error_code error;
  return !built.empty() && !folder.empty() && fs::equivalent(folder, built, error);
}

LibraryChoice chooseLibrary(const std::string &given) {
  if (!given.empty())
    return {given, "--library", ""};
  const std::string built = CANSIMU_BUILD_LIBRARY;
  if (!built.empty() && runningFromBuildTree() && isFile(built))
    return {built, "built beside the program", ""};
  const fs::path name = CANSIMU_LIBRARY_NAME;
  const fs::path folder = programPath().parent_path();
  std::string missed;
  if (!folder.empty()) {
    const fs::path beside = folder / name;
    const fs::path lib = folder.parent_path() / "lib" / name;
    if (isFile(beside))
      return {beside.string(), "next to the program", ""};
    if (isFile(lib))
      return {lib.string(), "in ../lib", ""};
    missed = "not next to the program nor in " + lib.parent_path().string();
  }
  const char *variable = std::getenv("CANSIMU_LIBRARY");
  if (variable != nullptr && *variable != '\0') {
    std::error_code error;
    const fs::path named = fs::is_directory(variable, error) ? fs::path(variable) / name : variable;
    return {named.string(), "CANSIMU_LIBRARY", ""};
  }
  missed += std::string(missed.empty() ? "" : ", ") + "CANSIMU_LIBRARY not set";
  return {name.string(), "by name, through the system's search", missed};
}
