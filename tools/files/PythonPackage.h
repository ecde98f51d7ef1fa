// The tasks the program hands to the Python package (convert, import): it
// finds an interpreter and the package and runs `python -m cansimu ...`.
#pragma once

#include <string>
#include <vector>

// Runs `python -m cansimu` with `arguments` and returns its exit status.
// The interpreter is CANSIMU_PYTHON, else Debian's /usr/bin/python3 (it sees
// the Debian packages of python-can and cansimu), else python3 or python on
// the PATH. The package beside the program (the Windows zips) or, for a
// program run from its build folder, in the source tree, comes before an
// installed one. Throws SetupError when no interpreter can be started.
int runPythonPackage(const std::vector<std::string> &arguments);
