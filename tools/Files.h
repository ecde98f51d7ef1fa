// The few file-system operations the program needs, per platform.
#pragma once

#include <string>
#include <vector>

// True when the file exists and can be opened for reading.
bool fileReadable(const std::string &path);
// The path made absolute against the current directory (unchanged when it
// already is absolute).
std::string absolutePath(const std::string &path);
// The folder part of a path ("." when it has none).
std::string parentFolder(const std::string &path);
// Changes the process's working directory; false on failure.
bool changeDirectory(const std::string &path);
// Creates one folder; true when it exists afterwards.
bool makeDirectory(const std::string &path);
// Creates a fresh, private temporary folder; empty on failure.
std::string makeTemporaryDirectory();
// Removes an empty folder, or a file; false on failure.
bool removeDirectory(const std::string &path);
bool removeFile(const std::string &path);
// True when the path names a folder.
bool isDirectory(const std::string &path);
// The names of the regular files in a folder, sorted; empty when it cannot
// be read.
std::vector<std::string> filesIn(const std::string &folder);
// True for an absolute path (on Windows also one that starts with a drive).
bool isAbsolutePath(const std::string &path);
