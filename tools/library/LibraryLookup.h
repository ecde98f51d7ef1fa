// Which cansimu library the program loads. Without --library it looks next
// to itself, then in ../lib, then at CANSIMU_LIBRARY, and at last leaves the
// name to the system's loader; a program run from its build folder takes the
// library built beside it first, so tests and ./dev demo need no setup.
#pragma once

#include <string>

struct LibraryChoice {
  std::string path;   // what is loaded: a path, or the bare file name
  std::string origin; // how it was chosen, in a few words ("next to the program")
  std::string missed; // for the bare name: where the lookup found nothing
};

// The library to load: `given` when not empty (--library), else the first
// place of the lookup that holds the library.
LibraryChoice chooseLibrary(const std::string &given);

// True when the program runs from the folder it was built in.
bool runningFromBuildTree();
